#include "compose/LabelScreen.h"

#include "compose/Destination.h"
#include "compose/Weight.h"
#include "core/Text.h"

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

LabelScreen::LabelScreen(AppState &app) : m_app(app), m_lastRecipient(app.draftTo)
{
    shipDate = app.platform.clock.now().date();
    watchEdits();
}

void LabelScreen::watchEdits()
{
    const auto watch = [this](auto action, auto &...property) {
        (m_notifiers.push_back(property.addNotifier(action)), ...);
    };
    watch([this] { draftEdited(); }, m_app.senders.profiles, m_app.senders.defaultID, senderID, weightLb, weightOz,
          dimLength, dimWidth, dimHeight, service, insuranceValue, shipDate, fedexResidential);
    watch([this] { recipientEdited(); }, m_app.draftTo);
    watch([this] { mailpieceChosen(); }, mailpiece);
    watch([this] { carrierChosen(); }, carrier);
    watch([this] { invalidateIntlRates(); }, customs);
    watch([this] { selectRateOfClass(); }, svcClass);
    watch([this] { takeFilledDraft(); }, m_app.draftFillCount);
}

void LabelScreen::draftEdited()
{
    ++m_edits;
    clearRates();
}

void LabelScreen::recipientEdited()
{
    const ShippoAddress previous = std::exchange(m_lastRecipient, m_app.draftTo);
    ShippoAddress sameWhereabouts = previous;
    sameWhereabouts.name = m_lastRecipient.name;
    sameWhereabouts.company = m_lastRecipient.company;
    sameWhereabouts.phone = m_lastRecipient.phone;
    sameWhereabouts.email = m_lastRecipient.email;
    if (!(sameWhereabouts == m_lastRecipient)) { // a checked street is not the one that stands here now
        forgetValidation();
        showIntlPaperwork = false; // the open sheet is about another parcel
    }
    draftEdited();
    syncClassToDestination();
}

void LabelScreen::mailpieceChosen()
{
    draftEdited();
    const MailpieceSelection &chosen = mailpiece.value();
    if (std::exchange(m_sizeFromBox, false))
        setSize({}, {}, {}); // a box's size is not that of other packaging
    if (const auto *preset = std::get_if<PresetMailpiece>(&chosen)) {
        if (const PresetBox *box = presetBox(preset->id)) {
            setSize(box->length, box->width, box->height);
            m_sizeFromBox = true;
        }
    } else if (const auto *id = std::get_if<QUuid>(&chosen)) {
        if (const std::optional<BoxProfile> box = m_app.boxes.find(*id)) {
            setSize(box->length, box->width, box->height);
            m_sizeFromBox = true;
        }
    }
}

void LabelScreen::setSize(const QString &length, const QString &width, const QString &height)
{
    dimLength = length;
    dimWidth = width;
    dimHeight = height;
}

void LabelScreen::carrierChosen()
{
    draftEdited();
    const auto *builtin = std::get_if<BuiltinMailpiece>(&mailpiece.value());
    if (builtin && !templateName().isEmpty() && builtinMailpieceInfo(*builtin).carrier != carrier)
        mailpiece = BuiltinMailpiece::package;
    if (serviceOptionInfo(service).carrier != carrier)
        service = std::ranges::find(serviceOptions(), carrier.value(), &ServiceOptionInfo::carrier)->option;
    syncClassToDestination();
}

void LabelScreen::syncClassToDestination()
{
    const ServiceClassInfo &info = serviceClassInfo(svcClass);
    if (info.carrier != carrier || info.international != isInternational())
        svcClass = defaultServiceClass(carrier, isInternational());
}

void LabelScreen::invalidateIntlRates()
{
    if (!isInternational())
        return;
    ++m_edits;
    if (rates.value().isEmpty())
        return;
    clearRates();
    warn(u"Customs details changed — get rates again so the label matches."_s);
}

void LabelScreen::takeFilledDraft()
{
    draftEdited(); // even when the recipient is the same one again
    reference = m_app.draftReference.value();
    forgetValidation();
    showIntlPaperwork = false;
    banner = std::nullopt;
}

void LabelScreen::forgetValidation()
{
    validationStatus = QString();
    validationOK = false;
}

void LabelScreen::clearDraft()
{
    banner = std::nullopt;
    forgetValidation();
    fedexResidential = false;
    if (!m_sizeFromBox)
        setSize({}, {}, {});
    m_app.draftTo = ShippoAddress{};
    weightLb = QString();
    weightOz = QString();
    insuranceValue = QString();
    reference = QString();
    descriptionText = QString();
    customs = CustomsInfo{};
    shipDate = m_app.platform.clock.now().date();
    showIntlPaperwork = false;
    clearRates();
}

void LabelScreen::clearRates()
{
    rates = QList<ShippoRate>();
    selectedRateID = std::nullopt;
}

void LabelScreen::warn(const QString &text)
{
    banner = Banner{text, false};
}

