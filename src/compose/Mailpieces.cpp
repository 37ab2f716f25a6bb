#include "compose/Mailpieces.h"

#include "compose/Services.h"
#include "records/BoxProfile.h"

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

const QList<BuiltinMailpieceInfo> &builtinMailpieces()
{
    using enum BuiltinMailpiece;
    constexpr auto usps = Carrier::usps, fedex = Carrier::fedex;
    // These oddities are intentional: the paks' template numbers are the reverse of their sizes, the medium box's
    // subtitle lacks "Medium", and the tube uses the package's icon.
    static const QList<BuiltinMailpieceInfo> table = {
        {package, usps, u"package"_s, u"Package"_s, {}, u"popup_package"_s, u"Length + girth cannot exceed 108\""_s},
        {oversizedPackage,
         usps,
         u"oversizedPackage"_s,
         u"Oversized Package"_s,
         {},
         u"popup_oversized_package"_s,
         u"Length + girth cannot exceed 130\""_s},
        {largeEnvelope,
         usps,
         u"largeEnvelope"_s,
         u"Large Envelope (Flat)"_s,
         {},
         u"popup_flat"_s,
         u"Maximum size ¾\" thick, 12\" tall, or 15\" long"_s},
        {flatRateEnvelope, usps, u"flatRateEnvelope"_s, u"Flat Rate Envelope"_s, u"USPS_FlatRateEnvelope"_s,
         u"popup_flatrateenvelope"_s, u"For Priority Mail Flat Rate packaging"_s},
        {legalFlatRateEnvelope, usps, u"legalFlatRateEnvelope"_s, u"Legal Flat Rate Envelope"_s,
         u"USPS_FlatRateLegalEnvelope"_s, u"popup_flatrateenvelope"_s,
         u"For Priority Mail Legal Flat Rate packaging"_s},
        {paddedFlatRateEnvelope, usps, u"paddedFlatRateEnvelope"_s, u"Padded Flat Rate Envelope"_s,
         u"USPS_FlatRatePaddedEnvelope"_s, u"popup_flatrateenvelope"_s,
         u"For Priority Mail Padded Flat Rate Envelope packaging"_s},
        {smallFlatRateBox, usps, u"smallFlatRateBox"_s, u"Small Flat Rate Box"_s, u"USPS_SmallFlatRateBox"_s,
         u"popup_flatratebox"_s, u"For Priority Mail Small Flat Rate Box packaging"_s},
        {mediumFlatRateBox, usps, u"mediumFlatRateBox"_s, u"Medium Flat Rate Box"_s, u"USPS_MediumFlatRateBox1"_s,
         u"popup_flatratebox"_s, u"For Priority Mail Flat Rate Box packaging"_s},
        {largeFlatRateBox, usps, u"largeFlatRateBox"_s, u"Large Flat Rate Box"_s, u"USPS_LargeFlatRateBox"_s,
         u"popup_flatratebox"_s, u"For Priority Mail Large Flat Rate Box packaging"_s},
        {fedexEnvelope, fedex, u"fedexEnvelope"_s, u"FedEx Envelope"_s, u"FedEx_Envelope"_s, u"popup_fedex_padded"_s,
         u"For FedEx® Envelope packaging"_s},
        {fedexSmallPak, fedex, u"fedexSmallPak"_s, u"FedEx Small Pak"_s, u"FedEx_Pak_2"_s, u"popup_fedex_padded"_s,
         u"For FedEx® Small Pak packaging"_s},
        {fedexLargePak, fedex, u"fedexLargePak"_s, u"FedEx Large Pak"_s, u"FedEx_Pak_1"_s, u"popup_fedex_padded"_s,
         u"For FedEx® Large Pak packaging"_s},
        {fedexPaddedPak, fedex, u"fedexPaddedPak"_s, u"FedEx Padded Pak"_s, u"FedEx_Padded_Pak"_s,
         u"popup_fedex_padded"_s, u"For FedEx® Padded Pak packaging"_s},
        {fedexXLPak, fedex, u"fedexXLPak"_s, u"FedEx Extra Large Pak"_s, u"FedEx_XL_Pak"_s, u"popup_fedex_padded"_s,
         u"For FedEx® Extra Large Pak packaging"_s},
        {fedexSmallBox, fedex, u"fedexSmallBox"_s, u"FedEx Small Box"_s, u"FedEx_Box_Small_1"_s, u"popup_fedex_small"_s,
         u"For FedEx® Small Box packaging"_s},
        {fedexMediumBox, fedex, u"fedexMediumBox"_s, u"FedEx Medium Box"_s, u"FedEx_Box_Medium_1"_s,
         u"popup_fedex_medium"_s, u"For FedEx® Medium Box packaging"_s},
        {fedexLargeBox, fedex, u"fedexLargeBox"_s, u"FedEx Large Box"_s, u"FedEx_Box_Large_1"_s, u"popup_fedex_large"_s,
         u"For FedEx® Large Box packaging"_s},
        {fedexExtraLargeBox, fedex, u"fedexExtraLargeBox"_s, u"FedEx Extra Large Box"_s, u"FedEx_Box_Extra_Large_1"_s,
         u"popup_fedex_xl"_s, u"For FedEx® Extra Large Box packaging"_s},
        {fedexTube, fedex, u"fedexTube"_s, u"FedEx Tube"_s, u"FedEx_Tube"_s, u"popup_package"_s,
         u"For FedEx® Tube packaging"_s},
    };
    return table;
}

