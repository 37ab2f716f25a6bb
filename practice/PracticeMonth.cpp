#include "practice/PracticeMonth.h"

#include "compose/LabelReadBack.h"
#include "compose/Weight.h"
#include "core/ShippoAddress.h"
#include "core/Text.h"
#include "practice/carrier/PracticeCarrier.h"
#include "practice/carrier/PracticeLabel.h"
#include "records/Journeys.h"
#include "records/LabelEvents.h"
#include "records/ShipmentLog.h"
#include "records/ShipmentRecord.h"
#include "records/ShipmentStatus.h"
#include "records/StatusWords.h"

#include <optional>
#include <string>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

struct Sample {
    double daysAgo;
    const char16_t *recipient;
    const char16_t *service;
    const char16_t *tracking;
    double postage;
    TrackingStatus tracked = TrackingStatus::delivered;
    double movedDaysAgo = 0;
    const char16_t *zip = u"";
    const char16_t *place = u"";
    LogStatus status = LogStatus::printed;
    std::optional<LabelEvent> event = {};
    double eventDaysAgo = 0;
    bool isUnchecked = false;
};

using enum TrackingStatus;

constexpr Sample samples[] = {
    {28.2, u"Ana Ortiz, 5 Mesa Verde, Santa Fe NM 87501", u"Priority Mail", u"9405511899560412001178", 9.85},
    {25.1, u"Silas Okonkwo, 1550 Poplar Ave, Memphis TN 38104", u"Priority Mail", u"9405511899560413018726", 9.85,
     preTransit},
    {23.0, u"Ines Valdivia, 2210 Cactus Wren Rd, Tucson AZ 85701", u"Ground Advantage", u"9400111899560413400914",
     7.12},
    {20.2, u"Hollis Bergstrom, 12 Cedar St, Salem OR 97301", u"Ground Advantage", u"9400111899560413662015", 7.12,
     preTransit},
    {18.3, u"Marisol Vega, 2904 Convent Ave, Laredo TX 78040", u"Priority Mail", u"9405511899560414093248", 9.85,
     preTransit, 18, u"", u"", LogStatus::refundPending, LabelEvent::refundAsked, 16.1},
    {15.0, u"Desmond Pruitt, 400 Harbor Blvd, Portland ME 04101", u"Priority Mail", u"9405511899560414518831", 12.35},
    {12.1, u"Joseph P. Caldwell, PO Box 239, Elko NV 89803", u"Priority Mail", u"9405511899560415207463", 12.35,
     returned, 3, u"97301", u"Salem OR"},
    {8.2, u"Lucille Fairbanks, 61 Orchard Rd, Keene NH 03431", u"Ground Advantage", u"9400111899560415881109", 7.12,
     transit, 5.1, u"03060", u"Nashua NH"},
    {7.1, u"Ruth Abernathy, 88 Quarry Ln, Bend OR 97701", u"Priority Mail", u"9405511899560415990726", 9.85, delivered,
     4, u"97702", u"Bend OR"},
    {6.3, u"Beatrix Lindqvist, 80 Harbor Rd, Portland ME 04101", u"Ground Advantage", u"9400111899560416010334", 7.12,
     preTransit},
    {4.0, u"Odette Marchand, 4 Rue Royale, New Orleans LA 70130", u"Priority Mail", u"9405511899560416204417", 12.35,
     transit, 1, u"70113", u"New Orleans LA"},
    {1.8, u"Grant Holloway, 77 Peach St, Macon GA 31201", u"Ground Advantage", u"9400111899560416887315", 7.12, transit,
     1, u"31201", u"Macon GA", LogStatus::refundError},
    {1.5, u"Paul Zielinski, 7 Harbor Ct, Duluth MN 55802", u"Priority Mail Express", u"9470111899560417104491", 31.40,
     preTransit},
    {1.2, u"Kenji Yamada, 1-9-1 Marunouchi, Tokyo 100-0005, JP", u"First-Class Package International", u"LZ540118995US",
     26.75, preTransit, 0, u"", u"", LogStatus::printed, LabelEvent::papersFailed, 1.2},
    {0.2,
     u"Theodore Eng, 2217 W Alder St, Apt 9, Tacoma WA 98405",
     u"Priority Mail",
     u"9405511899560417230155",
     9.85,
     preTransit,
     0,
     u"",
     u"",
     LogStatus::printed,
     {},
     0,
     true},
};

