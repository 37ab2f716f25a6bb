#include "app/label/LabelDraft.h"
#include "core/CountryCode.h"
#include "core/Text.h"

#include "carrier/ShippoRecords.h"
#include "compose/Customs.h"
#include "compose/Mailpieces.h"
#include "compose/Services.h"
#include "records/SenderProfile.h"
#include <optional>
#include <variant>

namespace parcelory {
using namespace Qt::StringLiterals;

QString LabelDraft::mailpieceName() const
{
    if (const auto *builtin = std::get_if<BuiltinMailpiece>(&mailpiece.value()))
        return builtinMailpieceInfo(*builtin).displayName;
    const QString box = boxName();
    return box.isEmpty() ? builtinMailpieceInfo(BuiltinMailpiece::package).displayName : box;
}

QString LabelDraft::mailpieceIcon() const
{
    const BuiltinMailpieceInfo &fallback = builtinMailpieceInfo(BuiltinMailpiece::package);
    if (const auto *builtin = std::get_if<BuiltinMailpiece>(&mailpiece.value()))
        return builtinMailpieceInfo(*builtin).iconResource;
    const auto *preset = std::get_if<PresetMailpiece>(&mailpiece.value());
    const PresetBox *box = preset ? presetBox(preset->id) : nullptr;
    return box ? box->icon : fallback.iconResource;
}

QString LabelDraft::sizeHint() const
{
    const QString box = boxName();
    return box.isEmpty() ? u"in (required)"_s : u"in (from "_s + box + u')';
}

QString LabelDraft::classHint() const
{
    return flatRateLocked() ? u"Flat Rate ships Priority Mail"_s : QString();
}

QString LabelDraft::signatureWarning() const
{
    if (service != ServiceOption::fedexIndirect || svcClass == ServiceClass::fedexHomeDelivery)
        return {};
    return u"Indirect Signature is a FedEx Home Delivery option — pick Home Delivery as the Class, or use Direct "
           "Signature."_s;
}

QString LabelDraft::senderHint() const
{
    const std::optional<SenderProfile> from = sender();
    return from && from->address.isEmpty() ? u"This profile has no address yet — fill it in under Settings."_s
                                           : QString();
}

QString LabelDraft::internationalHint() const
{
    return isInternational() ? u"International — customs declaration required below"_s : QString();
}

QString LabelDraft::customsHint() const
{
    if (!isInternational())
        return {};
    return u"Declared as “%1”, merchandise, return if undeliverable. A commercial invoice prints to the document "
           "printer with the label."_s.arg(customsItem(customs.value().itemType).description);
}

QString LabelDraft::paperworkText() const
{
    return u"Pick what's in this shipment for %1 — this goes on the label's customs form and the commercial invoice, "
           "then rates load."_s.arg(m_app.draftTo.value().name);
}

QStringList LabelDraft::printedRecipient() const
{
    const ShippoAddress &to = m_app.draftTo.value();
    QStringList lines = {to.name, m_app.sanitizer.sanitize(to.company), joinPresent({to.street1, to.street2}, u", "_s),
                         joinPresent({to.city, to.state, to.zip}, u" "_s)};
    if (isInternational())
        lines += CountryCode::alpha2(to.country);
    lines.removeAll(QString());
    return lines;
}

QString LabelDraft::extrasSummary() const
{
    QStringList parts = {serviceOptionInfo(service).label};
    if (decimalOrZero(insuranceValue) > 0)
        parts += u"Insured $"_s + shortest(decimalOrZero(insuranceValue), 2);
    if (isInternational())
        parts += u"Declared $"_s + shortest(decimalOrZero(customs.value().value), 2);
    return parts.join(u" · "_s);
}

QString LabelDraft::formHint() const
{
    return formComplete() ? u"Enter the package details, then get rates."_s
                          : u"Need a sender address, recipient, and weight before rating."_s;
}

} // namespace parcelory
