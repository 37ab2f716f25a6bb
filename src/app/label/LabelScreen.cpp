#include "app/label/LabelScreen.h"

#include "app/AppState.h"
#include "app/purchase/Purchases.h"
#include "backoffice/DesklineInvoice.h"
#include "carrier/ShippoRecords.h"
#include "compose/Customs.h"
#include "compose/Destination.h"
#include "compose/Mailpieces.h"
#include "compose/Services.h"
#include "compose/Weight.h"
#include "core/AppError.h"
#include "core/Task.h"
#include "core/Text.h"
#include "records/BoxProfile.h"
#include "records/SenderProfile.h"
#include "shell/ErrorLog.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <variant>

namespace parcelory {
using namespace Qt::StringLiterals;

LabelScreen::LabelScreen(AppState &app) : purchases(app), m_app(app), m_papers(app), m_lastRecipient(app.draftTo)
{
    shipDate = app.platform.clock.now().date();
    buildOn(app, purchases);
    watchEdits();
}

void LabelScreen::watchEdits()
{
    const auto watch = [this](auto action, auto &...property) {
        (m_notifiers.push_back(property.addNotifier(action)), ...);
    };
    watch([this] { draftEdited(); }, m_app.keyChanges, m_app.senders.profiles, m_app.senders.defaultID, senderID,
          weightLb, weightOz, dimLength, dimWidth, dimHeight, service, insuranceValue, shipDate, fedexResidential);
    watch([this] { recipientEdited(); }, m_app.draftTo);
    watch([this] { mailpieceChosen(); }, mailpiece);
    watch([this] { carrierChosen(); }, carrier);
    watch([this] { invalidateIntlRates(); }, customs);
    watch([this] { selectRateOfClass(); }, svcClass);
    watch([this] { boxesChanged(); }, m_app.boxes.profiles);
    watch([this] { takeFilledDraft(); }, m_app.draftFillCount);
    watch([this] { watchForSecondLabel(); }, selectedRateID, reference, purchases.unresolved);
    watch([this] { takeResolved(); }, purchases.resolved);
    // An unresolved purchase may need this key.
    watch([this] { spawn([this] { return purchases.checkAgain(); }); }, m_app.keyChanges);
}

void LabelScreen::draftEdited()
{
    ++m_edits;
    faultyField = std::nullopt;
    if (std::exchange(m_bannerAboutRates, false))
        banner = std::nullopt;
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
    if (!(sameWhereabouts == m_lastRecipient)) { // the validated address is no longer in the form
        forgetValidation();
        showIntlPaperwork = false; // the open sheet is about another parcel
    }
    if (!m_lastRecipient.isEmpty())
        lastLabel = std::nullopt;
    draftEdited();
    syncClassToDestination();
}

void LabelScreen::mailpieceChosen()
{
    draftEdited();
    const MailpieceSelection &chosen = mailpiece.value();
    if (std::exchange(m_sizeFromBox, false))
        setSize({}, {}, {}); // a box's size does not apply to other packaging
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

/// The box in use may have been edited or removed in Settings.
void LabelScreen::boxesChanged()
{
    const auto *id = std::get_if<QUuid>(&mailpiece.value());
    if (!id)
        return;
    if (const std::optional<BoxProfile> box = m_app.boxes.find(*id))
        setSize(box->length, box->width, box->height);
    else
        mailpiece = BuiltinMailpiece::package;
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
    faultyField = std::nullopt;
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
    draftEdited(); // even if the recipient is unchanged
    reference = m_app.draftReference.value();
    forgetValidation();
    showIntlPaperwork = false;
    banner = std::nullopt;
    takeCustoms();
}

/// Fills the customs declaration from the invoice. Without an invoice, clears what the last invoice filled in. The
/// signer stays.
void LabelScreen::takeCustoms()
{
    const std::optional<DesklineInvoice> invoice = draftInvoice();
    CustomsInfo filled;
    if (invoice) {
        filled.itemType = invoice->suggestedCustomsType().value_or(filled.itemType);
        filled.value = defaultCustomsValue();
    }
    CustomsInfo declared = customs;
    if (invoice || declared.itemType == m_filledCustoms.itemType)
        declared.itemType = filled.itemType;
    if (invoice || declared.value == m_filledCustoms.value)
        declared.value = filled.value;
    if (invoice)
        declared.quantity = filled.quantity;
    customs = declared;
    m_filledCustoms = filled;
}

std::optional<DesklineInvoice> LabelScreen::draftInvoice() const
{
    const std::optional<DesklineInvoice> &invoice = m_app.scannedInvoice.value();
    return invoice && invoice->invoiceID == reference.value().trimmed() ? invoice : std::nullopt;
}

QString LabelScreen::defaultCustomsValue() const
{
    const std::optional<DesklineInvoice> invoice = draftInvoice();
    const std::optional<double> subtotal = invoice ? invoice->subtotal() : std::nullopt;
    return subtotal ? fixed(*subtotal, 2) : QString();
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
    secondLabel = QString();
    secondLabelAgreed = false;
}

void LabelScreen::warn(const QString &text, std::optional<DraftField> field)
{
    banner = Banner{text, false};
    m_bannerAboutRates = false;
    faultyField = field;
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

bool LabelScreen::senderFilled() const
{
    const std::optional<SenderProfile> from = sender();
    return from && !from->address.isEmpty();
}

bool LabelScreen::recipientFilled() const
{
    const ShippoAddress &to = m_app.draftTo.value();
    const auto given = [](const QString &text) { return !text.trimmed().isEmpty(); };
    return given(to.name) && given(to.street1) && given(to.city) && given(to.zip);
}

bool LabelScreen::formComplete() const
{
    return senderFilled() && recipientFilled() && totalPounds() > 0;
}

/// The first field that keeps the form from being complete.
DraftField LabelScreen::missingField() const
{
    const ShippoAddress &to = m_app.draftTo.value();
    if (!senderFilled())
        return DraftField::profile;
    if (to.name.trimmed().isEmpty())
        return DraftField::name;
    if (to.street1.trimmed().isEmpty())
        return DraftField::street;
    if (to.city.trimmed().isEmpty())
        return DraftField::city;
    return to.zip.trimmed().isEmpty() ? DraftField::zip : DraftField::weight;
}

NextStep LabelScreen::nextStep() const
{
    if (busy)
        return NextStep::none;
    if (!rates.value().isEmpty())
        return selectedRate() && !isBuyClosed() ? NextStep::buy : NextStep::none;
    if (recipientFilled() && !validationOK)
        return NextStep::validate;
    return formComplete() ? NextStep::getRates : NextStep::none;
}

bool LabelScreen::isBuyClosed() const
{
    const std::optional<UnresolvedPurchase> question = purchases.unresolvedFor(m_app.draftTo);
    return question && !question->isInconclusive;
}

QList<ServiceClass> LabelScreen::offeredClasses() const
{
    QList<ServiceClass> offered;
    for (const ServiceClassInfo &info : serviceClasses()) {
        if (info.carrier == carrier && info.international == isInternational())
            offered.append(info.serviceClass);
    }
    return offered;
}

QList<ServiceOption> LabelScreen::offeredOptions() const
{
    QList<ServiceOption> offered;
    for (const ServiceOptionInfo &info : serviceOptions()) {
        if (info.carrier == carrier)
            offered.append(info.option);
    }
    return offered;
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

} // namespace parcelory
