#include "core/SqliteCopy.h"

#include "core/Sqlite.h"

#include <QElapsedTimer>
#include <sqlite3.h>

#include <chrono>
#include <memory>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int portion = 500;     ///< pages, 2 MB: read in a few milliseconds
constexpr auto rest = 1ms;       ///< after a portion: a thread that waits for its turn gets it
constexpr auto pause = 20ms;     ///< before a portion is tried again
constexpr auto longestLock = 5s; ///< also if the connection itself waits for the lock
constexpr int mostRestarts = 20;

/// Returns what failed.
QString copyPages(const Database &from, const Database &to, const Progress &progress, const CopyTurn &inTurn)
{
    std::unique_ptr<sqlite3_backup, decltype(&sqlite3_backup_finish)> copy(nullptr, &sqlite3_backup_finish);
    const sqlite3 *source = nullptr;
    inTurn([&] {
        source = from.handle();
        copy.reset(sqlite3_backup_init(to.handle(), "main", from.handle(), "main"));
    });
    if (!copy)
        return to.lastError();
    QElapsedTimer sinceLastPage;
    sinceLastPage.start();
    for (int restarts = 0, pauses = 0, last = 0; !progress.cancelToken().isCanceled();) {
        std::optional<int> result;
        inTurn([&] { // SQLite would take the new file's journal for the former one's
            if (from.handle() == source && !from.isReplaced())
                result = sqlite3_backup_step(copy.get(), portion);
        });
        if (!result)
            return u"another program has just replaced it"_s;
        if (result == SQLITE_DONE)
            break;
        if (result == SQLITE_BUSY || result == SQLITE_LOCKED) {
            if (++pauses * pause >= longestLock || std::chrono::milliseconds(sinceLastPage.elapsed()) >= longestLock)
                return u"another program has it open"_s;
            sqlite3_sleep(int(pause.count()));
            continue;
        }
        if (result != SQLITE_OK)
            return QString::fromUtf8(sqlite3_errstr(*result));
        sinceLastPage.restart();
        pauses = 0;
        const int total = sqlite3_backup_pagecount(copy.get());
        const int done = total - sqlite3_backup_remaining(copy.get());
        if (done <= last && ++restarts > mostRestarts)
            return u"another program writes into it all the time"_s;
        last = done;
        [[maybe_unused]] const bool goesOn = progress.report(done, total);
        sqlite3_sleep(int(rest.count()));
    }
    return {};
}

} // namespace

QString copyDatabase(const Database &from, const QString &path, const Progress &progress, const CopyTurn &inTurn)
{
    Database to(path);
    to.exec("PRAGMA synchronous = OFF"); // no thread waits for the disk to be flushed in the turn of the copy
    return copyPages(from, to, progress, inTurn);
}

} // namespace parcelory
