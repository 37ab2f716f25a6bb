#include "records/OpenItems.h"

#include "core/Words.h"
#include "records/LabelChecks.h"
#include "records/LabelEvents.h"
#include "records/RefundNotes.h"
#include "records/ShipmentLogRows.h"
#include "records/ShipmentStatus.h"

#include <QRegularExpression>

#include <algorithm>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr Word<OpenReason> reasonWords[] = {
    {OpenReason::refundRejected, u"REFUND_REJECTED"},
    {OpenReason::refundUndecided, u"REFUND_UNDECIDED"},
    {OpenReason::refundUrgent, u"REFUND_URGENT"},
    {OpenReason::refundEnding, u"REFUND_ENDING"},
    {OpenReason::scanUnknown, u"SCAN_UNKNOWN"},
    {OpenReason::returned, u"RETURNED"},
    {OpenReason::otherZip, u"OTHER_ZIP"},
    {OpenReason::customsPapers, u"CUSTOMS_PAPERS"},
    {OpenReason::labelUnchecked, u"LABEL_UNCHECKED"},
    {OpenReason::unused, u"UNUSED"},
    {OpenReason::notScanned, u"NOT_SCANNED"},
    {OpenReason::noMovement, u"NO_MOVEMENT"},
    {OpenReason::lateCopy, u"LATE_COPY"},
};

/// Runs before every write, so that a log without such items gets no such table.
constexpr auto schema = "CREATE TABLE IF NOT EXISTS open_items_done (\n"
                        "  shipment_id INTEGER NOT NULL,\n"
                        "  reason TEXT NOT NULL,\n"
                        "  PRIMARY KEY (shipment_id, reason)\n"
                        ");";

constexpr qint64 daySeconds = 24 * 3600;

/// The first five digits of a ZIP; empty for another text.
QString shortZip(const QString &zip)
{
    static const QRegularExpression form(u"^\\s*(\\d{5})(-?\\d{4})?\\s*$"_s);
    return form.match(zip).captured(1);
}

/// The ZIP on a domestic label; empty if the label has no ZIP.
QString zipOf(const ShipmentRecord &label)
{
    static const QRegularExpression last(u"\\b(\\d{5})(-\\d{4})?\\s*$"_s);
    if (label.isIntl)
        return {};
    const QString zip = label.zip11.isEmpty() ? QString() : shortZip(label.zip11.left(10));
    return zip.isEmpty() ? last.match(label.recipient).captured(1) : zip;
}

/// What decides for one label.
class Judge {
public:
    Judge(const OpenFacts &facts, const QDateTime &now)
        : m_facts(facts), m_age(facts.label.createdAt.secsTo(now)), m_refund(refundState(facts.label)),
          m_isDelivered(logStatusFrom(facts.label.status) == LogStatus::delivered), m_now(now)
    {
    }

    bool holds(OpenReason reason) const
    {
        if (!m_facts.done.isEmpty() && m_facts.done.contains(wordOf(reason)))
            return false;
        switch (reason) {
        case OpenReason::refundRejected:
            return m_refund == RefundState::failed;
        case OpenReason::refundUndecided:
            return m_refund == RefundState::pending && refundDays() >= OpenItems::undecidedAfter;
        default:
            return m_refund == RefundState::none && m_age <= OpenItems::remembersFor * daySeconds && needsHand(reason);
        }
    }
    OpenItem item(OpenReason reason) const
    {
        OpenItem item{.reason = reason, .label = m_facts.label, .days = int(m_age / daySeconds)};
        item.daysLeft = std::max(0, OpenItems::refundEndsAfter - item.days);
        if (m_facts.journey) {
            item.zip = shortZip(m_facts.journey->zip);
            item.place = m_facts.journey->place;
        }
        item.isScanned = isWithCarrier();
        item.daysOpen = m_refund != RefundState::pending  ? stillDays()
                        : m_facts.refundAskedAt.isValid() ? refundDays()
                                                          : 0;
        return item;
    }

private:
    /// A label without a scan, as the carrier said.
    bool isUnused() const { return m_facts.journey && !m_facts.journey->isScanned && !m_isDelivered; }
    bool isWithCarrier() const { return m_isDelivered || (m_facts.journey && m_facts.journey->isScanned); }
    bool isUsps() const { return m_facts.label.carrier.compare(u"USPS"_s, Qt::CaseInsensitive) == 0; }
    /// An earlier version did not note when the refund was asked; it was not before the purchase.
    int refundDays() const
    {
        const QDateTime asked = m_facts.refundAskedAt.isValid() ? m_facts.refundAskedAt : m_facts.label.createdAt;
        return int(asked.secsTo(m_now) / daySeconds);
    }
    int stillDays() const
    {
        return m_facts.journey && m_facts.journey->movedAt.isValid()
                   ? int(m_facts.journey->movedAt.secsTo(m_now) / daySeconds)
                   : 0;
    }
    bool isBetween(int first, int last) const { return m_age >= first * daySeconds && m_age < last * daySeconds; }

