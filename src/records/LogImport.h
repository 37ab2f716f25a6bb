#pragma once

#include "core/Progress.h"
#include "core/Sqlite.h"
#include "records/ShipmentLog.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// The lines of an Endicia mail log on their way into the mailing log.
namespace parcelory::LogImport {

/// How many lines of the file have a tracking number that is in the log; nothing if the log could not be read.
std::optional<int> knownLines(const Database &db, const QByteArray &text);

/// Appends all lines or no lines, each sealed in the transaction that stores it. Uses its own connection, so that no
/// reader sees rows that may still be rolled back. `reasonOf` tells why the connection's last statement failed.
ImportReport appendLines(const QString &path, const QByteArray &text, KnownRows mode, const Progress &progress,
                         QString (*reasonOf)(const Database &));

} // namespace parcelory::LogImport
