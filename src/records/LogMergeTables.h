#pragma once

#include "core/Sqlite.h"

#include <QByteArray>
#include <QByteArrayList>

/// Tables that two mailing logs share; either may be of another version.
namespace parcelory::LogMerge {

/// Binds a row's values to the parameters from `parameter` on; they are valid until the row's next step.
void bindValues(const Statement &row, qsizetype columns, Statement &insert, int parameter);
/// Creates the table in `to` as it is in `from`, with its indexes, unless `to` has it. False if that failed.
[[nodiscard]] bool createLike(const Database &from, Database &to, const QByteArray &table);
/// The columns that the table has in both logs, but not `without`.
QByteArrayList commonColumns(const Database &from, const Database &to, const QByteArray &table,
                             const QByteArray &without);

} // namespace parcelory::LogMerge
