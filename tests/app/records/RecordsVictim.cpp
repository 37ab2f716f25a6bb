// A desk that is killed while it copies, restores or imports: `records_victim FOLDER WORK STEP` dies at step STEP of
// the work (a write, a flush, a rename, a deletion). Step 0 counts the steps and prints their number.

#include "app/records/RestoreRecords.h"
#include "support/AppTest.h"

#include <QCoreApplication>

#include <dlfcn.h>
#include <unistd.h>

namespace {

std::atomic<int> stepsTaken = -1; ///< negative: not counting yet
int lastStep = 0;

void step()
{
    if (stepsTaken >= 0 && ++stepsTaken == lastStep)
        ::kill(::getpid(), SIGKILL);
}

template <class Function>
Function real(const char *name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

} // namespace

// In place of the system's own functions, also for the libraries.
extern "C" {
int rename(const char *from, const char *to) noexcept
{
    step();
    return real<decltype(&rename)>("rename")(from, to);
}
int renameat2(int fromFolder, const char *from, int toFolder, const char *to, unsigned flags) noexcept
{
    step();
    return real<decltype(&renameat2)>("renameat2")(fromFolder, from, toFolder, to, flags);
}
int unlink(const char *path) noexcept
{
    step();
    return real<decltype(&unlink)>("unlink")(path);
}
int fsync(int file)
{
    step();
    return real<decltype(&fsync)>("fsync")(file);
}
int fdatasync(int file)
{
    step();
    return real<decltype(&fdatasync)>("fdatasync")(file);
}
ssize_t pwrite64(int file, const void *bytes, size_t count, off64_t at)
{
    step();
    return real<decltype(&pwrite64)>("pwrite64")(file, bytes, count, at);
}
}

int main(int argc, char **argv)
{
    using namespace parcelory;
    using namespace Qt::StringLiterals;
    QCoreApplication program(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString work = arguments.at(2);
    test::FakePlatform desk;
    desk.platform.dataFolder = QDir(arguments.at(1));
    desk.clock.start = QDateTime(QDate(2026, 11, 20), QTime(15, 0));
    ErrorLog errors(desk.platform);
    AppState app(desk.platform);
    const QDateTime now = desk.clock.now();
    const RestoreReview review = work == u"restore" ? reviewOf(app, app.copies.list().last(), now) : RestoreReview();
    lastStep = arguments.at(3).toInt();
    stepsTaken = 0;
    QString failure;
    if (work == u"restore")
        failure = restoreRecords(app, review, now, {}).failure;
    else if (work == u"copy" || work == u"update")
        failure = app.copies.make(work == u"copy" ? CopyReason::byHand : CopyReason::beforeUpdate, now).failure;
    else
        app.log.importEndiciaCSV(QDir(arguments.at(1)).filePath(u"import.txt"_s));
    const int steps = stepsTaken.exchange(-1);
    std::printf("%d %s\n", steps, qUtf8Printable(failure));
    return failure.isEmpty() ? 0 : 1;
}
