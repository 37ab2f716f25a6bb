#include "core/SqliteCopy.h"

#include "core/Sqlite.h"

#include <sqlite3.h>

#include <chrono>
#include <memory>

namespace parcelory {

namespace {

constexpr int portion = 500; ///< pages, 2 MB: read in a few milliseconds
constexpr auto pause = std::chrono::milliseconds(20);
constexpr int mostPauses = 250; ///< without a page in between: another program holds the file for five seconds

} // namespace

QString copyDatabase(const Database &from, const QString &path, const Progress &progress)
{
    Database to(path);
    const std::unique_ptr<sqlite3_backup, decltype(&sqlite3_backup_finish)> copy(
        sqlite3_backup_init(to.handle(), "main", from.handle(), "main"), &sqlite3_backup_finish);
    if (!copy)
        return to.lastError();
    for (int pauses = 0; pauses < mostPauses;) {
        const int result = sqlite3_backup_step(copy.get(), portion);
        if (result == SQLITE_DONE)
            return {};
        if (result == SQLITE_BUSY || result == SQLITE_LOCKED) {
            ++pauses;
            sqlite3_sleep(int(pause.count()));
            continue;
        }
        if (result != SQLITE_OK)
            return QString::fromUtf8(sqlite3_errstr(result));
        pauses = 0;
        const int total = sqlite3_backup_pagecount(copy.get());
        if (!progress.report(total - sqlite3_backup_remaining(copy.get()), total))
            return {};
    }
    return QStringLiteral("another program has it open");
}

} // namespace parcelory
