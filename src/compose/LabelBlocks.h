#pragma once

#include "compose/LabelReadBack.h"

#include <optional>

namespace parcelory {

/// A line of an address on a label; a label may print it in several texts.
struct LabelRow {
    QString text; ///< without a caption that is a text of its own, such as "SHIP"
    QList<qsizetype> elements;
    bool isRecipient = false; ///< the caption says so
};

/// Lines below one another that belong together.
using LabelBlock = QList<LabelRow>;

/// The blocks of a label's texts, in no certain order.
QList<LabelBlock> blocksOf(const QList<LabelText> &texts);

/// A US place at the end of a line: "ASHEVILLE NC 28801-6168".
struct LabelPlace {
    QString city;  ///< as printed
    QString state; ///< two capitals
    QString zip;   ///< five digits
    QString plus4; ///< four digits or empty
};
std::optional<LabelPlace> placeOf(const QString &line);

/// The block with the recipient's address; empty if no block looks like an address of another than the sender's.
LabelBlock recipientBlock(const QList<LabelBlock> &blocks, const PrintedParcel &parcel);

} // namespace parcelory
