#include "app/label/PreparedPurchase.h"

#include "app/AppState.h"
#include "app/label/LabelDraft.h"
#include "carrier/PurchaseTag.h"
#include "carrier/ShippoRecords.h"
#include "compose/SecondLabel.h"
#include "compose/Services.h"
#include "core/CountryCode.h"
#include "core/IsoDate.h"
#include "core/ShippoAddress.h"
#include "core/Text.h"
#include "records/ShipmentRecord.h"

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

QString recipientLine(const ShippoAddress &to, bool international)
{
    const QString country = international ? CountryCode::alpha2(to.country) : QString();
    return joinPresent({to.name, to.company, to.oneLine(), country}, u", "_s).simplified();
}

/// The row for the mailing log, as far as it is known before the purchase.
ShipmentRecord recordOf(const LabelDraft &draft, const ShippoAddress &to, const ShippoRate &rate, const QDateTime &now)
{
    const bool isAbroad = draft.isInternational();
    const QString insured = draft.insuranceValue.value().trimmed();
    const bool isInsured = decimalOrZero(insured) > 0;
    const QString declared = isAbroad ? draft.customs.value().value.trimmed() : QString();
    QStringList services = {serviceOptionInfo(draft.service).label};
    if (isAbroad)
        services += u"Declared $"_s + declared;
    if (isInsured)
        services += u"Insurance $"_s + insured;

    ShipmentRecord record;
    record.createdAt = now;
    record.carrier = carrierInfo(draft.carrier).displayName;
    record.service = serviceName(rate.servicelevel);
    record.postage = decimalOrZero(rate.amount);
    record.recipient = recipientLine(to, isAbroad);
    record.services = services.join(u", "_s);
    record.weight = draft.weightDisplay();
    record.weightOz = draft.totalPounds() * 16;
    record.descriptionText = draft.descriptionText.value().simplified();
    record.reference = draft.reference.value().simplified();
    record.zip11 = to.zip;
    record.declaredValue = isAbroad ? declared : isInsured ? insured : QString();
    record.email = to.email;
    record.isIntl = isAbroad;
    return record;
}

} // namespace

PreparedPurchase preparePurchase(const LabelDraft &draft, const AppState &app, const ShippoRate &rate,
                                 const SecondLabelFacts &facts)
{
    const ShippoAddress recipient = app.draftTo;
    ShippoAddress to = recipient; // what others read is discreet: the address book keeps the full company
    to.company = app.sanitizer.sanitize(to.company);
    const ShipmentRecord record = recordOf(draft, to, rate, app.platform.clock.now());
    return {.carrier = draft.carrier,
            .from = draft.senderForCarrier(),
            .to = to,
            .parcel = draft.parcel(),
            .edits = draft.edits,
            .weighed = app.scale.generation(),
            .invoice = draft.invoiceData(carrierAndService(draft.carrier, record.service)),
            .facts = facts,
            .entry = {.askedAt = record.createdAt,
                      .ratedAt = parseIso(rate.objectCreated.value_or(QString())).value_or(QDateTime()),
                      .rateId = rate.objectId,
                      .keyName = app.keys.activeName(),
                      .recipient = recipient,
                      .keepRecipient = draft.keepRecipient,
                      .record = record,
                      .printsPapers = draft.carrier == Carrier::fedex || draft.printInvoiceWithRates}};
}

QString PreparedPurchase::tag() const
{
    return PurchaseTag::of(from, to, carrier, entry.record.service).text();
}

} // namespace parcelory
