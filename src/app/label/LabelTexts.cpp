#include "app/label/LabelTexts.h"

#include "app/label/LabelScreen.h"
#include "carrier/RequestBodies.h"
#include "carrier/ShippoRecords.h"
#include "compose/Customs.h"
#include "compose/Mailpieces.h"
#include "compose/Services.h"
#include "core/ShippoAddress.h"
#include "core/Text.h"
#include "records/SenderProfile.h"

#include <QLocale>

#include <algorithm>
#include <optional>
#include <variant>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// The next step of a complete form: a size or a declared value may be missing still.
QString missingForRates(const LabelDraft &draft)
{
    const std::optional<LabelDraft::Obstacle> found = draft.obstacle();
    switch (found ? found->field : DraftField::profile) {
    case DraftField::length:
    case DraftField::width:
    case DraftField::height:
        return u"add the package size."_s;
    case DraftField::declaredValue:
        return u"enter the declared value."_s;
    default:
        return u"get rates."_s;
    }
}

} // namespace

QString LabelTexts::mailpieceName(const LabelDraft &draft)
{
    if (const auto *builtin = std::get_if<BuiltinMailpiece>(&draft.mailpiece.value()))
        return builtinMailpieceInfo(*builtin).displayName;
    const QString box = draft.boxName();
    return box.isEmpty() ? builtinMailpieceInfo(BuiltinMailpiece::package).displayName : box;
}

QString LabelTexts::mailpieceIcon(const LabelDraft &draft)
{
    const BuiltinMailpieceInfo &fallback = builtinMailpieceInfo(BuiltinMailpiece::package);
    if (const auto *builtin = std::get_if<BuiltinMailpiece>(&draft.mailpiece.value()))
        return builtinMailpieceInfo(*builtin).iconResource;
    const auto *preset = std::get_if<PresetMailpiece>(&draft.mailpiece.value());
    const PresetBox *box = preset ? presetBox(preset->id) : nullptr;
    return box ? box->icon : fallback.iconResource;
}

QString LabelTexts::sizeHint(const LabelDraft &draft)
{
    const QString box = draft.boxName();
    return box.isEmpty() ? u"in (required)"_s : u"in (from "_s + box + u')';
}

QString LabelTexts::classHint(const LabelDraft &draft)
{
    return draft.flatRateLocked() ? u"Flat Rate ships Priority Mail"_s : QString();
}

QString LabelTexts::signatureWarning(const LabelDraft &draft)
{
    if (draft.service != ServiceOption::fedexIndirect || draft.svcClass == ServiceClass::fedexHomeDelivery)
        return {};
    return u"Indirect Signature is a FedEx Home Delivery option — pick Home Delivery as the Class, or use Direct "
           "Signature."_s;
}

QString LabelTexts::senderHint(const LabelDraft &draft)
{
    const std::optional<SenderProfile> from = draft.sender();
    return from && from->address.isEmpty() ? u"This profile has no address yet — fill it in under Settings."_s
                                           : QString();
}

QString LabelTexts::internationalHint(const LabelDraft &draft)
{
    return draft.isInternational() ? u"International — customs declaration required below"_s : QString();
}

QString LabelTexts::customsHint(const LabelDraft &draft)
{
    if (!draft.isInternational())
        return {};
    return u"Declared as “%1”, merchandise, return if undeliverable. A commercial invoice prints to the document "
           "printer with the label."_s.arg(customsItem(draft.customs.value().itemType).description);
}

QString LabelTexts::declaredValueWarning(const LabelDraft &draft)
{
    const QString subtotal = draft.defaultCustomsValue();
    const bool isSame = subtotal.isEmpty() || decimal(draft.customs.value().value) == decimal(subtotal);
    return isSame ? QString() : u"The value differs from the invoice's subtotal, $%1."_s.arg(subtotal);
}

QString LabelTexts::paperworkText(const LabelDraft &draft)
{
    return u"Pick what's in this shipment for %1 — this goes on the label's customs form and the commercial "
           "invoice, then rates load."_s.arg(draft.recipient().name);
}

QStringList LabelTexts::printedRecipient(const LabelDraft &draft)
{
    const ShippoAddress to = addressAsSent(draft.recipient());
    QStringList lines = {to.name, draft.printedCompany(), joinPresent({to.street1, to.street2}, u", "_s),
                         joinPresent({to.city, to.state, to.zip}, u" "_s)};
    if (draft.isInternational())
        lines += to.country;
    lines.removeAll(QString());
    return lines;
}

QString LabelTexts::cutWarning(const LabelDraft &draft)
{
    const ShippoAddress &typed = draft.recipient(), sent = addressAsSent(typed);
    const auto letters = [](const ShippoAddress &address) { // splitting moves blanks and commas
        return std::ranges::count_if(address.street1 + address.street2, [](QChar c) { return c.isLetterOrNumber(); });
    };
    QStringList lines;
    if (sent.name != typed.name)
        lines += u"The label cuts off the end of this name."_s;
    if (letters(sent) != letters(typed))
        lines += u"The label cuts off the end of this street."_s;
    return lines.join(u'\n');
}

