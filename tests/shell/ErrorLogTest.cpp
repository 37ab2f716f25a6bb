#include "shell/ErrorLog.h"
#include "carrier/ShippoError.h"
#include "support/FakePlatform.h"

#include <exception>
#include <stdexcept>

namespace parcelory::test {
namespace {

class ErrorLogTest : public testing::Test {
protected:
    ErrorLogTest() { open(); }

    /// Simulates a restart of the program: reads the log from the file.
    void open()
    {
        log.reset();
        log.emplace(world.platform);
    }
    void record(const QString &context, const std::exception &error, Popup popup = Popup::no)
    {
        log->record(context, error, popup);
        settle();
    }
    QByteArray saved()
    {
        log->flush();
        return contentsOf(path);
    }
    void leave(const QByteArray &bytes)
    {
        log.reset();
        put(path, bytes);
    }

    FakePlatform world;
    QString path = world.path(u"error_log.json"_s);
    std::optional<ErrorLog> log;
};

const AppError lost(u"the line is dead – “try again”"_s);

} // namespace

TEST_F(ErrorLogTest, KeepsItsEntriesNewestFirstOverARestart)
{
    world.clock.start = QDateTime(QDate(2026, 11, 20), QTime(14, 41, 5, 250), QTimeZone::utc());
    record(u"Rates"_s, lost);
    world.clock.advance(std::chrono::hours(1));
    record(u"Refund"_s, std::runtime_error("not ours"));
    const auto before = log->entries();
    const QByteArray file = saved();
    open();

    ASSERT_EQ(log->entries().size(), 2);
    EXPECT_EQ(log->entries()[0].id, before[0].id);
    EXPECT_EQ(log->entries()[0].date, before[0].date);
    EXPECT_EQ(log->entries()[0].detail, u"not ours"_s);
    EXPECT_EQ(log->entries()[1].detail, lost.description());
    // Seconds since 2001, as in every earlier file.
    const QByteArray first = "[{\"id\":\"" + before[0].id.toByteArray(QUuid::WithoutBraces).toUpper() +
                             "\",\"date\":816882065.25,\"context\":\"Refund\",\"detail\":\"not ours\"},{";
    EXPECT_EQ(file.left(first.size()), first);
}

TEST_F(ErrorLogTest, KeepsTheNewestThousand)
{
    Json entries = Json::array();
    for (int i = 1; i <= ErrorLog::capacity; ++i) {
        const std::string id = QUuid::createUuid().toString(QUuid::WithoutBraces).toStdString();
        entries.push_back({{"id", id}, {"date", 800'000'000 - i}, {"context", std::to_string(i)}, {"detail", ""}});
    }
    leave(dumpJson(entries));
    open();
    ASSERT_EQ(log->entries().size(), 1000);

    record(u"newest"_s, lost);
    EXPECT_EQ(log->entries().size(), 1000);
    EXPECT_EQ(log->entries().first().context, u"newest"_s);
    EXPECT_EQ(log->entries().last().context, u"999"_s);
    EXPECT_EQ(parseJson(saved()).size(), 1000u);
}

TEST_F(ErrorLogTest, AlertsOnRequestButNeverAboutTheClerksOwnData)
{
    const ShippoError invalid = ShippoError::validation(u"bad ZIP"_s), api = ShippoError::api(u"no rates"_s);
    const std::runtime_error foreign("socket closed");
    const std::tuple<const std::exception &, Popup, bool> rows[] = {
        {invalid, Popup::yes, false}, {api, Popup::yes, true}, {foreign, Popup::yes, true}, {lost, Popup::no, false}};
    for (const auto &[error, popup, shown] : rows) {
        world.prompts.alerts.clear();
        record(u"Rates"_s, error, popup);
        ASSERT_EQ(world.prompts.alerts.size(), shown ? 1 : 0) << error.what();
        if (!shown)
            continue;
        EXPECT_EQ(world.prompts.alerts[0].first,
                  u"Bad API response, contact Tobin: "_s + world.platform.deployment.supportTelephone);
        EXPECT_EQ(world.prompts.alerts[0].second,
                  u"Rates: "_s + describe(error) + u"\n\nFull history: Window ▸ Error Log"_s);
    }
    EXPECT_EQ(log->entries().size(), std::ssize(rows));
}

TEST_F(ErrorLogTest, RaisesOneAlertAMinuteForTheSameErrorAndKeepsEveryEntry)
{
    const int alerts[] = {1, 1, 2, 2};
    for (const int expected : alerts) {
        record(u"Rates"_s, lost, Popup::yes);
        EXPECT_EQ(world.prompts.alerts.size(), expected);
        world.clock.advance(std::chrono::seconds(31));
    }
    record(u"Refund"_s, lost, Popup::yes);
    EXPECT_EQ(world.prompts.alerts.size(), 3) << "another operation failed";
    EXPECT_EQ(log->entries().size(), 5);
}

TEST_F(ErrorLogTest, WritesAnErrorOfTheEventLoopsLastTurn)
{
    log->record(u"Refund"_s, lost, Popup::yes);
    log.reset();
    open();
    EXPECT_EQ(log->entries().size(), 1);
    EXPECT_TRUE(world.prompts.alerts.isEmpty()) << "no window is left to show it";
}

TEST_F(ErrorLogTest, ShowsOneAlertAtATime)
{
    struct HeldPrompts : FakePrompts {
        QPromise<void> closed;
        Task<> alert(QString title, QString text) override
        {
            alerts.append({title, text});
            co_await closed.future();
        }
    } prompts;
    prompts.closed.start();
    Platform desk = world.with({.prompts = &prompts, .keyboard = {}, .web = {}});
    log.reset();
    log.emplace(desk);
    record(u"first"_s, std::runtime_error("a"), Popup::yes);
    record(u"second"_s, std::runtime_error("b"), Popup::yes);
    EXPECT_EQ(prompts.alerts.size(), 1);
    prompts.closed.finish();
    runUntil([&prompts] { return prompts.alerts.size() == 2; });
    EXPECT_TRUE(prompts.alerts[1].second.startsWith(u"second"_s));
    log.reset();
}

TEST_F(ErrorLogTest, SetsAnUnreadableFileAsideWhenReplacingIt)
{
    QList<QByteArray> aside;
    for (const Json &row : table(u"error-log"_s, "files")) { // bytes, whether they are set aside
        const QByteArray left = bytes(row[0]);
        leave(left);
        open();
        EXPECT_TRUE(log->entries().isEmpty());
        EXPECT_EQ(saved(), left) << "reading alone changes nothing";
        record(u"first"_s, lost);
        record(u"second"_s, lost);
        EXPECT_EQ(parseJson(saved()).size(), 2u) << row;
        if (row[1].get<bool>())
            aside += left;
        EXPECT_THAT(setAside(world.folder.path(), u"error_log.json"_s), testing::UnorderedElementsAreArray(aside))
            << row;
    }
}

TEST_F(ErrorLogTest, CopiesAllAsTextAndClearsPermanently)
{
    EXPECT_EQ(log->asText(), QString());
    record(u"Rates"_s, lost);
    EXPECT_EQ(log->countText(), u"1 entries"_s);
    world.clock.start = QDateTime(QDate(2026, 1, 2), QTime(0, 5, 9));
    record(u"Refund"_s, std::runtime_error("no\r\n\tway"));
    EXPECT_EQ(log->asText(),
              u"01/02/26 12:05:09 AM\tRefund\tno way\n11/20/26 2:41:00 PM\tRates\t"_s + lost.description());

    log->clear();
    EXPECT_EQ(saved(), "[]");
    open();
    EXPECT_EQ(log->countText(), u"0 entries"_s);
}

TEST_F(ErrorLogTest, RecordsFromAnyThreadAndShowsOnTheMainThread)
{
    constexpr int threads = 4, each = 25;
    int changes = 0;
    QObject::connect(&*log, &ErrorLog::entriesChanged, [&] {
        ++changes;
        EXPECT_EQ(QThread::currentThread(), qApp->thread());
    });
    std::vector<std::thread> workers;
    workers.reserve(threads);
    for (int worker = 0; worker < threads; ++worker)
        workers.emplace_back([&, worker] {
            for (int i = 0; i < each; ++i)
                log->record(QString::number(worker), AppError(QString::number(i)), Popup::yes);
        });
    std::ranges::for_each(workers, &std::thread::join);
    EXPECT_TRUE(log->entries().isEmpty());
    settle();

    EXPECT_EQ(changes, threads * each);
    EXPECT_EQ(world.prompts.alerts.size(), threads * each);
    QHash<QString, int> newest;
    for (const APIErrorEntry &entry : log->entries())
        EXPECT_EQ(entry.detail.toInt(), each - ++newest[entry.context]) << "a thread's records keep their order";
    EXPECT_EQ(parseJson(saved()).size(), size_t(threads * each));
}

TEST_F(ErrorLogTest, KeepsTheEntriesOfAnotherProgram)
{
    record(u"Before"_s, lost);
    log->flush();
    {
        ErrorLog other(world.platform);
        other.record(u"There"_s, lost, Popup::no);
        settle();
    }
    world.clock.advance(1s);
    record(u"Here"_s, lost);
    log->flush();
    settle();
    ASSERT_EQ(log->entries().size(), 3);
    EXPECT_EQ(log->entries().first().context, u"Here"_s);
    EXPECT_EQ(parseJson(saved()).size(), 3u);
}

} // namespace parcelory::test
