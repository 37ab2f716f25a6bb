// The sign-in and the invoices on the real web engine, against the practice back office.

#include "app/AppState.h"
#include "backoffice/DesklineInvoice.h"
#include "compose/Customs.h"
#include "platform/WebEngineSession.h"
#include "practice/backoffice/BackOfficeScenario.h"
#include "practice/backoffice/PracticeBackOffice.h"
#include "shell/ErrorLog.h"
#include "support/FakePlatform.h"

#ifdef Q_OS_MACOS
#include "platform/SystemProcesses.h"
#endif

#include <QApplication>
#include <QDirIterator>
#include <QStandardPaths>

namespace parcelory::test {

QString webFolder; ///< outlives every engine, because engines keep writing for a moment

namespace {

const QString user = PracticeBackOffice::user, password = PracticeBackOffice::password;

class WebEngine : public testing::Test, protected FakePlatform {
protected:
    WebEngine()
    {
        world.deployment.backOffice = office.baseUrl();
        errors = std::make_unique<ErrorLog>(world);
        app = std::make_unique<AppState>(world);
    }

    /// Lets the program look at the page every 15 ms, while its time does not advance: so the engine may be as slow as
    /// the machine. As soon as `hopeless` holds, the operation can only fail, and time advances as fast as possible.
    template <class Done>
    void pace(Done done, std::function<bool()> hopeless = {})
    {
        QTimer beat;
        QObject::connect(&beat, &QTimer::timeout, &beat, [this] { clock.runNext(); });
        beat.start(15);
        runUntil([&] {
            if (hopeless && hopeless())
                clock.fireNext();
            return done();
        });
        settle();
    }
    void signIn(const QString &name = user, const QString &secret = password, std::function<bool()> hopeless = {})
    {
        bool done = false;
        spawn([&]() -> Task<> {
            co_await app->signIn(name, secret, true);
            done = true;
        });
        pace([&] { return done; }, std::move(hopeless));
    }
    QString error() { return app->loginError.value().value_or(QString()); }
    /// The invoice; if nothing, scanStatus says why.
    std::optional<DesklineInvoice> scan(const QString &number, std::function<bool()> hopeless = {})
    {
        app->scannedInvoice = std::nullopt;
        app->handleInvoiceScan(number);
        pace([this] { return !app->scanBusy; }, std::move(hopeless));
        return app->scannedInvoice;
    }
    std::function<bool()> answered(const QByteArray &method)
    {
        return [this, method] {
            const auto requests = office.requests();
            return std::ranges::any_of(requests, [&](const auto &request) { return request.method == method; });
        };
    }

    PracticeBackOffice office;
    WebEngineSession engine{
        {.folder = webFolder, .reach = WebEngineSession::Reach::loopbackOnly, .answerLimit = std::chrono::seconds(3)}};
    Platform world = with({.prompts = {}, .keyboard = {}, .web = &engine});
    std::unique_ptr<ErrorLog> errors;
    std::unique_ptr<AppState> app;
};

#ifdef Q_OS_MACOS
/// The renderer processes of this process.
QList<int> renderers()
{
    const QString own = QString::number(QCoreApplication::applicationPid());
    const ProcessOutcome children =
        SystemProcesses().run(u"/usr/bin/pgrep"_s, {u"-P"_s, own, u"-f"_s, u"type=renderer"_s});
    QList<int> found;
    for (const QByteArray &line : children.out.trimmed().split('\n'))
        found += line.toInt();
    found.removeAll(0);
    return found;
}
#else
/// The renderer processes of this process, which its zygotes have forked.
QList<int> renderers()
{
    QHash<int, int> parents;
    for (const QString &id : QDir(u"/proc"_s).entryList(QDir::Dirs)) {
        QFile file(u"/proc/%1/stat"_s.arg(id));
        if (file.open(QIODevice::ReadOnly)) {
            const QByteArray line = file.readAll();
            parents[id.toInt()] = line.mid(line.lastIndexOf(')') + 4).split(' ').first().toInt();
        }
    }
    QList<int> found;
    for (const auto [process, parent] : parents.asKeyValueRange()) {
        if (parents.value(parent) == int(QCoreApplication::applicationPid()))
            found += process;
    }
    return found;
}
#endif

bool anyFileHolds(const QString &folder, const QByteArray &text)
{
    QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        if (file.open(QIODevice::ReadOnly) && file.readAll().contains(text))
            return true;
    }
    return false;
}

} // namespace

