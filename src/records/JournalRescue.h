#pragma once

#include "core/Sqlite.h"

#include <QString>

namespace parcelory {

/// Copies every purchase and refund that can be read from a damaged journal to a new journal; returns how many.
int copyReadableEntries(Database &journal, const QString &damaged);

} // namespace parcelory
