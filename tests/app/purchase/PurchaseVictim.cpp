// A desk that is killed during a purchase: `purchase_victim FOLDER CARRIER STEP` buys one label and dies at step STEP
// after Buy (sending a request, receiving a response, running a tool, committing to a database). It exits normally if
// the purchase has fewer steps. At step 0, it resolves what the last run left and buys labels until somebody kills it.

#include "core/ports/HttpTransport.h"
#include "support/AppTest.h"

#include <QCoreApplication>

#include <sqlite3.h>
#include <unistd.h>

namespace parcelory::test {
namespace {

std::atomic<int> stepsLeft = -1; ///< negative: not counting yet

void step()
{
    if (stepsLeft <= 0)
        return;
    if (--stepsLeft == 0)
        ::kill(::getpid(), SIGKILL);
}

class CountingTransport : public HttpTransport {
public:
    explicit CountingTransport(HttpTransport &real) : m_real(real) {}
    Task<HttpAnswer> send(HttpRequest request) override
    {
        step();
        HttpAnswer answer = co_await m_real.send(std::move(request));
        step();
        co_return answer;
    }

private:
    HttpTransport &m_real;
};

int countCommits(sqlite3 *db, const char **, const sqlite3_api_routines *)
{
    sqlite3_commit_hook(
        db,
        [](void *) {
            step();
            return 0;
        },
        nullptr);
    return SQLITE_OK;
}

int work(const QString &folder, const QString &carrier, int killedAt)
{
    sqlite3_auto_extension(reinterpret_cast<void (*)()>(&countCommits));
    FakePlatform desk;
    CountingTransport transport(desk.http);
    Platform platform = desk.with({.http = &transport});
    platform.dataFolder = QDir(folder);
    desk.clock.start = QDateTime::currentDateTime();
    platform.deployment.carrierApi = QUrl(carrier);
    desk.useToken(PracticeCarrier::testToken);
    desk.preferences.setValue(u"printer.zebraQueue"_s, u"ZD421"_s);
    desk.processes.behave = [](const QString &, const QStringList &) {
        step();
        return ProcessOutcome{};
    };
    ErrorLog errors(platform);
    AppState app(platform);
    LabelScreen screen(app);
    DraftKeeper keeper(app, screen);
    runTask(keeper.takeStored(), &desk.clock);
    if (killedAt == 0) {
        runTask(screen.purchases.resume(), &desk.clock);
        desk.clock.advance(61s);
        runTask(screen.purchases.checkAgain(), &desk.clock);
    }
    constexpr int tooMany = 10000;
    for (int parcel = 0; parcel < (killedAt == 0 ? tooMany : 1); ++parcel) {
        app.draftTo = homeOf(u"Parcel %1 of %2"_s.arg(parcel).arg(::getpid()));
        screen.weightLb = u"1"_s;
        screen.mailpiece = PresetMailpiece{u"uline-s-5148"_s};
        runTask(screen.fetchRates(true), &desk.clock);
        runTask(keeper.storeNow());
        stepsLeft = killedAt == 0 ? -1 : killedAt;
        runTask(screen.buyAndPrint(), &desk.clock);
        settle();
    }
    return app.log.records().isEmpty() ? 1 : 0;
}

} // namespace
} // namespace parcelory::test

int main(int argc, char **argv)
{
    QCoreApplication program(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    return parcelory::test::work(arguments.at(1), arguments.at(2), arguments.at(3).toInt());
}