    bool needsHand(OpenReason reason) const
    {
        using namespace OpenItems;
        const TrackingStatus status = m_isDelivered     ? TrackingStatus::delivered
                                      : m_facts.journey ? m_facts.journey->status
                                                        : TrackingStatus::unknown;
        switch (reason) {
        case OpenReason::refundUrgent:
            return isUnused() && isUsps() && isBetween(refundUrgentAfter, refundEndsAfter);
        case OpenReason::refundEnding:
            return isUnused() && isUsps() && isBetween(refundDueAfter, refundUrgentAfter);
        case OpenReason::scanUnknown:
            return !m_facts.journey && !m_isDelivered && isUsps() && isBetween(refundDueAfter, refundEndsAfter);
        case OpenReason::unused: // others than USPS name no end of the refund
            return isUnused() && isBetween(unusedAfter, isUsps() ? refundDueAfter : refundEndsAfter);
        case OpenReason::notScanned:
            return isUnused() && m_age >= notScannedHours * 3600 && m_age < unusedAfter * daySeconds;
        case OpenReason::returned:
            return status == TrackingStatus::returned;
        case OpenReason::otherZip: {
            const QString zip = m_facts.journey ? shortZip(m_facts.journey->zip) : QString(),
                          wanted = zipOf(m_facts.label);
            return status == TrackingStatus::delivered && !zip.isEmpty() && !wanted.isEmpty() && zip != wanted;
        }
        case OpenReason::noMovement: {
            const bool isMoving = status == TrackingStatus::transit || status == TrackingStatus::failure;
            return isMoving && stillDays() >= stillAfter && m_age < movesFor * daySeconds;
        }
        case OpenReason::customsPapers:
            return m_facts.isPapersOpen && !isWithCarrier() && m_age < refundEndsAfter * daySeconds;
        case OpenReason::labelUnchecked:
            return m_facts.isUnchecked && !isWithCarrier() && m_age >= uncheckedMinutes * 60 &&
                   m_age < refundEndsAfter * daySeconds;
        default:
            return false;
        }
    }

    const OpenFacts &m_facts;
    qint64 m_age; ///< seconds
    RefundState m_refund;
    bool m_isDelivered;
    QDateTime m_now;
};

/// Ids of shipments, or nothing if reading failed.
std::optional<QSet<qint64>> idsOf(const Database &db, const QByteArray &sql, const QDateTime &since)
{
    QSet<qint64> ids;
    Statement query(db, sql);
    if (query.isPrepared())
        query.bind(1, ShipmentLogRows::secondsOf(since));
    while (query.step())
        ids.insert(query.integer(0));
    return query.isComplete() ? std::optional(ids) : std::nullopt;
}

