#include "core/SqliteCheck.h"

#include "core/Sqlite.h"

#include <QFileInfo>
#include <sqlite3.h>

#include <future>
#include <thread>

namespace parcelory {

namespace {

QString resultOf(const Database &db, const QByteArray &pragma)
{
    Statement check(db, pragma);
    if (!check.step())
        return db.lastError();
    const QString result = check.text(0);
    return result == QLatin1StringView("ok") ? QString() : result;
}

} // namespace

QString integrityFailure(const Database &db)
{
    return resultOf(db, "PRAGMA integrity_check(1)");
}

QString damageIn(const QString &path, std::chrono::milliseconds limit)
{
    if (!QFileInfo::exists(path))
        return {};
    const Database db(path, std::chrono::milliseconds(0));
    std::promise<void> done;
    std::thread watch([&db, limit, ended = done.get_future()] {
        if (ended.wait_for(limit) == std::future_status::timeout)
            sqlite3_interrupt(db.handle());
    });
    const QString result = resultOf(db, "PRAGMA quick_check(1)");
    const int code = sqlite3_errcode(db.handle());
    done.set_value();
    watch.join();
    const bool isDone = code == SQLITE_OK || code == SQLITE_ROW || code == SQLITE_DONE || db.isDamaged();
    return isDone ? result : QString();
}

} // namespace parcelory
