#include "records/LabelEvents.h"

#include "core/Words.h"
#include "records/ShipmentLogRows.h"

#include <QHash>

#include <algorithm>
#include <optional>

namespace parcelory::LabelEvents {

using ShipmentLogRows::secondsOf;
using ShipmentLogRows::timeOf;

namespace {

/// Runs before every write, so that a log without events gets no such table.
constexpr auto schema = "CREATE TABLE IF NOT EXISTS label_events (\n"
                        "  label TEXT NOT NULL,\n"
                        "  event TEXT NOT NULL,\n"
                        "  at REAL NOT NULL,\n"
                        "  PRIMARY KEY (label, event)\n"
                        ");\n"
                        "CREATE INDEX IF NOT EXISTS idx_label_events ON label_events(event, at);";

constexpr Word<LabelEvent> words[] = {{LabelEvent::notPrinted, u"NOT_PRINTED"},
                                      {LabelEvent::sent, u"SENT"},
                                      {LabelEvent::cameOut, u"CAME_OUT"},
                                      {LabelEvent::refundAsked, u"REFUND_ASKED"},
                                      {LabelEvent::formPrinted, u"FORM_PRINTED"},
                                      {LabelEvent::papersFailed, u"PAPERS_FAILED"},
                                      {LabelEvent::papersPrinted, u"PAPERS_PRINTED"}};

using Times = QHash<QString, QDateTime>; ///< by event

LogRead<Times> timesOf(const ShipmentLog &log, const QString &id)
{
    return log.read<Times>([id](const Database &db) -> std::optional<Times> {
        Times times;
        if (!ShipmentLogRows::hasTable(db, "label_events"))
            return times;
        Statement query(db, "SELECT event, at FROM label_events WHERE label = ?");
        if (query.isPrepared()) // another version may have another table
            query.bind(1, id);
        while (query.step())
            times.insert(query.text(0), timeOf(query.real(1)));
        return query.isComplete() ? std::optional(times) : std::nullopt;
    });
}

} // namespace

bool put(ShipmentLog &log, const QStringList &ids, LabelEvent event, const QDateTime &at)
{
    // The paper of an earlier print may come out after the next print began. The first print has no earlier one: its
    // own paper may come out before it is noted.
    const auto forgetEarlier = [&](const Database &db, const QString &id) {
        return execute(db,
                       "DELETE FROM label_events WHERE label = ?1 AND event = ?2 AND at > ?3 AND EXISTS "
                       "(SELECT 1 FROM label_events WHERE label = ?1 AND event = ?4)",
                       id, textOf(words, LabelEvent::cameOut), secondsOf(at), textOf(words, LabelEvent::sent));
    };
    return log.change([&](Database &db) {
        return db.exec(schema) && std::ranges::all_of(ids, [&](const QString &id) {
                   if (event == LabelEvent::sent && !forgetEarlier(db, id))
                       return false;
                   return execute(db, "INSERT OR REPLACE INTO label_events (label, event, at) VALUES (?, ?, ?)", id,
                                  textOf(words, event), secondsOf(at));
               });
    });
}

LogRead<std::optional<QDateTime>> find(const ShipmentLog &log, const QString &id, LabelEvent event)
{
    using When = std::optional<QDateTime>;
    const LogRead<Times> times = timesOf(log, id);
    if (!times.isRead())
        return LogRead<When>::failed(times.failure());
    const auto found = times->constFind(textOf(words, event));
    return found == times->cend() ? When() : When(*found);
}

LogRead<PrintState> printState(const ShipmentLog &log, const QString &id)
{
    const LogRead<Times> times = timesOf(log, id);
    if (!times.isRead())
        return LogRead<PrintState>::failed(times.failure());
    const QDateTime sent = times->value(textOf(words, LabelEvent::sent)),
                    cameOut = times->value(textOf(words, LabelEvent::cameOut));
    if (cameOut.isValid() && (!sent.isValid() || cameOut >= sent)) // otherwise a reprint is not confirmed
        return PrintState::done;
    if (sent.isValid())
        return PrintState::sent;
    return times->contains(textOf(words, LabelEvent::notPrinted)) ? PrintState::never : PrintState::unknown;
}

std::optional<QHash<QString, QHash<LabelEvent, QDateTime>>> since(const Database &db, const QList<LabelEvent> &wanted,
                                                                  const QDateTime &time)
{
    QHash<QString, QHash<LabelEvent, QDateTime>> events;
    if (!ShipmentLogRows::hasTable(db, "label_events"))
        return events;
    Statement query(db, "SELECT label, at FROM label_events WHERE event = ? AND at >= ?");
    for (const LabelEvent event : wanted) {
        if (query.isPrepared()) {
            query.bind(1, textOf(words, event));
            query.bind(2, secondsOf(time));
        }
        while (query.step())
            events[query.text(0)].insert(event, timeOf(query.real(1)));
        if (!query.isComplete())
            return std::nullopt;
        query.reset();
    }
    return events;
}

LogRead<QList<Dated>> ofDay(const ShipmentLog &log, LabelEvent event, QDate day)
{
    using All = QList<Dated>;
    return log.read<All>([event, day](const Database &db) -> std::optional<All> {
        All found;
        if (!ShipmentLogRows::hasTable(db, "label_events"))
            return found;
        Statement query(db, "SELECT label, at FROM label_events WHERE event = ? AND at >= ? AND at < ? ORDER BY at");
        if (query.isPrepared()) {
            query.bind(1, textOf(words, event));
            query.bind(2, secondsOf(day.startOfDay()));
            query.bind(3, secondsOf(day.addDays(1).startOfDay()));
        }
        while (query.step())
            found += {query.text(0), timeOf(query.real(1))};
        return query.isComplete() ? std::optional(found) : std::nullopt;
    });
}

} // namespace parcelory::LabelEvents