void LabelScreen::fail(const QString &context, const AppError &error)
{
    warn(error.description());
    m_app.errors.record(context, error, Popup::yes);
}

std::optional<SenderProfile> LabelScreen::sender() const
{
    if (senderID.value()) {
        if (const auto chosen = m_app.senders.find(*senderID.value()))
            return chosen;
    }
    return m_app.senders.defaultProfile();
}

bool LabelScreen::isInternational() const
{
    return isInternationalCountry(m_app.draftTo.value().country);
}

bool LabelScreen::flatRateLocked() const
{
    const auto *builtin = std::get_if<BuiltinMailpiece>(&mailpiece.value());
    return carrier == Carrier::usps && builtin && isFlatRate(*builtin);
}

ServiceClass LabelScreen::effectiveClass() const
{
    return flatRateLocked() ? ServiceClass::priority : svcClass.value();
}

double LabelScreen::totalPounds() const
{
    return decimalOrZero(weightLb) + decimalOrZero(weightOz) / 16;
}

QString LabelScreen::weightDisplay() const
{
    return weightText(totalPounds() * 16);
}

bool LabelScreen::formComplete() const
{
    const std::optional<SenderProfile> from = sender();
    const ShippoAddress &to = m_app.draftTo.value();
    return from && !from->address.isEmpty() && !to.name.isEmpty() && !to.street1.isEmpty() && !to.city.isEmpty() &&
           !to.zip.isEmpty() && totalPounds() > 0;
}

std::optional<ShippoRate> LabelScreen::selectedRate() const
{
    const QList<ShippoRate> &offered = rates.value();
    const auto found = std::ranges::find(offered, selectedRateID.value(), &ShippoRate::objectId);
    return found == offered.end() ? std::nullopt : std::optional(*found);
}

bool LabelScreen::sendsOwnDimensions() const
{
    return templateName().isEmpty();
}

QString LabelScreen::templateName() const
{
    const auto *builtin = std::get_if<BuiltinMailpiece>(&mailpiece.value());
    return builtin ? builtinMailpieceInfo(*builtin).shippoTemplate : QString();
}

QString LabelScreen::boxName() const
{
    if (const auto *preset = std::get_if<PresetMailpiece>(&mailpiece.value())) {
        const PresetBox *box = presetBox(preset->id);
        return box ? box->name : QString();
    }
    if (const auto *id = std::get_if<QUuid>(&mailpiece.value())) {
        const std::optional<BoxProfile> box = m_app.boxes.find(*id);
        return box ? box->name : QString();
    }
    return {};
}

QString LabelScreen::mailpieceName() const
{
    if (const auto *builtin = std::get_if<BuiltinMailpiece>(&mailpiece.value()))
        return builtinMailpieceInfo(*builtin).displayName;
    const QString box = boxName();
    return box.isEmpty() ? builtinMailpieceInfo(BuiltinMailpiece::package).displayName : box;
}

QString LabelScreen::sizeHint() const
{
    const QString box = boxName();
    return box.isEmpty() ? u"in (required)"_s : u"in (from "_s + box + u')';
}

QString LabelScreen::classHint() const
{
    return flatRateLocked() ? u"Flat Rate ships Priority Mail"_s : QString();
}

QString LabelScreen::signatureWarning() const
{
    if (service != ServiceOption::fedexIndirect || svcClass == ServiceClass::fedexHomeDelivery)
        return {};
    return u"Indirect Signature is a FedEx Home Delivery option — pick Home Delivery as the Class, or use Direct "
           "Signature."_s;
}

QString LabelScreen::senderHint() const
{
    const std::optional<SenderProfile> from = sender();
    return from && from->address.isEmpty() ? u"This profile has no address yet — fill it in under Settings."_s
                                           : QString();
}

QString LabelScreen::ratesHint() const
{
    if (!rates.value().isEmpty())
        return {};
    return formComplete() ? u"Enter the package details, then get rates."_s
                          : u"Need a sender address, recipient, and weight before rating."_s;
}

QString LabelScreen::internationalHint() const
{
    return isInternational() ? u"International — customs declaration required below"_s : QString();
}

QString LabelScreen::customsHint() const
{
    if (!isInternational())
        return {};
    return u"Declared as “%1”, merchandise, return if undeliverable. A commercial invoice prints to the document "
           "printer with the label."_s.arg(customsItem(customs.value().itemType).description);
}

QString LabelScreen::paperworkText() const
{
    return u"Pick what's in this shipment for %1 — this goes on the label's customs form and the commercial invoice, "
           "then rates load."_s.arg(m_app.draftTo.value().name);
}

QString LabelScreen::transitText(const ShippoRate &rate)
{
    if (!rate.estimatedDays)
        return u"Unknown"_s;
    return *rate.estimatedDays == 1 ? u"1 day"_s : QString::number(*rate.estimatedDays) + u" days"_s;
}

} // namespace parcelory
