#include "app/label/LabelDraft.h"

#include "app/AppState.h"
#include "backoffice/DesklineInvoice.h"
#include "compose/Destination.h"
#include "compose/Mailpieces.h"
#include "compose/SecondLabel.h"
#include "compose/Services.h"
#include "compose/Weight.h"
#include "core/CountryCode.h"
#include "core/ShippoAddress.h"
#include "core/Text.h"
#include "records/BoxProfile.h"
#include "records/SenderProfile.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <variant>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// How many pieces the invoice lists; empty if a count cannot be read.
QString quantityOf(const DesklineInvoice &invoice)
{
    int pieces = 0;
    for (const DesklineInvoiceItem &item : invoice.items) {
        bool isNumber = true;
        pieces += item.qty.trimmed().isEmpty() ? 1 : item.qty.trimmed().toInt(&isNumber);
        if (!isNumber)
            return {};
    }
    return pieces > 0 ? QString::number(pieces) : QString();
}

} // namespace

LabelDraft::LabelDraft(AppState &app) : m_app(app), m_habits(app.platform.preferences)
{
    shipDate = app.platform.clock.now().date();
    watch();
    recallChoice();
}

void LabelDraft::watch()
{
    const auto on = [this](auto action, auto &...property) {
        (m_notifiers.push_back(property.addNotifier(action)), ...);
    };
    on([this] { countEdit(); }, m_app.keyChanges, m_app.senders.profiles, m_app.senders.defaultID, senderID, weightLb,
       weightOz, dimLength, dimWidth, dimHeight, service, insuranceValue, shipDate, fedexResidential);
    on(
        [this] {
            countEdit();
            destinationChanged();
        },
        m_app.draftTo);
    on([this] { mailpieceChosen(); }, mailpiece);
    on([this] { carrierChosen(); }, carrier);
    on([this] { boxesChanged(); }, m_app.boxes.profiles);
    on([this] { takeFill(); }, m_app.draftFillCount);
    on([this] { noteChoice(); }, carrier, mailpiece, svcClass);
}

/// What was typed or weighed for another recipient does not go to the next one.
void LabelDraft::takeFill()
{
    const ShippoAddress &replaced = m_app.replacedRecipient;
    if (!replaced.isEmpty() && !isSameRecipient(replaced, m_app.draftTo)) {
        const QString typed = customs.value().signer; // the same clerk signs
        const QString signer = typed.isEmpty() ? freshCustoms().signer : typed;
        clearParcel();
        customs = CustomsInfo{.signer = signer};
    }
    countEdit(); // even if the recipient is unchanged
    reference = m_app.draftReference.value();
    takeCustoms();
}

LabelDraft::Parcel LabelDraft::parcel() const
{
    return {weightLb,  weightOz,        dimLength, dimWidth,         dimHeight, insuranceValue,
            reference, descriptionText, customs,   fedexResidential, shipDate};
}

bool LabelDraft::isClear() const
{
    Parcel now = parcel();
    if (m_sizeFromBox)
        now.dimLength = now.dimWidth = now.dimHeight = QString();
    now.customs.signer = QString();
    return recipient().isEmpty() && now == Parcel{.shipDate = m_app.platform.clock.now().date()};
}

void LabelDraft::clearParcel(const std::optional<Parcel> &sold)
{
    const Parcel fresh{.customs = isInternational() ? freshCustoms() : CustomsInfo{},
                       .shipDate = m_app.platform.clock.now().date()};
    // Fields that make one value together, such as pounds and ounces, are cleared together.
    const auto clear = [&](auto... fields) {
        if (!sold || ((fields.first->value() == (*sold).*fields.second) && ...))
            ((*fields.first = fresh.*fields.second), ...);
    };
    clear(std::pair(&weightLb, &Parcel::weightLb), std::pair(&weightOz, &Parcel::weightOz));
    if (!m_sizeFromBox)
        clear(std::pair(&dimLength, &Parcel::dimLength), std::pair(&dimWidth, &Parcel::dimWidth),
              std::pair(&dimHeight, &Parcel::dimHeight));
    clear(std::pair(&insuranceValue, &Parcel::insuranceValue));
    clear(std::pair(&reference, &Parcel::reference));
    clear(std::pair(&descriptionText, &Parcel::descriptionText));
    clear(std::pair(&customs, &Parcel::customs));
    clear(std::pair(&fedexResidential, &Parcel::fedexResidential));
    clear(std::pair(&shipDate, &Parcel::shipDate));
}