std::string statusOf(const ShipmentRecord &label)
{
    switch (refundState(label)) {
    case RefundState::pending:
        return "REFUNDPENDING";
    case RefundState::granted:
        return "REFUNDED";
    case RefundState::failed:
        return "REFUNDREJECTED";
    case RefundState::none:
        break;
    }
    return "SUCCESS";
}

PracticeSale saleOf(const OpenFacts &facts)
{
    const ShipmentRecord &label = facts.label;
    ShippoAddress to = addressesOf(label.recipient, label.zip11, label.isIntl).value(0);
    if (to.zip.isEmpty()) { // abroad, it stands behind the city
        to.zip = to.city.section(u' ', -1);
        to.city = to.city.section(u' ', 0, -2);
    }
    const Journey journey = facts.journey.value_or(Journey());
    return {.name = to.name.toStdString(),
            .street = to.street1.toStdString(),
            .city = to.city.toStdString(),
            .state = to.state.toStdString(),
            .zip = to.zip.toStdString(),
            .country = label.isIntl ? to.country.toStdString() : "US",
            .carrier = label.carrier.toStdString(),
            .service = label.service.toStdString(),
            .amount = fixed(label.postage, 2).toStdString(),
            .at = label.createdAt,
            .status = statusOf(label),
            .id = label.transactionID.toStdString(),
            .tracking = label.tracking.toStdString(),
            .way = facts.journey ? wordOf(journey.status).toStdString() : std::string(),
            .place = journey.place.toStdString(),
            .placeZip = journey.zip.toStdString(),
            .movedAt = journey.movedAt};
}

} // namespace

void addPracticeMonth(ShipmentLog &log, const QDateTime &now)
{
    const auto ago = [&now](double days) { return now.addSecs(-qint64(days * 24 * 3600)); };
    int number = 0;
    for (const Sample &sample : samples) {
        ++number;
        ShipmentRecord record{.createdAt = ago(sample.daysAgo),
                              .service = QString::fromUtf16(sample.service),
                              .postage = sample.postage,
                              .recipient = QString::fromUtf16(sample.recipient),
                              .services = u"USPS Tracking"_s,
                              .tracking = QString::fromUtf16(sample.tracking),
                              .weight = weightText(13),
                              .weightOz = 13,
                              .reference = QString::number(47800 + number),
                              .transactionID = u"7a2d4e8c1f6b4d03b5c7e9f18b63%1"_s.arg(number, 4, 16, QChar(u'0')),
                              .status = wordOf(sample.tracked == delivered ? LogStatus::delivered : sample.status)};
        record.isIntl = record.recipient.endsWith(u", JP"_s);
        if (record.isIntl)
            record.customsPDF = pdfPaper(u"COMMERCIAL INVOICE"_s, {record.recipient});
        if (sample.isUnchecked)
            record.zpl = "^XA^FO50,50^A0N,40^FDTHEODORE ENG^FS^XZ";
        if (!log.insert(record, false))
            return;
        const auto row = log.find({.createdAt = record.createdAt, .transactionID = record.transactionID});
        if (!row.isRead() || !*row)
            return;
        const Journey journey{.status = sample.tracked,
                              .isScanned = sample.tracked != preTransit,
                              .movedAt = ago(sample.movedDaysAgo),
                              .zip = QString::fromUtf16(sample.zip),
                              .place = QString::fromUtf16(sample.place),
                              .askedAt = now};
        const bool isStored = log.change([&](Database &db) {
            return Journeys::put(db, (*row)->id, journey);
        }) && (!sample.event || LabelEvents::put(log, {record.transactionID}, *sample.event, ago(sample.eventDaysAgo)));
        if (!isStored)
            return;
    }
    log.reload();
}

void addToAccount(PracticeCarrier &carrier, const QList<OpenFacts> &labels)
{
    for (const OpenFacts &facts : labels)
        carrier.seedSale(saleOf(facts));
}

} // namespace parcelory
