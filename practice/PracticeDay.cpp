#include "practice/PracticeDay.h"

#include "app/AppState.h"
#include "app/purchase/Purchases.h"
#include "carrier/PurchaseTag.h"
#include "core/CountryCode.h"
#include "core/Text.h"
#include "practice/PracticeSamples.h"
#include "practice/PracticeTime.h"
#include "practice/carrier/PracticeCarrier.h"
#include "practice/carrier/PracticeLabel.h"
#include "records/LabelEvents.h"
#include "records/ScanForms.h"
#include "records/ShipmentRecord.h"
#include "records/StatusWords.h"

#include <algorithm>
#include <optional>
#include <string>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

enum class Fate { loose, onForm, givenBack, unconfirmed, elsewhere, unlisted };

struct Sample {
    Fate fate;
    int minutesAgo;
    double here; ///< the amount in the mailing log
    PracticeSale sale;
};

const Sample samples[] = {
    {Fate::onForm,
     320,
     31.40,
     {"Paul Zielinski", "7 Harbor Ct", "Duluth", "MN", "55802", "US", "USPS", "Priority Mail Express", "33.15", {}}},
    {Fate::unlisted,
     297,
     7.12,
     {"Lucille Fairbanks", "61 Orchard Rd", "Keene", "NH", "03431", "US", "USPS", "Ground Advantage", "7.12", {}}},
    {Fate::loose,
     222,
     148.22,
     {"Harriet Ashcombe",
      "14 Chandos Place",
      "London",
      "",
      "WC2N 4HS",
      "GB",
      "FedEx",
      "International Priority",
      "148.22",
      {}}},
    {Fate::givenBack,
     170,
     9.85,
     {"Ruth Abernathy", "88 Quarry Ln", "Bend", "OR", "97702", "US", "USPS", "Priority Mail", "9.85", {}}},
    {Fate::elsewhere,
     127,
     0,
     {"Grant Holloway", "77 Peach St", "Macon", "GA", "31201", "US", "USPS", "Ground Advantage", "7.12", {}}},
    {Fate::unconfirmed,
     104,
     9.85,
     {"Theodore Eng", "2217 W Alder St", "Tacoma", "WA", "98405", "US", "USPS", "Priority Mail", "9.85", {}}},
    {Fate::loose,
     60,
     12.35,
     {"Eleanor Whitfield", "418 Montford Ave", "Asheville", "NC", "28801", "US", "USPS", "Priority Mail", "12.35", {}}},
};

constexpr int formMinutesAgo = 280, refundMinutesAgo = 134, purchaseMinutesAgo = 20;

/// Early in the morning, not before midnight.
QDateTime before(int minutes)
{
    const QDateTime now = practiceNow();
    return std::max(now.addSecs(-60 * minutes), now.date().startOfDay().addSecs(60));
}

ShipmentRecord recordOf(const Sample &sample, const PracticeSold &sold)
{
    const PracticeSale &sale = sample.sale;
    const auto text = [](const std::string &words) { return QString::fromStdString(words); };
    const QString place = joinPresent({text(sale.city), text(sale.state), text(sale.zip)}, u" "_s);
    const bool isAbroad = text(sale.country) != u"US";
    return {.createdAt = before(sample.minutesAgo),
            .carrier = text(sale.carrier),
            .service = text(sale.service),
            .postage = sample.here,
            .recipient = joinPresent(
                {text(sale.name), text(sale.street), place, isAbroad ? text(sale.country) : QString()}, u", "_s),
            .tracking = sold.tracking,
            .trackingURL = sold.trackingUrl,
            .transactionID = sold.transactionId,
            .labelURL = sold.labelUrl,
            .status = wordOf(sample.fate == Fate::givenBack ? LogStatus::refundPending : LogStatus::printed),
            .testMode = true,
            .isIntl = isAbroad};
}

