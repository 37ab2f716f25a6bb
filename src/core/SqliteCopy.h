#pragma once

#include "core/Progress.h"

#include <QString>

namespace parcelory {

class Database;

/// Copies the content of `from` into the new file `path`, page by page. `from` stays usable: other connections and
/// programs can write between two portions; then SQLite starts the copy again. Returns why it failed, or nothing if it
/// is complete or was canceled. `progress` counts pages.
QString copyDatabase(const Database &from, const QString &path, const Progress &progress = {});

} // namespace parcelory
