#pragma once

#include <QDateTime>
#include <QHash>
#include <QStringView>

#include <optional>

namespace parcelory {

/// Dates of the mail log format, "11/20/26 02:41 PM" in the machine's time zone. Caches the zone's offset per day,
/// because asking the system for every row takes longer than the rest of an import. Create one for each operation.
class EndiciaDates {
public:
    QString text(qint64 msecsSinceEpoch);
    /// A date as text() writes it, in milliseconds since 1970. Two-digit years are of this century; an hour that a
    /// daylight-saving change skips is read as the hour after it.
    std::optional<qint64> parse(QStringView text);

private:
    std::optional<qint64> usualOffset(qint64 day);

    QHash<qint64, std::optional<qint64>> m_offsets; ///< by days since 1970
};

} // namespace parcelory