/// The form that was made before noon, with its page.
bool addForm(AppState &app, const QStringList &labels)
{
    const ScanForm form{.askedAt = before(formMinutesAgo),
                        .testMode = true,
                        .labels = int(labels.size()),
                        .manifestId = u"practice"_s,
                        .transactions = labels};
    const std::optional<qint64> id = app.scanForms.begin(form);
    return id && app.scanForms.setMade(*id, form.manifestId, labels) &&
           app.scanForms.store(*id, {pdfPaper(u"SCAN FORM"_s, labels)}) &&
           LabelEvents::put(app.log, {form.manifestId}, LabelEvent::formPrinted, form.askedAt);
}

void addUnresolved(AppState &app, Purchases &purchases)
{
    OpenPurchase purchase{.askedAt = before(purchaseMinutesAgo),
                          .ratedAt = {},
                          .rateId = u"practice"_s,
                          .keyName = app.keys.activeName(),
                          .recipient = {.name = u"Marisol Vega"_s,
                                        .street1 = u"2904 Convent Ave"_s,
                                        .city = u"Laredo"_s,
                                        .state = u"TX"_s,
                                        .zip = u"78040"_s,
                                        .country = u"US"_s},
                          .record = {.service = u"Priority Mail"_s,
                                     .postage = 9.85,
                                     .recipient = u"Marisol Vega, 2904 Convent Ave, Laredo TX 78040"_s,
                                     .testMode = true}};
    purchase.id = app.journal.begin(purchase);
    purchases.markUnresolved(purchase, {.text = u"No answer from the carrier within 60 seconds."_s});
}

} // namespace

void addPracticeDay(AppState &app, Purchases &purchases, PracticeCarrier &carrier)
{
    QStringList onForm;
    for (const Sample &sample : samples) {
        PracticeSale sale = sample.sale;
        sale.at = before(sample.minutesAgo);
        sale.isOnForm = sample.fate == Fate::onForm;
        if (sample.fate == Fate::givenBack)
            sale.status = "REFUNDPENDING";
        PracticeSold sold{.transactionId = u"5e1c0b7d2f9a4c08b3d6e1f07a930001"_s,
                          .tracking = u"9210890175547700004711"_s,
                          .trackingUrl = {},
                          .labelUrl = {}};
        if (sample.fate != Fate::unlisted)
            sold = carrier.seedSale(sale);
        if (sample.fate == Fate::elsewhere)
            continue;
        const ShipmentRecord record = recordOf(sample, sold);
        const bool isStored =
            app.log.insert(record) &&
            LabelEvents::put(app.log, {record.transactionID}, LabelEvent::sent, record.createdAt) &&
            (sample.fate == Fate::unconfirmed ||
             LabelEvents::put(app.log, {record.transactionID}, LabelEvent::cameOut, record.createdAt)) &&
            (sample.fate != Fate::givenBack ||
             LabelEvents::put(app.log, {record.transactionID}, LabelEvent::refundAsked, before(refundMinutesAgo)));
        if (!isStored)
            return;
        if (sample.fate == Fate::onForm || sample.fate == Fate::unlisted)
            onForm += record.transactionID;
    }
    if (addForm(app, onForm))
        addUnresolved(app, purchases);
    emit app.labelsNoted();
}

PracticeSold addOtherDesksLabel(const ShippoAddress &recipient, PracticeCarrier &carrier)
{
    const ShippoAddress to = recipient.name.trimmed().isEmpty() ? practiceRecipient() : recipient;
    const QString tag = PurchaseTag::of({.zip = u"97301"_s}, to, Carrier::usps, u"Priority Mail"_s).text();
    return carrier.seedSale({.name = to.name.toStdString(),
                             .street = to.street1.toStdString(),
                             .city = to.city.toStdString(),
                             .state = to.state.toStdString(),
                             .zip = to.zip.toStdString(),
                             .country = to.country.isEmpty() ? "US" : CountryCode::alpha2(to.country).toStdString(),
                             .carrier = "USPS",
                             .service = "Priority Mail",
                             .amount = "9.85",
                             .at = practiceNow(),
                             .tag = tag.toStdString()});
}

} // namespace parcelory
