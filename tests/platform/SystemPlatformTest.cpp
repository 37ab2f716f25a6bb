// The adapters to the real machine: preference file, child processes, network.

#include "core/ErrorDetail.h"
#include "core/PrivateFiles.h"
#include "core/Setting.h"
#include "core/SettingsKeys.h"
#include "core/ports/HttpTransport.h"
#include "core/ports/Preferences.h"
#include "core/ports/ProcessRunner.h"
#include "platform/NetworkTransport.h"
#include "platform/RunningProgram.h"
#include "platform/SettingsPreferences.h"
#include "platform/SystemApplication.h"
#include "platform/SystemClock.h"
#include "platform/SystemDesktop.h"
#include "platform/SystemProcesses.h"
#include "support/FakePlatform.h"

#undef signals
#include "practice/LoopbackServer.h"

#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUuid>

namespace parcelory::test {

TEST(SystemClock, CallsNoCanceledTimer)
{
    SystemClock clock;
    quint64 later = 0;
    bool isCalled = false;
    clock.after({}, [&] { clock.cancel(later); }); // both are due in one turn
    later = clock.after({}, [&] { isCalled = true; });
    settle();
    EXPECT_FALSE(isCalled);
}

TEST(SettingsPreferences, KeepsTypesOverARestart)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"settings.ini"_s);
    const Setting<QString> text{u"a.text"_s, u"fallback"_s};
    const QString texts[] = {{}, u"true"_s, u"a, b; c=\"d\""_s, u"@Invalid()"_s, u"Büro\n2 \\ 🔑 "_s, u"007"_s};
    const QStringList lists[] = {
        {}, {u"Live"_s}, {u"Live, new"_s}, {u"Test Mode"_s, u"“Büro”, 2"_s, u"@at"_s}, {u"A"_s, u"A"_s}};

    EXPECT_EQ(read(SettingsPreferences(file), text), u"fallback"_s);
    EXPECT_TRUE(read(SettingsPreferences(file), settings::rotate180));
    const auto afterRestart = [&](const auto &setting, const auto &value) {
        {
            SettingsPreferences preferences(file);
            write(preferences, setting, value);
            EXPECT_EQ(read(preferences, setting), value);
        }
        // Under another name, because a process caches what it has written to a file.
        const QString copy = folder.filePath(QUuid::createUuid().toString(QUuid::WithoutBraces));
        EXPECT_TRUE(QFile::copy(file, copy));
        return read(SettingsPreferences(copy), setting);
    };
    SettingsPreferences(file).setValue(text.key, QStringList{u"x"_s, u"y"_s});
    EXPECT_EQ(read(SettingsPreferences(file), text), u"fallback"_s) << "a list does not read as a text";
    for (const QString &value : texts)
        EXPECT_EQ(afterRestart(text, value), value);
    for (const QStringList &value : lists)
        EXPECT_EQ(afterRestart(settings::shippoKeyNames, value), value);
    for (const bool value : {false, true})
        EXPECT_EQ(afterRestart(settings::rotate180, value), value);
}

TEST(SettingsPreferences, TellIfChangesCannotBeStoredAndReadThoseOfOtherPrograms)
{
    const QTemporaryDir folder;
    const QString place = folder.filePath(u"config"_s), file = place + u"/settings.ini"_s;
    put(place, "a file where the folder should be");
    SettingsPreferences preferences(file);
    preferences.setValue(u"own"_s, u"kept"_s);
    EXPECT_FALSE(preferences.synchronize());
    ASSERT_TRUE(QFile::remove(place));
    EXPECT_TRUE(preferences.synchronize()) << "the fault is over";
    EXPECT_TRUE(contentsOf(file).contains("own=kept"));

    put(file, contentsOf(file) + "other=added later\n");
    EXPECT_TRUE(preferences.synchronize());
    EXPECT_EQ(preferences.value(u"other"_s), u"added later"_s);
}

