#include "app/update/UpdateChecker.h"
#include "app/AppState.h"
#include "core/Task.h"
#include "platform/SystemApplication.h"
#include "platform/SystemProcesses.h"
#include "shell/ErrorLog.h"
#include "shell/UpdateFeed.h"
#include "support/FakePlatform.h"
#include "support/HeldPool.h"
#include "support/RunTask.h"

#include <gmock/gmock.h>
#undef signals
#include "practice/LoopbackServer.h"
#include "support/Printing.h"

#include <QProcess>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

namespace parcelory::test {
using namespace Qt::StringLiterals;
using testing::HasSubstr;

namespace {

/// An installed version 1.9, a web server for the files in the folder "site", and a private folder for temporary files.
class Update : public testing::Test {
protected:
    Update()
    {
        sh(u"mkdir tmp site Applications"_s);
        qputenv("TMPDIR", desk.path(u"tmp"_s).toUtf8());
        desk.processes.real = &processes;
        desk.application.installed = desk.path(u"Applications/Parcelory.app"_s);
        desk.platform.deployment.updateFeed = url("app/parcelory-latest.json");
        server.start([this](const httplib::Request &request, httplib::Response &answer) { serve(request, answer); });
    }
    ~Update() override
    {
        usualTemp.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", usualTemp);
        hold = false;
    }
    void serve(const httplib::Request &request, httplib::Response &answer)
    {
        if (request.path.starts_with("/moved")) {
            answer.set_redirect(request.path.substr(6));
            return;
        }
        const std::string name = request.path.substr(request.path.rfind('/') + 1);
        const QByteArray bytes = read(u"site/"_s + QString::fromStdString(name));
        const size_t size = size_t(bytes.size());
        answer.status = size == 0 ? 404 : 200;
        answer.set_content_provider(size, "text/plain", [=, this](size_t offset, size_t, httplib::DataSink &sink) {
            const bool isRest = offset > 0 && name.ends_with(".zip");
            while (isRest && hold && server.pause(std::chrono::milliseconds(5))) {
            }
            return !(isRest && cut) && sink.write(bytes.constData() + offset, std::min(size - offset, (size + 1) / 2));
        });
    }
    QString url(const char *path) const { return QString::fromStdString(server.base()) + QLatin1StringView(path); }

