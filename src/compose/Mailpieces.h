#pragma once

#include "compose/Services.h"
#include "records/BoxProfile.h"

#include <QList>
#include <QString>
#include <QUuid>

#include <optional>
#include <variant>

namespace parcelory {

/// The carriers' packaging, and the kinds of packaging that the desk supplies.
enum class BuiltinMailpiece {
    package,
    oversizedPackage,
    largeEnvelope,
    flatRateEnvelope,
    legalFlatRateEnvelope,
    paddedFlatRateEnvelope,
    smallFlatRateBox,
    mediumFlatRateBox,
    largeFlatRateBox,
    fedexEnvelope,
    fedexSmallPak,
    fedexLargePak,
    fedexPaddedPak,
    fedexXLPak,
    fedexSmallBox,
    fedexMediumBox,
    fedexLargeBox,
    fedexExtraLargeBox,
    fedexTube,
};

struct BuiltinMailpieceInfo {
    BuiltinMailpiece mailpiece;
    Carrier carrier;
    QString id;
    QString displayName;
    QString shippoTemplate; ///< empty: the parcel is sent with its own dimensions
    QString iconResource;
    QString subtitle;
};

const QList<BuiltinMailpieceInfo> &builtinMailpieces();
const BuiltinMailpieceInfo &builtinMailpieceInfo(BuiltinMailpiece mailpiece);
/// True for the six USPS packages that ship Priority Mail at one price.
bool isFlatRate(BuiltinMailpiece mailpiece);

/// One of the desk's stock mailers. Outer dimensions in inches, as text.
struct PresetBox {
    QString id;
    QString name;
    QString length;
    QString width;
    QString height;
    QString icon;
};

const QList<PresetBox> &presetBoxes();
const PresetBox *presetBox(const QString &id); ///< null if the id is unknown

/// What the parcel is packed in: a stock mailer by its id, a carrier's packaging, or one of the desk's own boxes.
struct PresetMailpiece {
    QString id;
    bool operator==(const PresetMailpiece &) const = default;
};
using MailpieceSelection = std::variant<PresetMailpiece, BuiltinMailpiece, QUuid /* a BoxProfile */>;

/// A row of the mailpiece menu.
struct MailpieceEntry {
    MailpieceSelection selection;
    QString icon;
    QString title;
    QString subtitle;
    bool operator==(const MailpieceEntry &) const = default;
};

struct MailpieceGroup {
    QString title;
    QList<MailpieceEntry> entries;
    bool operator==(const MailpieceGroup &) const = default;
};

/// The packaging for a carrier's parcels, in the order of the menu.
QList<MailpieceGroup> mailpieceMenu(Carrier carrier, const QList<BoxProfile> &boxes);

} // namespace parcelory
