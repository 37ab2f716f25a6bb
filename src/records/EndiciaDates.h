#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QHash>

#include <optional>

namespace parcelory {

/// Dates of the mail log format, "11/20/26 02:41 PM" in the machine's time zone. Caches the zone's offset per day,
/// because asking the system for every row takes longer than the rest of an import. Create one for each operation.
class EndiciaDates {
public:
    /// Valid until the next call.
    QByteArrayView text(qint64 msecsSinceEpoch);
    /// A UTF-8 date in milliseconds since 1970: as text() writes it, or as a spreadsheet saves it, with a year of four
    /// digits, 24 hours, seconds, no time, the month's name, or in the ISO form. Slashes and dashes put the month
    /// first, dots the day. Two-digit years from 70 on are of the last century; an hour that a daylight-saving change
    /// skips is read as the hour after it. Absent for any other text.
    std::optional<qint64> parse(QByteArrayView text);

private:
    std::optional<qint64> usualOffset(qint64 day);

    QHash<qint64, std::optional<qint64>> m_offsets; ///< by days since 1970
    QByteArray m_text;
};

} // namespace parcelory