const BuiltinMailpieceInfo &builtinMailpieceInfo(BuiltinMailpiece mailpiece)
{
    return builtinMailpieces()[qsizetype(mailpiece)];
}

bool isFlatRate(BuiltinMailpiece mailpiece)
{
    return mailpiece >= BuiltinMailpiece::flatRateEnvelope && mailpiece <= BuiltinMailpiece::largeFlatRateBox;
}

const QList<PresetBox> &presetBoxes()
{
    static const QList<PresetBox> table = {
        {u"uline-s-5147"_s, u"Bubble Mailer #0 - S-5147"_s, u"10"_s, u"6"_s, u"0.75"_s, u"popup_bubblemailer"_s},
        {u"uline-s-5632"_s, u"Bubble Mailer #1 - S-5632"_s, u"12"_s, u"7.25"_s, u"0.75"_s, u"popup_bubblemailer"_s},
        {u"uline-s-5148"_s, u"Bubble Mailer #2 - S-5148"_s, u"12"_s, u"8.5"_s, u"0.75"_s, u"popup_bubblemailer"_s},
        {u"uline-s-1611"_s, u"Jiffy Rigi Bag #2 - S-1611"_s, u"11"_s, u"7.25"_s, u"0.75"_s, u"popup_airseal"_s},
    };
    return table;
}

const PresetBox *presetBox(const QString &id)
{
    const auto found = std::ranges::find(presetBoxes(), id, &PresetBox::id);
    return found == presetBoxes().end() ? nullptr : &*found;
}

QList<MailpieceGroup> mailpieceMenu(Carrier carrier, const QList<BoxProfile> &boxes)
{
    MailpieceGroup own{carrierInfo(carrier).displayName, {}};
    for (const BuiltinMailpieceInfo &info : builtinMailpieces()) {
        if (info.carrier == carrier)
            own.entries.append({info.mailpiece, info.iconResource, info.displayName, info.subtitle});
    }
    MailpieceGroup stock{u"Stock mailers"_s, {}};
    for (const PresetBox &box : presetBoxes()) {
        const QString size = u"%1 × %2 × %3 in"_s.arg(box.length, box.width, box.height);
        stock.entries.append({PresetMailpiece{box.id}, box.icon, box.name, size});
    }
    MailpieceGroup custom{u"Custom boxes"_s, {}};
    for (const BoxProfile &box : boxes) {
        custom.entries.append(
            {box.id, u"popup_package"_s, box.title(), u"Custom box — inside dims "_s + box.dimsDisplay()});
    }
    QList<MailpieceGroup> groups = {own, stock};
    if (!custom.entries.isEmpty())
        groups += custom;
    return groups;
}

} // namespace parcelory