std::optional<QList<OpenFacts>> factsFrom(const Database &db, const QDateTime &now)
{
    const QDateTime since = now.addDays(-OpenItems::remembersFor);
    const auto isOurs = [](const ShipmentRecord &label) {
        return !label.testMode && isCarriersId(label.transactionID);
    };
    // A list of ids, because with OR SQLite would read every row.
    Statement query(db, ShipmentLogRows::select +
                            QByteArray(" WHERE id IN (SELECT id FROM shipments WHERE created_at >= ? UNION ALL ") +
                            RefundNotes::unsettledIds(db) + ") ORDER BY created_at, id");
    if (query.isPrepared())
        query.bind(1, ShipmentLogRows::secondsOf(since));
    const auto labels = ShipmentLogRows::allOf(db, query, isOurs);
    if (!labels)
        return std::nullopt;
    QList<OpenFacts> facts;
    if (labels->isEmpty())
        return facts;
    QList<qint64> ids;
    for (const ShipmentRecord &label : *labels)
        ids += label.id;
    const auto journeys = Journeys::among(db, ids);
    const bool hasVerdicts = ShipmentLogRows::hasTable(db, "label_verdicts");
    const auto unchecked =
        idsOf(db,
              "SELECT id FROM shipments WHERE created_at >= ? AND zpl IS NOT NULL" +
                  QByteArray(hasVerdicts ? " AND id NOT IN (SELECT shipment_id FROM label_verdicts)" : ""),
              since);
    const auto events =
        LabelEvents::since(db, {LabelEvent::refundAsked, LabelEvent::papersFailed, LabelEvent::papersPrinted},
                           std::min(since, labels->constFirst().createdAt));
    QHash<qint64, QSet<QString>> done;
    if (ShipmentLogRows::hasTable(db, "open_items_done")) {
        Statement items(db, "SELECT shipment_id, reason FROM open_items_done");
        while (items.step())
            done[items.integer(0)].insert(items.text(1));
        if (!items.isComplete())
            return std::nullopt;
    }
    if (!journeys || !unchecked || !events)
        return std::nullopt;
    for (const ShipmentRecord &label : *labels) {
        const auto journey = journeys->constFind(label.id);
        const QHash<LabelEvent, QDateTime> noted = events->value(label.transactionID);
        const QDateTime failed = noted.value(LabelEvent::papersFailed),
                        printed = noted.value(LabelEvent::papersPrinted);
        facts.append({.label = label,
                      .journey = journey == journeys->cend() ? std::nullopt : std::optional(*journey),
                      .refundAskedAt = noted.value(LabelEvent::refundAsked),
                      .isPapersOpen = failed.isValid() && !(printed.isValid() && printed >= failed),
                      .isUnchecked = unchecked->contains(label.id),
                      .done = done.value(label.id)});
    }
    return facts;
}

} // namespace

OpenStep stepOf(OpenReason reason)
{
    switch (reason) {
    case OpenReason::refundUrgent:
    case OpenReason::refundEnding:
        return OpenStep::refund;
    case OpenReason::refundUndecided:
        return OpenStep::checkStatus;
    case OpenReason::returned:
        return OpenStep::fillLabel;
    case OpenReason::customsPapers:
        return OpenStep::customsDocs;
    case OpenReason::labelUnchecked:
        return OpenStep::reprint;
    case OpenReason::lateCopy:
        return OpenStep::copyNow;
    default:
        return OpenStep::track;
    }
}

QString wordOf(OpenReason reason)
{
    return textOf(reasonWords, reason);
}

std::optional<OpenItem> OpenItems::itemOf(const OpenFacts &facts, const QDateTime &now)
{
    const Judge judge(facts, now);
    for (const Word<OpenReason> &word : reasonWords) {
        if (judge.holds(word.value))
            return judge.item(word.value);
    }
    return std::nullopt;
}

QList<OpenItem> OpenItems::itemsOf(const QList<OpenFacts> &labels, const QDateTime &now)
{
    QList<OpenItem> items;
    for (const OpenFacts &facts : labels) {
        if (const std::optional<OpenItem> item = itemOf(facts, now))
            items.append(*item);
    }
    return items;
}

LogRead<QList<OpenFacts>> OpenItems::read(const ShipmentLog &log, const QDateTime &now)
{
    return log.read<QList<OpenFacts>>([now](const Database &db) { return factsFrom(db, now); });
}

bool OpenItems::setDone(ShipmentLog &log, const ShipmentRecord &label, OpenReason reason, bool isDone)
{
    return log.changeRow(label, [&](Database &db, qint64 shipment) {
        return db.exec(schema) &&
               execute(db,
                       isDone ? "INSERT OR REPLACE INTO open_items_done (shipment_id, reason) VALUES (?, ?)"
                              : "DELETE FROM open_items_done WHERE shipment_id = ? AND reason = ?",
                       shipment, wordOf(reason));
    });
}

} // namespace parcelory
