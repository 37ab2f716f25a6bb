#pragma once

#include "core/ShippoAddress.h"

#include <QList>
#include <QString>

namespace parcelory {

/// A line of text on a label. Lengths are dots; the position counts as if the text were turned upright, so texts with
/// the same turn can be compared.
struct LabelText {
    QString text;
    double x = 0, y = 0; ///< upper left corner
    double width = 0;    ///< estimated
    double height = 0;
    int turn = 0;           ///< quarter turns
    qsizetype element = -1; ///< its number among the label's elements
};

/// A bar code of a label.
struct LabelCode {
    QString data; ///< what a reader reads; FNC1 is U+001D
    bool isLinear = true;
    qsizetype element = -1;
};

/// What can be read from a label without looking at it.
struct LabelContents {
    QList<LabelText> texts;
    QList<LabelCode> codes;
    bool hasPictures = false;
};

/// What a label has to say.
struct PrintedParcel {
    ShippoAddress to; ///< as it was sent to the carrier
    QString senderZip;
    QString tracking;     ///< as the carrier answered
    bool isLive = false;  ///< the label costs money
    QStringList ownTexts; ///< reference and description: texts of the desk that may say anything
};

enum class LabelItem {
    name,
    houseNumber,
    unit,
    city,
    state,
    zip,
    country, ///< only abroad
    trackingText,
    trackingCode,
    senderZip,
    mark ///< a sample or void mark against the kind of key
};

enum class LabelMatch {
    same,
    different,
    notFound,
    unchecked ///< only a picture, or in a script that is not compared
};

struct LabelFinding {
    LabelItem item = LabelItem::name;
    LabelMatch match = LabelMatch::unchecked;
    QString onParcel, onLabel; ///< as the clerk reads them; `onLabel` is empty for a part that is missing on the label
    QList<qsizetype> elements; ///< of the label, where the item is or should be

    bool operator==(const LabelFinding &) const = default;
};

/// The result of a comparison, an item each; an item that the parcel does not have is left out.
struct LabelVerdict {
    QList<LabelFinding> findings;
    QStringList addressOnLabel; ///< the recipient's lines as printed; empty if they were not found

    const LabelFinding *find(LabelItem item) const;
    /// The differences that make the label wrong: name, house number, unit, ZIP, tracking number, or a sample mark on a
    /// label that costs money.
    QList<LabelFinding> faults() const;

    bool operator==(const LabelVerdict &) const = default;
};

/// Compares a label with its parcel. Carriers fold capitals and accents, shorten words and names, and write unit
/// designators in their own way: that is the same. Never throws.
LabelVerdict readBack(const LabelContents &label, const PrintedParcel &parcel);

/// The addresses that a row of the mailing log may mean: it has the recipient in one line, in which a company cannot be
/// told from a street.
QList<ShippoAddress> addressesOf(const QString &oneLine, const QString &zip, bool isAbroad);

} // namespace parcelory