void LabelDraft::mailpieceChosen()
{
    countEdit();
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
void LabelDraft::boxesChanged()
{
    const auto *id = std::get_if<QUuid>(&mailpiece.value());
    if (!id)
        return;
    if (const std::optional<BoxProfile> box = m_app.boxes.find(*id))
        setSize(box->length, box->width, box->height);
    else
        mailpiece = BuiltinMailpiece::package;
}

void LabelDraft::setSize(const QString &length, const QString &width, const QString &height)
{
    dimLength = length;
    dimWidth = width;
    dimHeight = height;
}

void LabelDraft::carrierChosen()
{
    countEdit();
    const auto *builtin = std::get_if<BuiltinMailpiece>(&mailpiece.value());
    if (builtin && !templateName().isEmpty() && builtinMailpieceInfo(*builtin).carrier != carrier)
        mailpiece = BuiltinMailpiece::package;
    if (serviceOptionInfo(service).carrier != carrier)
        service = std::ranges::find(serviceOptions(), carrier.value(), &ServiceOptionInfo::carrier)->option;
    syncClassToDestination();
}

void LabelDraft::destinationChanged()
{
    syncClassToDestination();
    if (!std::exchange(m_wasAbroad, isInternational()) && m_wasAbroad && customs.value().signer.isEmpty()) {
        CustomsInfo declared = customs;
        declared.signer = freshCustoms().signer;
        customs = declared;
    }
}

void LabelDraft::syncClassToDestination()
{
    const ServiceClassInfo &info = serviceClassInfo(svcClass);
    if (info.carrier != carrier || info.international != isInternational())
        svcClass = defaultServiceClass(carrier, isInternational());
}

/// Fills the customs declaration from the invoice. Without an invoice, clears what the last invoice filled in. The
/// signer stays.
void LabelDraft::takeCustoms()
{
    const std::optional<DesklineInvoice> invoice = draftInvoice();
    CustomsInfo filled;
    if (invoice) {
        filled.itemType = invoice->suggestedCustomsType().value_or(filled.itemType);
        filled.value = defaultCustomsValue();
        filled.quantity = quantityOf(*invoice);
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

std::optional<DesklineInvoice> LabelDraft::draftInvoice() const
{
    const std::optional<DesklineInvoice> &invoice = m_app.scannedInvoice.value();
    return invoice && invoice->invoiceID == reference.value().trimmed() ? invoice : std::nullopt;
}

QString LabelDraft::invoiceTracking() const
{
    if (const std::optional<DesklineInvoice> invoice = draftInvoice())
        return invoice->tracking;
    const QString named = reference.value().trimmed();
    return !named.isEmpty() && named == m_restoredReference ? m_restoredTracking : QString();
}

QString LabelDraft::defaultCustomsValue() const
{
    const std::optional<DesklineInvoice> invoice = draftInvoice();
    const std::optional<double> subtotal = invoice ? invoice->subtotal() : std::nullopt;
    return subtotal ? fixed(*subtotal, 2) : QString();
}

double LabelDraft::invoiceValue() const
{
    return decimalOrZero(defaultCustomsValue());
}

bool LabelDraft::isInsurable() const
{
    return invoiceValue() > decimalOrZero(insuranceValue);
}

void LabelDraft::insureForInvoice()
{
    if (isInsurable())
        insuranceValue = defaultCustomsValue();
}

std::optional<SenderProfile> LabelDraft::sender() const
{
    if (senderID.value()) {
        if (const auto chosen = m_app.senders.find(*senderID.value()))
            return chosen;
    }
    return m_app.senders.defaultProfile();
}

void LabelDraft::settleCountry()
{
    ShippoAddress to = m_app.draftTo;
    to.country = CountryCode::find(to.country).value_or(to.country);
    m_app.draftTo = to;
}

bool LabelDraft::isInternational() const
{
    return isInternationalCountry(m_app.draftTo.value().country);
}

bool LabelDraft::flatRateLocked() const
{
    const auto *builtin = std::get_if<BuiltinMailpiece>(&mailpiece.value());
    return carrier == Carrier::usps && builtin && isFlatRate(*builtin);
}

ServiceClass LabelDraft::effectiveClass() const
{
    return flatRateLocked() ? defaultServiceClass(Carrier::usps, isInternational()) : svcClass.value();
}

double LabelDraft::totalPounds() const
{
    return decimalOrZero(weightLb) + decimalOrZero(weightOz) / 16;
}

QString LabelDraft::weightDisplay() const
{
    return weightText(totalPounds() * 16);
}

bool LabelDraft::senderFilled() const
{
    const std::optional<SenderProfile> from = sender();
    return from && !from->address.isEmpty();
}

bool LabelDraft::recipientFilled() const
{
    const ShippoAddress &to = m_app.draftTo.value();
    const auto given = [](const QString &text) { return !text.trimmed().isEmpty(); };
    return given(to.name) && given(to.street1) && given(to.city) && given(to.zip);
}

bool LabelDraft::formComplete() const
{
    return senderFilled() && recipientFilled() && totalPounds() > 0;
}

QList<ServiceClass> LabelDraft::offeredClasses() const
{
    QList<ServiceClass> offered;
    for (const ServiceClassInfo &info : serviceClasses()) {
        if (info.carrier == carrier && info.international == isInternational())
            offered.append(info.serviceClass);
    }
    return offered;
}

QList<ServiceOption> LabelDraft::offeredOptions() const
{
    QList<ServiceOption> offered;
    for (const ServiceOptionInfo &info : serviceOptions()) {
        if (info.carrier == carrier)
            offered.append(info.option);
    }
    return offered;
}

bool LabelDraft::sendsOwnDimensions() const
{
    return templateName().isEmpty();
}

QString LabelDraft::templateName() const
{
    const auto *builtin = std::get_if<BuiltinMailpiece>(&mailpiece.value());
    return builtin ? builtinMailpieceInfo(*builtin).shippoTemplate : QString();
}

QString LabelDraft::printedCompany() const
{
    return m_app.sanitizer.sanitize(recipient().company);
}

QString LabelDraft::boxName() const
{
    if (const auto *preset = std::get_if<PresetMailpiece>(&mailpiece.value())) {
        const PresetBox *box = presetBox(preset->id);
        return box ? box->name : QString();
    }
    if (const auto *id = std::get_if<QUuid>(&mailpiece.value())) {
        const std::optional<BoxProfile> box = m_app.boxes.find(*id);
        return box ? box->title() : QString();
    }
    return {};
}

} // namespace parcelory