TEST(SettingsPreferences, OpenWhateverIsInPlaceOfTheFile)
{
    const QTemporaryDir home;
    const auto restored = qScopeGuard([usual = qgetenv("HOME")] { qputenv("HOME", usual); });
    qputenv("HOME", home.path().toUtf8());
    const QDir folder(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation));
    ASSERT_TRUE(folder.path().startsWith(home.path()) && folder.mkpath(u"Corvallon/parcelory.conf.lock"_s));
    for (const QString &name : {u"Corvallon.conf"_s, u"Corvallon/parcelory.conf"_s, u"practice.ini"_s})
        ASSERT_EQ(::mkfifo(QFile::encodeName(folder.filePath(name)).constData(), 0600), 0) << name.toStdString();
    ASSERT_TRUE(QFile::link(u"/dev/zero"_s, folder.filePath(u"endless.ini"_s)));
    SettingsPreferences opened[] = {SettingsPreferences(), SettingsPreferences(folder.filePath(u"practice.ini"_s)),
                                    SettingsPreferences(folder.filePath(u"endless.ini"_s))};
    for (SettingsPreferences &preferences : opened) {
        write(preferences, settings::rotate180, false);
        EXPECT_FALSE(read(preferences, settings::rotate180));
    }
    for (const auto &[name, count] : {std::pair(u"."_s, 3), std::pair(u"Corvallon"_s, 2)}) {
        const QDir inside(folder.filePath(name));
        EXPECT_EQ(inside.entryList({u"*.unreadable-*"_s}, QDir::AllEntries | QDir::System).size(), count);
    }
    EXPECT_EQ(QFileInfo(folder.filePath(u"practice.ini"_s)).permissions() & 0x77, 0) << "only for its owner";
}