TEST_F(WebEngine, SignsInWithAnyPasswordAndStoresItNowhere)
{
    for (const QString &secret :
         {password, u"a\"b'c\\d"_s, u"x</script><script>alert(1)</script>"_s, u"$& %1 %41\u2028`${1}` ñ 🔑"_s}) {
        office.setPassword(secret);
        office.clearRequests();
        signIn(user, secret);
        EXPECT_EQ(app->flow.value(), AppFlow::main) << secret.toStdString() << error().toStdString();
        pace([this] { return app->auth.currentURL.value().endsWith(u"/staff/dashboard.php"_s); });
        const auto requests = office.requests();
        for (const auto &request : requests)
            EXPECT_FALSE(QUrl::fromPercentEncoding(request.target).contains(secret));
        const auto page = std::ranges::find(requests, QByteArray("GET"), &PracticeBackOffice::Request::method);
        EXPECT_EQ(page->cookie, QByteArray()) << "a sign-in begins without the last session";
        app->signOut();
    }
    office.setPassword(u"Tr0mbone-48213"_s);
    signIn(user, u"Tr0mbone-48213"_s);
    app->errors.flush();
    for (const QString &place : {folder.path(), webFolder}) {
        EXPECT_FALSE(anyFileHolds(place, "Tr0mbone-48213") || anyFileHolds(place, "deskline_device"));
    }
}

TEST_F(WebEngine, ReportsWhyItCannotSignIn)
{
    signIn(user, u"wrong"_s, answered("POST"));
    EXPECT_EQ(error(), u"Login failed — check the email and password."_s);
    EXPECT_EQ(app->flow.value(), AppFlow::login);

    const QString slow =
        u"Deskline is responding slowly — the login page didn't load after 40 seconds. Try again in a moment."_s;
    using Form = BackOfficeScenario::LoginPage;
    office.setScenario({.loginPage = Form::withoutFields});
    signIn(user, password, answered("GET"));
    EXPECT_EQ(error(), slow);
    office.setScenario({.neverFinishes = true});
    signIn(user, password, answered("GET"));
    EXPECT_EQ(error(), slow);

    office.setScenario({.unreachable = true});
    office.clearRequests();
    signIn();
    EXPECT_EQ(error(), u"Can't reach deskline — connect to the VPN and try again."_s);
    EXPECT_FALSE(answered("GET")());
    office.setScenario({.answerDelay = std::chrono::milliseconds(250)});
    signIn();
    EXPECT_EQ(error(), QString());
    EXPECT_EQ(app->flow.value(), AppFlow::main);
}

TEST_F(WebEngine, ReadsInvoicesOfEveryKind)
{
    signIn();
    auto invoice = scan(u"i48213"_s);
    ASSERT_TRUE(invoice) << app->scanStatus.value().toStdString();
    ASSERT_TRUE(invoice->items.size() == 2 && invoice->notes.size() == 1);
    EXPECT_EQ((QStringList{invoice->buyerName, invoice->address.oneLine(), invoice->address.country,
                           invoice->items[0].title, invoice->items[0].qty, invoice->items[0].total, invoice->shipMethod,
                           invoice->shipCost, invoice->paidAmount, invoice->tracking, invoice->codes.join(u' '),
                           invoice->notes[0].by, invoice->notes[0].date}
                   .join(u'|')),
              u"Eleanor Whitfield|418 Montford Ave, Apt 3B, Asheville NC 28801|US|1881-S Morgan Silver Dollar MS64|2|"
              "$338.00|USPS Priority|$9.95|$421.95|9405511899560417228011|2AC14|r.odell|11/19/26"_s);
    EXPECT_EQ(invoice->address.company, app->sanitizer.sanitize(u"Whitfield Rare Coins"_s));
    EXPECT_EQ(invoice->subtotal(), 412);
    EXPECT_EQ(prompts.alerts.last().first, u"Check Invoice 48213"_s);

    EXPECT_EQ(scan(u"48214"_s)->tracking, QString());
    EXPECT_EQ(scan(u"48220"_s)->codes, (QStringList{u"2AC14"_s, u"ARC14"_s, u"QQ1"_s}));
    EXPECT_EQ(scan(u"48160"_s)->suggestedCustomsType(), CustomsItemType::currency);
    for (const QString &noBuyer : {u"48300"_s, u"99999"_s}) {
        EXPECT_FALSE(scan(noBuyer));
        EXPECT_EQ(app->scanStatus.value(),
                  u"Invoice %1 loaded but no buyer details were found on the page."_s.arg(noBuyer));
    }
    const std::pair<QString, QString> countries[] = {
        {u"48377"_s, u"GB"_s}, {u"48303"_s, u"US"_s}, {u"48304"_s, u"IL"_s}};
    for (const auto &[number, country] : countries)
        EXPECT_EQ(scan(number)->address.country, country) << number.toStdString();
    invoice = scan(u"48301"_s);
    EXPECT_EQ(invoice->items.size(), 60);
    EXPECT_TRUE(invoice->streetCut);
    EXPECT_THAT(prompts.alerts.last().second.toStdString(), HasSubstr("was cut"));
    invoice = scan(u"48302"_s);
    EXPECT_THAT(invoice->buyerName.toStdString(), HasSubstr("<script>"));
    EXPECT_THAT(invoice->items[0].title.toStdString(), HasSubstr("<"));
    invoice = scan(u"48305"_s);
    EXPECT_FALSE(invoice->buyerName.isEmpty());
    EXPECT_TRUE(invoice->items.isEmpty() && invoice->notes.isEmpty() && !invoice->subtotal());

    office.setScenario({.noCompanyField = true});
    office.clearRequests();
    const auto askedForCustomer = [this] { return office.requests().size() > 2; };
    EXPECT_EQ(scan(u"48213"_s, askedForCustomer)->address.company, app->sanitizer.sanitize(u"Whitfield Coins"_s));
}

