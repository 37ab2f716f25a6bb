#include "Compare.h"
#include "LargeLog.h"
#include "core/Task.h"
#include "records/LogMerge.h"
#include "records/RestoreStage.h"
#include "records/ShipmentLog.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <memory>

namespace parcelory::bench {
using namespace Qt::StringLiterals;

namespace {

/// The large log in a folder of its own, and a copy of it.
struct Desk {
    QTemporaryDir folder;
    QDir records{folder.filePath(u"records"_s)};
    std::unique_ptr<ShipmentLog> owner;
    RecordCopies copies{records,
                        QDir(folder.filePath(u"copies"_s)),
                        {{u"mailing_log.sqlite"_s, [this](const QString &path, const Progress &progress) {
                              return owner->copyTo(path, progress);
                          }}}};
    RecordCopy copy;
    const QString log = records.filePath(u"mailing_log.sqlite"_s);

    Desk()
    {
        if (!records.mkpath(u"."_s) || !QFile::copy(largeLog().filePath(u"mailing_log.sqlite"_s), log))
            qFatal("no space for the benchmark");
        owner = std::make_unique<ShipmentLog>(records);
        copy = copies.make(CopyReason::byHand, QDateTime::currentDateTime());
        if (!copy.isGood())
            qFatal("not copied");
    }
};

void require(const QString &failure)
{
    if (!failure.isEmpty())
        qFatal("%s", qPrintable(failure));
}

/// Sets the log aside, checks and merges the copy, and replaces the log. The plain way keeps the log and brings the
/// copy back with the database's own tool, checked.
void restoreOfTheRecords(benchmark::State &state)
{
    Desk desk;
    const QString copied = desk.copies.folder().filePath(desk.copy.folder + u"/mailing_log.sqlite"_s);
    compare(
        state,
        [&] {
            const auto held = LogMerge::held(Database(copied));
            const LogMerge::Added added = LogMerge::addedSince(desk.log, *held);
            RestoreStage stage(desk.records);
            auto aside = QtConcurrent::run(
                &workPool(), [&desk] { return desk.copies.setAside(QDateTime::currentDateTime()).failure; });
            require(stage.fill(QDir(desk.copies.folder().filePath(desk.copy.folder)), desk.copy.files));
            require(aside.result());
            Database staged(stage.path(u"mailing_log.sqlite"_s));
            require(LogMerge::bringBack(staged, desk.log, added.labels).failure);
            require(stage.sync());
            require(stage.commit({}));
        },
        [&] {
            QProcess tool;
            const QString aside = desk.folder.filePath(u"aside"_s);
            tool.start(u"sh"_s, {u"-c"_s,
                                 u"cp \"$1\" \"$2\" && sqlite3 \"$3\" 'PRAGMA integrity_check' && "
                                 "sqlite3 \"$1\" \".restore '$3'\" && sync \"$1\" \"$2\""_s,
                                 u"sh"_s, desk.log, aside, copied});
            if (!tool.waitForFinished(-1) || tool.exitCode() != 0)
                qFatal("%s", tool.readAllStandardError().constData());
        },
        [&] {
            for (const RecordCopy &kept : desk.copies.list()) {
                if (kept.restored)
                    QDir(desk.copies.folder().filePath(kept.folder)).removeRecursively();
            }
        });
}

BENCHMARK(restoreOfTheRecords)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(2);

} // namespace
} // namespace parcelory::bench
