#pragma once

#include "records/ShipmentLog.h"

#include <QDateTime>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace parcelory {

/// What happened to a label or a SCAN form after its purchase.
enum class LabelEvent {
    notPrinted,    ///< the label was bought, and no printer took it
    sent,          ///< the print system took the label
    cameOut,       ///< its queue was empty afterwards, without a problem
    refundAsked,   ///< the clerk asked for the refund
    formPrinted,   ///< of a SCAN form, whose id is the manifest's
    papersFailed,  ///< the customs papers were not printed with the label
    papersPrinted, ///< the customs papers were printed, or opened in the viewer
};

/// Whether a label came out of the printer.
enum class PrintState {
    unknown, ///< bought by an earlier version, or imported
    never,
    sent, ///< and not confirmed
    done
};

/// The last time of each of these events, in a table of the mailing log's file, which comes with the first event. The
/// carrier's id of the transaction identifies a label, because an event may be older than the label's row. May be
/// called from any thread; waits for the disk.
namespace LabelEvents {

struct Dated {
    QString id;
    QDateTime at;

    bool operator==(const Dated &) const = default;
};

[[nodiscard]] bool put(ShipmentLog &log, const QStringList &ids, LabelEvent event, const QDateTime &at);
/// When it happened; nothing if it did not.
LogRead<std::optional<QDateTime>> find(const ShipmentLog &log, const QString &id, LabelEvent event);
LogRead<PrintState> printState(const ShipmentLog &log, const QString &id);
/// These events of every label since a time, for a work that reads other tables, too; nothing if reading failed.
std::optional<QHash<QString, QHash<LabelEvent, QDateTime>>> since(const Database &db, const QList<LabelEvent> &wanted,
                                                                  const QDateTime &time);
/// The labels with this event on a day, in the order of their events.
LogRead<QList<Dated>> ofDay(const ShipmentLog &log, LabelEvent event, QDate day);

} // namespace LabelEvents
} // namespace parcelory
