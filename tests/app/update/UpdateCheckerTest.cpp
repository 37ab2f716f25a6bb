#include "platform/SystemApplication.h"
#include "shell/UpdateTools.h"
#include "support/AppTest.h"
#include "support/UpdateDesk.h"

namespace parcelory::test {
using testing::UnorderedElementsAre;

TEST(UpdateFeed, ComparesVersionsNumberByNumber)
{
    for (const Json &row : table(u"updates"_s, "versions")) {
        EXPECT_EQ(isNewer(text(row[0]), text(row[1])), row[2].get<bool>()) << row;
        EXPECT_FALSE(isNewer(text(row[1]), text(row[0]))) << row;
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

TEST_F(UpdateDesk, ReportsTheResultOnlyOfACheckThatTheClerkStarted)
{
    const QString call = u"contact Tobin"_s + desk.platform.deployment.supportTelephone;
    qsizetype recorded = 0;
    for (const Json &row : table(u"updates"_s, "feeds")) {
        SCOPED_TRACE(row);
        const QString title = text(row[1]);
        write(u"site/parcelory-latest.json"_s, body(row[0]).replace("LONG", QByteArray(1 << 20, 'n')));
        const int before = checker.offers;
        run(checker.checkOnLaunch());
        EXPECT_TRUE(desk.prompts.alerts.isEmpty());
        run(checker.checkNow());
        EXPECT_EQ(checker.available.value().has_value(), row[3].get<bool>());
        EXPECT_EQ(checker.offers - before, title.isEmpty() ? 2 : 0);
        const auto [shownTitle, shownText] = std::exchange(desk.prompts.alerts, {}).value(0);
        EXPECT_EQ(shownTitle, title);
        EXPECT_TRUE(shownText.startsWith(text(row[2]).replace(u"CALL"_s, call))) << shownText.toStdString();
        settle();
        recorded += title == u"Update Check Failed";
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

TEST_F(UpdateDesk, ShowsTheDownloadsProgressAndReplacesTheAppAfterTheProgramExits)
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
    QStringList asked;
    for (const FakeProcesses::Call &call : desk.processes.calls()) {
        if (call.program == u"/usr/bin/curl")
            asked += call.arguments.join(u' ');
    }
    const QString guards = u"--globoff --proto %1 --proto-redir %1 "_s, plain = guards.arg(u"=http,https"_s);
    const QString output = u"--max-filesize 1073741824 -fsSL --max-time 120 -o %1/update.zip "_s.arg(staging);
    EXPECT_EQ(asked, QStringList({plain + u"-sIL --max-time 20 "_s + info.url, plain + output + info.url}));
    FakeProcesses notRun;
    [[maybe_unused]] const auto none = UpdateTools(notRun).contentLength(u"https://updates.example/a.zip"_s);
    EXPECT_TRUE(notRun.calls().value(0).arguments.join(u' ').startsWith(guards.arg(u"=https"_s)))
        << "a redirect stays encrypted";

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
    ASSERT_TRUE(running.waitForFinished(-1));
    runUntil([this] { return read(u"started"_s) == "v2\n"; });
    EXPECT_EQ(installedProgram(), program(2));
    // The script cleans up while the new version starts.
    runUntil([this] { return entries(u"Applications"_s) + entries(u"tmp"_s) == QStringList{u"Parcelory.app"_s}; });
}

TEST_F(UpdateDesk, FailsTheRestartIfTheDownloadedFilesWereDeleted)
{
    for (const QString &gone : {u"swap.sh"_s, u"Parcelory.app"_s, programIn(u"Parcelory.app"_s)}) {
        EXPECT_THAT(install(publish()), HasSubstr("ready to install"));
        sh(u"rm -r tmp/kxupdate-*/"_s + gone);
        run(checker.relaunchNow());
        EXPECT_EQ(checker.status.value(),
                  u"Update failed: what was downloaded is no longer there — download it again"_s);
        EXPECT_EQ(checker.phase, UpdatePhase::idle);
        EXPECT_EQ(entries(u"tmp"_s), QStringList());
    }
    EXPECT_TRUE(desk.application.started.isEmpty() && desk.application.ends.isEmpty());
}

TEST_F(UpdateDesk, DeletesNoFolderButItsOwn)
{
    write(u"site/precious"_s, "kept");
    const QString usual = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(desk.path(u"site"_s)));
    {
        UpdateChecker other(app);
        other.phase = UpdatePhase::ready; // without a download of its own
    }
    QDir::setCurrent(usual);
    EXPECT_EQ(read(u"site/precious"_s), "kept");
}

TEST_F(UpdateDesk, SweepsOnlyOldFoldersThatNoProgramUses)
{
    const QString old = u"kxupdate-0a1b2c3d-0000-4000-8000-000000000001"_s, link = old.chopped(1) + u'2',
                  kept = old.chopped(1) + u'3', fresh = old.chopped(1) + u'4', foreign = u"kxupdate-mine"_s;
    for (const QString &name : {old, kept, fresh, foreign})
        sh(u"mkdir -p tmp/%1/Parcelory.app; touch tmp/%1/lock"_s.arg(name));
    EXPECT_THAT(install(publish()), HasSubstr("ready to install"));
    const QString current = QFileInfo(*checker.stagedHelper).dir().dirName();
    ASSERT_EQ(sh(u"ln -s ../site tmp/%1; touch site/lock; touch -d '2 days ago' tmp/*/lock; rm tmp/%2/lock; "
                 "touch tmp/%3/lock"_s.arg(link, kept, fresh)),
              0);
    run(UpdateChecker::sweep());
    EXPECT_THAT(entries(u"tmp"_s), UnorderedElementsAre(current, link, kept, fresh, foreign));
    EXPECT_TRUE(QFileInfo::exists(*checker.stagedHelper));
    EXPECT_NE(read(u"site/parcelory-latest.json"_s), "");
}

TEST_F(UpdateDesk, IsStoppedWhenTheProgramExits)
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

} // namespace parcelory::test
