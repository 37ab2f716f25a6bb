#pragma once

#include "app/AppState.h"
#include "core/ports/Preferences.h"

#include <QByteArray>
#include <QDateTime>

/// The files of the support bundle that hold words of the program and numbers only. May be called from any thread; each
/// waits for the disk, the print system or the log.
namespace parcelory::SupportFacts {

struct Counts {
    qsizetype addresses = 0, senders = 0, boxes = 0, unresolved = 0, testKeys = 0, liveKeys = 0;
};

QByteArray about(const AppState &app, const QString &version, const QDateTime &now);
/// Switches with their state; of everything else, only whether it is set.
QByteArray settings(const Preferences &preferences);
QByteArray records(const AppState &app, const Counts &counts);
/// Queues have numbers here, because a queue may be named after a person.
QByteArray printers(AppState &app);

} // namespace parcelory::SupportFacts
