#pragma once

#include <QString>

#include <chrono>

namespace parcelory {

class Database;

/// What SQLite's own check of the whole file says; empty if the database is sound.
QString integrityFailure(const Database &db);

/// The same for a file that is in use, with SQLite's quicker check. Empty also if the file is not there, cannot be read
/// now, or is not checked within `limit`: a writer waits for the check, and a failure to read is no damage.
QString damageIn(const QString &path, std::chrono::milliseconds limit);

} // namespace parcelory