QString LabelTexts::extrasSummary(const LabelDraft &draft)
{
    QStringList parts = {serviceOptionInfo(draft.service).label};
    if (decimalOrZero(draft.insuranceValue) > 0)
        parts += u"Insured $"_s + shortest(decimalOrZero(draft.insuranceValue), 2);
    if (draft.isInternational())
        parts += u"Declared $"_s + shortest(decimalOrZero(draft.customs.value().value), 2);
    return parts.join(u" · "_s);
}

QString LabelTexts::uninsuredNote(const LabelDraft &draft)
{
    const bool isInsured = decimalOrZero(draft.insuranceValue) > 0;
    const bool isValued =
        draft.invoiceValue() > 0 || (draft.isInternational() && decimalOrZero(draft.customs.value().value) > 0);
    return !isInsured && isValued ? u"Not insured"_s : QString();
}

QString LabelTexts::invoiceAmount(const LabelDraft &draft)
{
    return QLocale(u"en_US"_s).toString(draft.invoiceValue(), 'f', 2);
}

QString LabelTexts::insuranceOffer(const LabelDraft &draft)
{
    if (draft.isInsurable())
        return u"Invoice $%1 — insure"_s.arg(invoiceAmount(draft));
    const bool isCovered = draft.invoiceValue() > 0 && decimal(draft.insuranceValue) == draft.invoiceValue();
    return isCovered ? u"Insured for the invoice ✓"_s : QString();
}

QString LabelTexts::formHint(const LabelDraft &draft)
{
    return draft.formComplete() ? u"Enter the package details, then get rates."_s
                                : u"Need a sender address, recipient, and weight before rating."_s;
}

QString LabelTexts::ratesHint(const LabelScreen &screen)
{
    return screen.rates.value().isEmpty() ? formHint(screen) : QString();
}

QString LabelTexts::transitText(const ShippoRate &rate)
{
    if (!rate.estimatedDays)
        return u"Unknown"_s;
    return *rate.estimatedDays == 1 ? u"1 day"_s : QString::number(*rate.estimatedDays) + u" days"_s;
}

QString LabelTexts::rateDetails(const ShippoRate &rate, const QList<ShippoRate> &all)
{
    const auto looksTheSame = [&rate](const ShippoRate &other) {
        return other.objectId != rate.objectId && other.provider == rate.provider &&
               serviceName(other.servicelevel) == serviceName(rate.servicelevel) &&
               other.estimatedDays == rate.estimatedDays;
    };
    QStringList parts = {rate.provider, transitText(rate)};
    if (const auto twin = std::ranges::find_if(all, looksTheSame); twin != all.end()) {
        constexpr qsizetype shownOfId = 4;
        if (rate.carrierAccount != twin->carrierAccount)
            parts += u"account …"_s + rate.carrierAccount.value_or(QString()).right(shownOfId);
        else if (rate.servicelevel.token != twin->servicelevel.token)
            parts += rate.servicelevel.token.value_or(QString());
        else
            parts += rate.durationTerms.value_or(QString());
    }
    return joinPresent(parts, u" · "_s);
}

QString LabelTexts::nextStepHint(const LabelScreen &screen)
{
    const auto step = [&screen]() -> QString {
        if (screen.awaitsChoice())
            return u"waiting for your choice."_s;
        if (screen.buying)
            return screen.isClosing() ? u"buying and printing the label — Parcelory closes when it is done."_s
                                      : u"buying and printing the label…"_s;
        if (screen.validating || screen.rating)
            return u"asking the carrier…"_s;
        if (screen.busy)
            return u"printing…"_s;
        if (!screen.rates.value().isEmpty() && screen.isBuyClosed())
            return u"rates loaded — you can buy once Shippo answers about the last label."_s;
        if (!screen.rates.value().isEmpty() && screen.awaitsFill())
            return u"loading the scanned invoice — you can buy once it is in the form."_s;
        if (!screen.rates.value().isEmpty())
            return u"rates loaded — check the rate, then buy."_s;
        if (!screen.recipientFilled())
            return u"fill in the recipient."_s;
        if (!screen.validationOK)
            return u"validate the address."_s;
        if (screen.formComplete())
            return missingForRates(screen);
        return screen.senderFilled() ? u"add the weight."_s : u"fill in the sender's address in Settings."_s;
    }();
    const QString invoice = screen.reference.value().trimmed();
    return invoice.isEmpty() ? step.left(1).toUpper() + step.mid(1) : u"Invoice "_s + invoice + u" · "_s + step;
}

} // namespace parcelory
