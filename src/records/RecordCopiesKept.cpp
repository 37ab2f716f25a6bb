// Which copies are kept, and which copies are of the present mailing log's chain.

#include "records/RecordCopies.h"

#include <QSet>

#include <optional>

namespace parcelory {

/// After a restore, the copies between the restored one and the restore belong to a chain that was given up.
QList<LogChain::Head> RecordCopies::headsOf(const QList<RecordCopy> &copies)
{
    QList<LogChain::Head> heads;
    std::optional<QDateTime> until;
    for (const RecordCopy &copy : copies) {
        if (until && copy.madeAt > *until)
            continue;
        if (copy.restored)
            until = copy.restored;
        else if (copy.isGood() && copy.headPosition > 0 && copy.logId != QString()) // a log without labels has no id
            heads += copy.head();
    }
    return heads;
}

QList<RecordCopy> RecordCopies::ofLog(QList<RecordCopy> copies, const QString &logId)
{
    copies.removeIf([&logId](const RecordCopy &copy) {
        const QString id = copy.logId.value_or(QString());
        return !id.isEmpty() && id != logId;
    });
    return copies;
}

QList<RecordCopy> RecordCopies::expired(const QList<RecordCopy> &copies)
{
    QSet<QDate> days, months;
    QDate oldestDay;
    QList<RecordCopy> gone;
    for (const RecordCopy &copy : copies) {
        const QDate day = copy.madeAt.toLocalTime().date();
        const QDate month(day.year(), day.month(), 1);
        if (copy.isGood() && copy.reason == wordOf(CopyReason::daily)) {
            const bool keepsDay = !days.contains(day) && days.size() < keptDays;
            const bool keepsMonth = !months.contains(month) && months.size() < keptMonths;
            if (keepsDay)
                oldestDay = day;
            days.insert(day);
            if (keepsDay || keepsMonth)
                months.insert(month);
            else
                gone += copy;
        } else if (days.size() >= keptDays && day < oldestDay && copy.reason != wordOf(CopyReason::beforeRestore)) {
            gone += copy;
        }
    }
    return gone;
}

} // namespace parcelory
