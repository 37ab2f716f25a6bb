#include "core/IsoDate.h"

#include <QRegularExpression>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

QString isoUtc(const QDateTime &time)
{
    return time.toUTC().toString(Qt::ISODate);
}

std::optional<QDateTime> parseIso(const QString &text)
{
    // Qt reads far more than an internet date-time (no zone, a blank for the T), so the form is checked first.
    static const QRegularExpression form(
        u"^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d(\\.\\d+)?(Z|[+-]\\d\\d:?\\d\\d)$"_s);
    if (!form.match(text).hasMatch())
        return std::nullopt;
    const QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
    return time.isValid() ? std::optional(time) : std::nullopt;
}

} // namespace parcelory
