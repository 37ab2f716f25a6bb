#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

namespace parcelory {

/// An ISO 8601 internet date-time in UTC with whole seconds: 2026-11-14T17:00:00Z.
QString isoUtc(const QDateTime &time);

/// Reads an ISO 8601 internet date-time, with or without fractional seconds; the zone is required.
std::optional<QDateTime> parseIso(const QString &text);

} // namespace parcelory