TEST_F(WebEngine, SurvivesMisbehavingPages)
{
    signIn();
    const auto opened = [this] { return office.requests().size() > 2; };
    office.clearRequests();
    office.endSessions();
    office.setPassword(u"changed"_s); // otherwise the program signs in again
    EXPECT_FALSE(scan(u"48213"_s, opened));
    EXPECT_EQ(app->scanStatus.value(), u"The deskline session has expired — sign out of Parcelory and sign back in."_s);
    office.setPassword(password);
    signIn();

    const QString slow =
        u"Deskline is responding slowly — invoice 48214 didn't load after 45 seconds. Try again in a moment."_s;
    office.setScenario({.neverFinishes = true});
    office.clearRequests();
    EXPECT_FALSE(scan(u"48214"_s, answered("GET")));
    EXPECT_EQ(app->scanStatus.value(), slow);
    office.setScenario({});
    EXPECT_TRUE(scan(u"48213"_s)) << "the next one is read";

    // A sign-out while a page loads.
    office.setScenario({.neverFinishes = true});
    office.clearRequests();
    app->handleInvoiceScan(u"48214"_s);
    pace([&] { return answered("GET")(); });
    app->signOut();
    pace([this] { return !app->scanBusy; });
    office.setScenario({});
    signIn();
    EXPECT_TRUE(scan(u"48213"_s));

    // A hanging page answers no script; every evaluation times out.
    office.setScenario({.hangsScript = true});
    QTimer hurry;
    QObject::connect(&hurry, &QTimer::timeout, &hurry, [this] { clock.advance(std::chrono::seconds(20)); });
    hurry.start(100);
    EXPECT_FALSE(scan(u"48214"_s));
    hurry.stop();
    EXPECT_EQ(app->scanStatus.value(), slow);
    office.setScenario({});
    EXPECT_TRUE(scan(u"48214"_s));

    office.setScenario({.neverFinishes = true});
    office.clearRequests();
    app->handleInvoiceScan(u"48213"_s);
    pace([&] { return answered("GET")(); });
    ASSERT_THAT(renderers(), Not(IsEmpty()));
    for (const int process : renderers())
        ::kill(process, SIGKILL);
    pace([this] { return !app->scanBusy; });
    EXPECT_EQ(app->scanStatus.value(),
              u"The page of invoice 48213 stopped working while it was read — scan the invoice again."_s);
    office.setScenario({});
    EXPECT_TRUE(scan(u"48213"_s));
}

TEST_F(WebEngine, AsksBeforeAPageNavigates)
{
    signIn();
    PracticeBackOffice elsewhere; // on another port, so that the request would arrive
    bool isAsked = false;
    engine.setDelegate({.allows =
                            [&](const QUrl &url) {
                                const bool isHome = url.port() == office.baseUrl().port();
                                isAsked = isAsked || !isHome;
                                return isHome;
                            },
                        .onFinished = {}});
    for (const QString &leave :
         {u"location.href = '%1'"_s, u"document.body.innerHTML = '<form id=f action=\"%1\">', f.submit()"_s}) {
        isAsked = false;
        int turn = 0;
        runUntil([&] { // a page that is still loading is gone once it is left: then it is loaded again
            if (turn++ % 100 == 0 && runTask(app->auth.evalBool(u"document.readyState === 'complete'"_s)))
                runTask(app->auth.evalBool(leave.arg(elsewhere.baseUrl().toString())));
            else if (turn % 100 == 50 && !runTask(app->auth.evalBool(u"true"_s)))
                app->auth.load(app->auth.loginURL());
            return isAsked;
        });
    }
    const auto isAtHome = [this] {
        return runTask(app->auth.evalBool(u"location.port === '%1'"_s.arg(office.baseUrl().port())));
    };
    EXPECT_TRUE(isAtHome());
    app->auth.load(app->auth.loginURL());
    runUntil(isAtHome);
    EXPECT_THAT(elsewhere.requests(), IsEmpty());
}

} // namespace parcelory::test

int main(int argc, char **argv)
{
    QStandardPaths::setTestModeEnabled(true);
    testing::InitGoogleMock(&argc, argv);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    parcelory::WebEngineSession::prepareProcess();
    const QTemporaryDir folder;
    parcelory::test::webFolder = folder.path();
    QApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("webengine-%1").arg(QCoreApplication::applicationPid()));
    return RUN_ALL_TESTS();
}