TEST(SystemProcesses, ReportsStatusAndBothChannelsWhole)
{
    const auto shell = [](const QString &script) { return SystemProcesses().run(u"/bin/sh"_s, {u"-c"_s, script}); };
    const ProcessOutcome failed = shell(u"printf out; printf err >&2; exit 3"_s);
    EXPECT_EQ(failed.status, 3);
    EXPECT_EQ(failed.out, "out");
    EXPECT_EQ(failed.err, "err");
    EXPECT_EQ(shell(u"kill -9 $$"_s).status, 128 + 9);
    EXPECT_EQ(shell(u"cat"_s).out, "") << "the input of a child process is empty";
    EXPECT_EQ(shell(u"kill -s 0 -- -$$"_s).status, 0) << "only a session of its own has no terminal to ask at";

    const ProcessOutcome much = shell(u"head -c 500000 /dev/zero; head -c 500000 /dev/zero >&2"_s);
    EXPECT_EQ(much.out.size(), 500'000);
    EXPECT_EQ(much.err.size(), 500'000);
    EXPECT_EQ(SystemProcesses().run(u"/bin/echo"_s, {u"a  b; $HOME *"_s}).out, "a  b; $HOME *\n");
    EXPECT_EQ(SystemProcesses()
                  .runOpener(u"/bin/sh"_s, {u"-c"_s, u"test /dev/stdout -ef /dev/null -a /dev/stderr -ef /dev/null"_s},
                             std::chrono::hours(1))
                  .status,
              0);
    EXPECT_THROW(SystemProcesses().run(u"/nowhere/lpr"_s, {}), AppError);
    EXPECT_THROW(SystemProcesses().run(u"/bin/sleep"_s, {u"3600"_s}, {}, std::chrono::milliseconds(50)),
                 ProcessTimedOut);
    EXPECT_EQ(SystemProcesses().run(u"/bin/echo"_s, {u"a"_s}, {}, std::chrono::hours(1)).out, "a\n");
}

TEST(SystemApplication, QuitsEvenWhenTheMainThreadHangs)
{
    const auto hang = [] {
        SystemApplication().quitWithin(std::chrono::milliseconds(1));
        while (true) // no event loop runs, as in a program that is quitting
            std::this_thread::yield();
    };
    EXPECT_EXIT(hang(), testing::ExitedWithCode(0), "");
}

TEST(SystemDesktop, ReportsWhatDoesNotOpenAndWaitsThirtySeconds)
{
    FakeProcesses processes;
    SystemDesktop desktop(processes);
    desktop.openFile(u"/tmp/label.pdf"_s);
    EXPECT_EQ(processes.calls().value(0).arguments, QStringList{u"/tmp/label.pdf"_s});
    desktop.openUrl(QUrl(u"https://usps.example/9405"_s));
    for (const auto &call : processes.calls())
        EXPECT_EQ(call.limit, std::chrono::seconds(30)) << "an opener that hangs is ended";
    const QString late = u"the desktop did not answer within 30 seconds and may still open "_s;
    const std::tuple<bool, QString, QString> rows[] = {
        {false, u"no program on this computer can open the document — it is saved as /tmp/label.pdf"_s,
         u"no browser on this computer opens usps.example"_s},
        {true, late + u"the document — it is saved as /tmp/label.pdf"_s, late + u"usps.example"_s}};
    for (const auto &[hangs, file, page] : rows) {
        processes.behave = [hangs](const QString &program, const QStringList &) {
            if (hangs)
                throw ProcessTimedOut(program);
            return ProcessOutcome{3, {}, {}};
        };
        EXPECT_EQ(failureOf([&] { desktop.openFile(u"/tmp/label.pdf"_s); }), file);
        EXPECT_EQ(failureOf([&] { desktop.openUrl(QUrl(u"https://usps.example/9405"_s)); }), page);
    }
}

namespace {

struct NetworkTransportTest : testing::Test {
    HttpAnswer get(const QString &url, bool withToken = false)
    {
        HttpRequest request{.url = QUrl(url)};
        if (withToken)
            request.headers = {{"Authorization", "ShippoToken secret"}};
        return runTask(http.send(request));
    }
    QString failure(const QString &url, bool withToken = false)
    {
        try {
            return u"answered with %1"_s.arg(get(url, withToken).status);
        } catch (const AppError &error) {
            const QString detail = detailOf(error);
            return detail.isEmpty() ? error.description() : u"%1 [%2]"_s.arg(error.description(), detail);
        }
    }
    static QString url(const LoopbackServer &server, const char *path)
    {
        return QString::fromStdString(server.base() + path);
    }

    // Destroyed after the transport, whose idle connections would delay them.
    LoopbackServer server{"carrier"}, other{"another server"};
    FakeClock clock;
    NetworkTransport http{NetworkTransport::Reach::loopbackOnly, clock};
};

} // namespace

TEST_F(NetworkTransportTest, SendsARequestAsGivenAndReadsEveryResponse)
{
    server.start([](const httplib::Request &request, httplib::Response &response) {
        response.status = std::stoi(request.get_param_value("status"));
        response.set_content(request.get_header_value("Authorization") + "|" +
                                 request.get_header_value("Content-Type") + "|" + request.body,
                             "text/plain");
    });
    for (const int status : {200, 201, 400, 401, 404, 422, 429, 500, 503}) {
        HttpRequest request{.url = QUrl(url(server, "shipments/?status=%1").arg(status)),
                            .method = "POST",
                            .headers = {{"Authorization", "ShippoToken t"}, {"Content-Type", "application/json"}},
                            .body = "{\"a\":\"ü\"}"};
        const HttpAnswer answer = runTask(http.send(request));
        EXPECT_EQ(answer.status, status);
        EXPECT_EQ(answer.body, "ShippoToken t|application/json|{\"a\":\"ü\"}");
    }
}

TEST_F(NetworkTransportTest, ReportsErrorsWithoutRevealingSecrets)
{
    QTcpServer mute; // accepts connections and never answers
    ASSERT_TRUE(mute.listen(QHostAddress::LocalHost));
    const QString noServer = u"http://127.0.0.1:1/secret"_s;
    const QString silent = u"http://127.0.0.1:%1/secret"_s.arg(mute.serverPort());

    EXPECT_THAT(failure(noServer, true).toStdString(),
                StartsWith("The carrier can't be reached — check the network and try again. [127.0.0.1: "));
    EXPECT_FALSE(failure(noServer, true).contains(u"secret"_s));
    QObject::connect(&mute, &QTcpServer::newConnection, &mute, [this] { clock.advance(std::chrono::seconds(60)); });
    EXPECT_EQ(failure(silent, true),
              u"No answer from the carrier within 60 seconds — check the network. [127.0.0.1]"_s);
}

/// Takes the length of the data folder's name: a long path is too long for a socket.
class RunningProgramTest : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(, RunningProgramTest, testing::Values(4, 120));

TEST_P(RunningProgramTest, ASecondStartShowsTheFirstWindowAndWaitsForNoAnswer)
{
    const QTemporaryDir folder;
    const QDir data(folder.filePath(QString(GetParam(), u'x')));
    ASSERT_TRUE(data.mkpath(u"."_s));
    RunningProgram first(data);
    EXPECT_FALSE(first.handOver()) << "no other program runs";
    int shown = 0;
    const std::chrono::milliseconds shortly(20);
    {
        RunningProgram impatient(data); // started before the first has opened its window
        EXPECT_FALSE(impatient.handOver(shortly, shortly));
        first.accept([&shown] { ++shown; });
        impatient.accept([] { FAIL() << "the socket belongs to the first"; });
    }
    makePrivate(data); // as every start does
    const auto start = [&data](std::chrono::milliseconds limit) {
        auto result = std::async(std::launch::async, [&] { return RunningProgram(data).handOver(limit); });
        runUntil([&result] { return result.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
        return result.get();
    };
    EXPECT_TRUE(start(std::chrono::seconds(30)) && start(std::chrono::seconds(30)));
    EXPECT_EQ(shown, 2);

    RunningProgram second(data); // this thread answers no program while it waits
    EXPECT_FALSE(second.handOver(shortly));
    second.accept([] { FAIL() << "the socket belongs to the first"; });
    EXPECT_TRUE(start(std::chrono::seconds(30)));
    first.stop();
    EXPECT_FALSE(start(std::chrono::seconds(30))) << "the program is ending";
}

TEST_F(NetworkTransportTest, ATrickleAndAnEndlessAnswerAreGivenUp)
{
    QTcpServer trickle; // sends a byte whenever a second of its minute has passed
    ASSERT_TRUE(trickle.listen(QHostAddress::LocalHost));
    int sent = 0;
    QTimer pace;
    QObject::connect(&trickle, &QTcpServer::newConnection, &pace, [&] {
        QTcpSocket *client = trickle.nextPendingConnection();
        client->write("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n");
        QObject::connect(&pace, &QTimer::timeout, client, [&, client] {
            client->write("1");
            ++sent;
            clock.advance(std::chrono::seconds(1));
        });
        pace.start(0);
    });
    EXPECT_EQ(failure(u"http://127.0.0.1:%1/"_s.arg(trickle.serverPort())),
              u"No answer from the carrier within 60 seconds — check the network. [127.0.0.1]"_s);
    EXPECT_EQ(sent, 60);
    pace.stop();

    server.start([](const httplib::Request &request, httplib::Response &response) {
        const size_t size = std::stoul(request.path.substr(1));
        response.set_chunked_content_provider("application/octet-stream",
                                              [=, left = size](size_t, httplib::DataSink &sink) mutable {
                                                  const std::string block(std::min<size_t>(left, 1 << 20), ' ');
                                                  left -= block.size();
                                                  const bool isTaken = sink.write(block.data(), block.size());
                                                  if (left == 0)
                                                      sink.done();
                                                  return isTaken;
                                              });
    });
    constexpr size_t limit = 32 << 20;
    EXPECT_EQ(failure(url(server, "%1").arg(limit)), u"answered with 200"_s);
    EXPECT_EQ(failure(url(server, "%1").arg(limit + 1)),
              u"The answer of 127.0.0.1 is too large (more than 32 MB) — ask support."_s);
    EXPECT_FALSE(clock.fireNext()) << "no deadline outlives its request";
}

TEST_F(NetworkTransportTest, ThePracticeDeskReachesOnlyLoopback)
{
    for (const QString &host : {u"api.example.com"_s, u"192.0.2.1"_s, u"0.0.0.0"_s, u"127.0.0.1.example.com"_s,
                                u"[2001:db8::1]"_s, QString()})
        EXPECT_THAT(failure(u"http://"_s + host + u"/"_s).toStdString(),
                    StartsWith("The practice desk does not connect to"));
}

TEST_F(NetworkTransportTest, TheTokenIsNotSentToAnotherServer)
{
    std::atomic<int> seen = 0; // requests that reached the other server
    other.start([&seen](const httplib::Request &, httplib::Response &) { ++seen; });
    server.start([elsewhere = other.base()](const httplib::Request &request, httplib::Response &response) {
        if (request.path == "/file")
            response.set_content(request.get_header_value("Authorization"), "text/plain");
        else
            response.set_redirect(request.path == "/away" ? elsewhere : "/file");
    });
    const char *noAnswer = "No answer from the carrier — check the network. [127.0.0.1: ";
    EXPECT_EQ(get(url(server, "moved"), true).body, "ShippoToken secret");
    EXPECT_THAT(failure(url(server, "away"), true).toStdString(), StartsWith(noAnswer));
    EXPECT_EQ(seen, 0);
    EXPECT_THAT(failure(url(server, "away")).toStdString(), StartsWith(noAnswer));
    EXPECT_EQ(seen, 0) << "the practice desk does not follow a redirect to another server";
}

} // namespace parcelory::test