    QByteArray read(const QString &name) const
    {
        QFile file(desk.path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    QStringList entries(const QString &folder) const
    {
        return QDir(desk.path(folder)).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }
    /// Runs a script in the fixture's folder.
    int sh(const QString &script) const
    {
        return SystemProcesses().run(u"/bin/sh"_s, {u"-ec"_s, u"cd '%1'; "_s.arg(desk.folder.path()) + script}).status;
    }
    void write(const QString &name, const QByteArray &text) const
    {
        QFile file(desk.path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    QByteArray program(int version) const
    {
        return "#!/bin/sh\necho v" + QByteArray::number(version) + " >'" + desk.path(u"started'\n"_s).toUtf8();
    }
    /// Makes an application, large enough to observe a partial download.
    void make(const QString &app, int version) const
    {
        sh(u"rm -rf %1; mkdir -p %1/bin; head -c 100000 /dev/urandom >%1/picture"_s.arg(app));
        write(app + u"/bin/parcelory"_s, program(version));
    }
    QByteArray installedProgram() const { return read(u"Applications/Parcelory.app/bin/parcelory"_s); }
    /// Publishes version 2 and returns its feed.
    UpdateInfo publish(const QString &key = {}) const
    {
        make(u"new.app"_s, 2);
        EXPECT_EQ(
            sh(u"printf 'Faster \"scale\".\\r\\nFewer\\tclicks.\\n' | "_s +
               QStringLiteral(PARCELORY_SOURCE_DIR "/tools/make-update new.app 2 '%1' site %2").arg(url(""), key)),
            0);
        return parseUpdateFeed(read(u"site/parcelory-latest.json"_s)).value();
    }
    void run(Task<> task) { runTask(std::move(task), &desk.clock); }
    std::string install(const UpdateInfo &info)
    {
        checker.available = info;
        run(checker.install());
        return checker.status.value().toStdString();
    }
    UpdateInfo offerOf(const QString &address) const { return {u"2"_s, address, {}, {}, {}, {}}; }

    const QByteArray usualTemp = qgetenv("TMPDIR");
    SystemProcesses processes;
    FakePlatform desk;
    ErrorLog errors{desk.platform};
    AppState app{desk.platform};
    UpdateChecker checker{app};
    std::atomic<bool> hold = false, cut = false; ///< delays or cuts off the second half of every archive
    LoopbackServer server{"media server"};
};

} // namespace

TEST(UpdateFeed, ComparesVersionsNumberByNumber)
{
    const std::tuple<QString, QString, bool> rows[] = {
        {u"1.10"_s, u"1.9"_s, true},   {u"1.4.2-beta3"_s, u"1.4.2"_s, true},
        {u"v2"_s, u"1.9"_s, true},     {u"1..2"_s, u"1.1"_s, true},
        {u"0.1"_s, QString(), true},   {u"1"_s, QString(20, u'9'), true},
        {u"1.2"_s, u"1.2.0"_s, false}, {u"2.0"_s, u"2"_s, false},
        {QString(), QString(), false},
    };
    for (const auto &[a, b, newer] : rows) {
        EXPECT_EQ(isNewer(a, b), newer) << a.toStdString();
        EXPECT_FALSE(isNewer(b, a)) << b.toStdString();
    }
}

TEST(UpdateFeed, AcceptsAnyNumericSizeAndOffersWithoutASize)
{
    const std::pair<const char *, std::optional<qint64>> rows[] = {
        {"12", 12}, {"12.75", 12}, {"5e9", 5'000'000'000}, {"1e300", {}}, {"\"12\"", {}}, {"null", {}}};
    for (const auto &[size, expected] : rows)
        EXPECT_EQ(parseUpdateFeed(R"({"version":"2","url":"u","notes":"","size":)" + QByteArray(size) + '}')->size,
                  expected);
}

TEST_F(Update, ReportsTheResultOnlyOfACheckThatTheClerkStarted)
{
    const QString call = u"contact Tobin"_s + desk.platform.deployment.supportTelephone;
    const QString failed = u"Update Check Failed"_s;
    const QString unreadable = u"The update feed couldn't be read. Try again in a few minutes, or "_s + call;
    struct Row {
        QByteArray feed;
        QString title, text; ///< of the alert; empty if there is an offer
        bool offered;        ///< whether there is an offer afterwards
    };
    const Row rows[] = {
        {R"({"version": "1.10", "url": "u", "notes": "New."})", {}, {}, true},
        {R"({"version": "1.11", "url": "u"})", failed, unreadable, true}, // the previous offer stays
        {R"({"version": "1.9.0", "url": "u", "notes": ""})", u"You're Up to Date"_s,
         u"Parcelory 1.9 is the latest version."_s, false},
        {"[]", failed, unreadable, false},
        {R"({"version": "2", "url": "u", "notes": ")" + QByteArray(1 << 20, 'n') + "\"}", failed, unreadable, false},
        {"<html>", failed, unreadable, false},
        {"", failed, u"Couldn't reach the update server: curl 22: curl: (22) "_s, false}, // not served
    };
    qsizetype recorded = 0;
    for (const Row &row : rows) {
        write(u"site/parcelory-latest.json"_s, row.feed);
        const int before = checker.offers;
        run(checker.checkOnLaunch());
        EXPECT_TRUE(desk.prompts.alerts.isEmpty()) << row.feed.toStdString();
        run(checker.checkNow());
        EXPECT_EQ(checker.available.value().has_value(), row.offered) << row.feed.toStdString();
        EXPECT_EQ(checker.offers - before, row.title.isEmpty() ? 2 : 0);
        const auto alerts = std::exchange(desk.prompts.alerts, {});
        EXPECT_EQ(alerts.value(0).first, row.title);
        EXPECT_TRUE(alerts.value(0).second.startsWith(row.text)) << row.text.toStdString();
        settle();
        recorded += row.title == failed;
        EXPECT_EQ(errors.entries().size(), recorded);
    }
    {
        write(u"site/parcelory-latest.json"_s, "[]");
        const qsizetype before = desk.processes.calls().size();
        auto held = std::make_optional<HeldPool>();
        const Task<> launch = checker.checkOnLaunch(), first = checker.checkNow(), second = checker.checkNow();
        held.reset();
        runUntil([this] { return !checker.busy && !desk.prompts.alerts.isEmpty(); });
        EXPECT_EQ(desk.processes.calls().size() - before, 1) << "one request serves all three";
        EXPECT_EQ(std::exchange(desk.prompts.alerts, {}).size(), 1);
    }
    desk.platform.deployment.updateFeed = u"https://REPLACE-WITH-YOUR-HOST/app/parcelory-latest.json"_s;
    run(checker.checkOnLaunch());
    run(checker.checkNow());
    EXPECT_EQ(desk.prompts.alerts.value(0).second, u"This build doesn’t have an update feed set — "_s + call);
    desk.platform.practice = true;
    run(checker.checkOnLaunch());
    run(checker.checkNow());
    EXPECT_THAT(desk.prompts.alerts.value(1).second.toStdString(), HasSubstr("Start Parcelory without practice"));
    EXPECT_EQ(desk.prompts.alerts.size(), 2);
    EXPECT_EQ(entries(u"tmp"_s), QStringList());
}

TEST_F(Update, ShowsTheDownloadsProgressAndReplacesTheAppAfterTheProgramExits)
{
    make(u"Applications/Parcelory.app"_s, 1);
    UpdateInfo info = publish();
    EXPECT_EQ(info.notes, u"Faster \"scale\".\nFewer\tclicks."_s);
    info.size = std::nullopt; // the server also sends the size
    info.url.replace(u"127.0.0.1"_s, u"localhost"_s).replace(u"/Parcelory"_s, u"/moved/Parcelory"_s);
    checker.available = info;
    hold = true;
    const mode_t usualMask = ::umask(0);
    const Task<> installing = checker.install(), again = checker.install();
    runUntil([this] { return checker.progress.value().value_or(0) >= 0.4; }, &desk.clock);
    ::umask(usualMask);
    const QString staging = desk.path(u"tmp/"_s + entries(u"tmp"_s).value(0));
    EXPECT_EQ(QFileInfo(staging).permissions() & ~(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser),
              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    run(checker.checkNow());
    EXPECT_EQ(checker.offers.value(), 1) << "a check during the download shows its progress";
    EXPECT_LT(*checker.progress.value(), 1);
    EXPECT_EQ(checker.status.value(), u"Downloading v2…"_s);
    hold = false;
    runUntil([this] { return checker.phase != UpdatePhase::downloading; }, &desk.clock);
    EXPECT_EQ(checker.status.value(), u"Parcelory 2 downloaded and ready to install."_s);
    EXPECT_EQ(checker.progress.value(), 1.0);
    EXPECT_EQ(checker.offers.value(), 2) << "the prompt is shown when the update is ready";
    QList<QStringList> asked;
    for (const FakeProcesses::Call &call : desk.processes.calls()) {
        if (call.program == u"/usr/bin/curl")
            asked += call.arguments;
    }
    const QStringList size = {u"-sIL"_s, u"--max-time"_s, u"20"_s, info.url};
    const QStringList bytes = {u"-fsSL"_s, u"--max-time"_s, u"120"_s, u"-o"_s, staging + u"/update.zip"_s, info.url};
    EXPECT_EQ(asked, (QList{size, bytes}));

    QProcess running; // stands in for the program; exits at the end of its input
    running.start(u"/bin/cat"_s);
    ASSERT_TRUE(running.waitForStarted());
    checker.stagedArgs[0] = QString::number(running.processId());
    desk.application.fails = true;
    run(checker.relaunchNow());
    EXPECT_EQ(checker.status.value(), u"Couldn't start the update helper: no shell"_s);
    desk.application.fails = false;
    run(checker.relaunchNow());
    EXPECT_EQ(desk.application.ends, QList{std::chrono::milliseconds(1500)});

    ASSERT_EQ(desk.application.started.size(), 1);
    write(u"sleep"_s, "#!/bin/sh\necho >\"${0%/*}/waiting\"\n/bin/sleep \"$1\"\n");
    SystemApplication().startDetached(u"/usr/bin/env"_s,
                                      QStringList{u"PATH="_s + desk.folder.path() + u":/usr/bin:/bin"_s} +
                                          desk.application.started[0]);
    runUntil([this] { return !read(u"waiting"_s).isEmpty(); });
    EXPECT_EQ(installedProgram(), program(1)) << "the program has not ended yet";
    running.closeWriteChannel();
    ASSERT_TRUE(running.waitForFinished());
    runUntil([this] { return read(u"started"_s) == "v2\n"; });
    EXPECT_EQ(installedProgram(), program(2));
    // The script cleans up while the new version starts.
    runUntil([this] { return entries(u"Applications"_s) + entries(u"tmp"_s) == QStringList{u"Parcelory.app"_s}; });
}

TEST_F(Update, AFailedDownloadReportsWhyAndLeavesNoFiles)
{
    struct Row {
        QString change; ///< a script that damages the archive's contents
        const char *reason;
        QString url = {};
    };
    const QString pack = u"; rm -f site/a.zip; (cd new && zip -qry ../site/a.zip .)"_s;
    const Row rows[] = {
        {u"mv new/Parcelory.app new/Parcelory"_s, "The update archive didn't contain an app."},
        {u"mv new/Parcelory.app new/x; ln -s x new/Parcelory.app"_s, "didn't contain an app."},
        {u"cd new/Parcelory.app/bin; rm parcelory; mkdir parcelory; cd ../../.."_s, "didn't contain an app."},
        {u"ln -s ../../.. new/Parcelory.app/up"_s, "holds a link that leads out of the app."},
        {u"ln -s /etc new/Parcelory.app/etc"_s, "holds a link that leads out of the app."},
        {u"ln -s ../../victim new/swap.sh"_s, "The update helper could not be written"},
        {u":"_s, "The update archive is broken — unzip 9: ", url("half.zip")},
        {u":"_s, "curl 22: curl: (22)", url("nothing.zip")},
        {u":"_s, "curl 18: curl: (18)", url("a.zip?cut")},
        {u":"_s, "no web address", u"file://"_s + desk.path(u"site/a.zip"_s)},
        {u":"_s, "no web address", u"--config"_s},
        {u":"_s, "no web address", url("a.zip").replace(u"http"_s, u"ftp"_s)},
        {u":"_s, "is not encrypted and has no checksum", url("a.zip").replace(u"127.0.0.1"_s, u"localhost"_s)},
    };
    write(u"victim"_s, "precious");
    for (const Row &row : rows) {
        sh(u"rm -rf new"_s);
        make(u"new/Parcelory.app"_s, 2);
        ASSERT_EQ(sh(row.change + pack + u"; head -c 20000 site/a.zip >site/half.zip"_s), 0) << row.reason;
        cut = row.url.endsWith(u"?cut");
        EXPECT_THAT(install(offerOf(row.url.isEmpty() ? url("a.zip") : row.url)),
                    testing::AllOf(testing::StartsWith("Update failed: "), HasSubstr(row.reason)));
        EXPECT_EQ(checker.phase, UpdatePhase::idle) << row.reason;
        EXPECT_EQ(entries(u"tmp"_s), QStringList()) << row.reason;
    }
    EXPECT_EQ(read(u"victim"_s), "precious");
    settle();
    EXPECT_EQ(errors.entries().size(), qsizetype(std::size(rows)));

    cut = false;
    sh(u"cd new; touch ../evil; zip -qr ../site/a.zip . ../evil"_s);
    const QString usual = std::exchange(desk.application.installed, SystemApplication::bundleAround(u"/usr/bin"_s));
    EXPECT_THAT(install(offerOf(url("a.zip"))), HasSubstr("update it the way it was installed"));
    desk.application.installed = usual;
    EXPECT_THAT(install(offerOf(url("a.zip"))), HasSubstr("ready to install"));
    EXPECT_EQ(entries(u"tmp"_s).size(), 1) << "nothing of an archive gets out of its folder";
}

TEST_F(Update, FailsTheRestartIfTheDownloadedFilesWereDeleted)
{
    for (const QString &gone : {u"swap.sh"_s, u"Parcelory.app"_s, u"Parcelory.app/bin/parcelory"_s}) {
        EXPECT_THAT(install(publish()), HasSubstr("ready to install"));
        sh(u"rm -r tmp/kxupdate-*/"_s + gone);
        run(checker.relaunchNow());
        EXPECT_EQ(checker.status.value(),
                  u"Update failed: what was downloaded is no longer there — download it again"_s);
        EXPECT_EQ(checker.phase, UpdatePhase::idle);
        EXPECT_EQ(entries(u"tmp"_s), QStringList());
    }
    EXPECT_TRUE(desk.application.started.isEmpty());
    EXPECT_TRUE(desk.application.ends.isEmpty());
}

TEST_F(Update, IsStoppedWhenTheProgramExits)
{
    checker.available = publish();
    hold = true;
    const Task<> installing = checker.install();
    runUntil([this] { return checker.progress.value().value_or(0) >= 0.4; }, &desk.clock);
    checker.stop();
    workPool().waitForDone();
    runUntil([this] { return checker.phase == UpdatePhase::idle; }, &desk.clock);
    EXPECT_EQ(checker.status.value(), u"Update failed: curl 137: "_s) << "a killed child, not one that gave up";
    EXPECT_EQ(entries(u"tmp"_s), QStringList());
}

TEST_F(Update, WithAPublicKeyInstallsOnlySignedArchives)
{
    sh(u"openssl genpkey -algorithm ed25519 -out key; openssl pkey -in key -pubout -outform DER | tail -c 32 | base64 "
       ">public"_s);
    desk.platform.deployment.updatePublicKey = QString::fromLatin1(read(u"public"_s).trimmed());
    const UpdateInfo whole = publish(u"key"_s);
    UpdateInfo anonymous = whole, renamed = whole;
    anonymous.signature = std::nullopt;
    renamed.version = u"3"_s;
    EXPECT_THAT(install(anonymous), HasSubstr("not signed by its publisher"));
    EXPECT_THAT(install(renamed), HasSubstr("not signed by its publisher"));
    sh(u"cp site/Parcelory-2.zip keep; printf x >>site/Parcelory-2.zip"_s);
    EXPECT_THAT(install(whole), HasSubstr("not the archive that the feed describes"));
    EXPECT_EQ(entries(u"tmp"_s), QStringList());
    sh(u"mv keep site/Parcelory-2.zip"_s);
    EXPECT_THAT(install(whole), HasSubstr("ready to install"));
}

TEST_F(Update, AFailedSwapAlwaysLeavesACompleteApp)
{
    struct Row {
        const char *what;
        QByteArray move; ///< a script that replaces `mv`; $n is the number of the call
        int status, version;
    };
    const QByteArray half = "{ mkdir -p \"$2/bin\"; : >\"$2/bin/parcelory\"; exit 1; }"; // the state after a full disk
    const Row rows[] = {
        {"nothing", ":", 0, 2},
        {"a full disk", "[ $n = 1 ] && " + half, 1, 1},
        {"a read-only folder", "[ $n = 2 ] && exit 1", 1, 1},
        {"the last move", "[ $n = 3 ] && " + half, 1, 1},
        {"a kill of the swap in its middle", "[ $n = 3 ] && kill -9 $$", 1, 1},
        {"a kill of the script in its middle", "[ $n = 3 ] && { old=$(echo */*.old-*); kill -9 ${old##*-}; }", 137, 2},
    };
    const QString call = QStringLiteral("PATH=$PWD:$PATH exec /bin/sh " PARCELORY_SOURCE_DIR "/src/shell/swap.sh "
                                        "4194305 \"$PWD/Applications/Parcelory.app\" new/Parcelory.app");
    for (const Row &row : rows) {
        SCOPED_TRACE(row.what);
        make(u"Applications/Parcelory.app"_s, 1);
        make(u"new/Parcelory.app"_s, 2);
        write(u"mv"_s, "#!/bin/sh\necho >>count; n=$(grep -c '' count)\n" + row.move + "\nexec /bin/mv \"$@\"\n");
        sh(u"rm -f count started"_s);
        EXPECT_EQ(sh(call), row.status);
        if (row.status != 137) // a requested restart happens even if the swap fails
            runUntil([&] { return read(u"started"_s) == "v" + QByteArray::number(row.version) + "\n"; });
        runUntil([&] { return installedProgram() == program(row.version); });
        if (row.status == 1)
            EXPECT_EQ(entries(u"Applications"_s), QStringList{u"Parcelory.app"_s});
    }
}

} // namespace parcelory::test
