#include "backoffice/DesklineAuth.h"
#include "support/AppTest.h"
#include "support/BackOfficeDesk.h"

namespace parcelory::test {
namespace {

class InvoiceFlowTest : public BackOfficeDesk {
protected:
    void scan(const QString &text)
    {
        app->handleInvoiceScan(text);
        runUntil([this] { return !app->scanBusy; }, &clock);
        settle();
    }
};

const QString invoicePage =
    uR"({"fields":{"Name":"Eleanor Whitfield","Codes":"QQ1"},"items":[],"notes":[],"shipMethod":"","shipCost":"",)"
    R"("tracking":"--","paid":"","profileUserID":""})"_s;
const QString wholePage =
    uR"({"fields":{"Name":"Ann","Address":"1 Main St","City":"Bend, OR","Zip":"97702"},"profileUserID":"771"})"_s;

} // namespace

TEST_F(InvoiceFlowTest, FillsTheLabelFromAScanAndReportsEveryFailure)
{
    showPage(false, false, invoicePage);
    scan(u"48213"_s);
    EXPECT_THAT(web.loaded, IsEmpty()) << "a scan before the sign-in loads nothing";
    app->flow = AppFlow::main;
    scan(u"012"_s);
    EXPECT_EQ(app->scanStatus.value(), u"\"012\" doesn't look like an invoice QR code or number."_s);
    EXPECT_EQ(app->scanStatusKind.value(), StatusKind::failure);

    app->tab = MainTab::settings;
    scan(u"https://crvl.example/i48213"_s);
    EXPECT_EQ(app->scanStatus.value(), u"Invoice 48213: Eleanor Whitfield — label filled."_s);
    EXPECT_EQ(app->scanNote.value(), u"The invoice has no street and no city and no ZIP — complete the address."_s);
    EXPECT_EQ(app->scanStatusKind.value(), StatusKind::failure) << "a note is a warning";
    EXPECT_EQ(app->tab.value(), MainTab::newLabel);
    EXPECT_EQ(app->draftReference.value(), u"48213"_s);
    EXPECT_EQ(app->draftTo.value().country, u"US"_s);
    EXPECT_EQ(app->scannedInvoice.value()->tracking, QString());
    ASSERT_EQ(prompts.alerts.size(), 1);
    EXPECT_EQ(prompts.alerts[0].first, u"Check Invoice 48213"_s);

    const Json rows = table(u"back-office-pages"_s, "failed readings"); // page, sign-in form, crash, error, sign-out
    for (const Json &row : rows) {
        const QString page = text(row[0]);
        web.answer = [&](const QString &expression) -> QVariant {
            web.crashed = row[2].get<bool>() && (page.isEmpty() || !isReadyProbe(expression));
            if (expression == DesklineAuth::loginFormProbe)
                return row[1].get<bool>();
            if (expression == DesklineAuth::signOutProbe)
                return row.size() > 4;
            return isReadyProbe(expression) ? QVariant(!page.isEmpty()) : QVariant(page);
        };
        const auto before = clock.elapsed();
        scan(u"i4900"_s);
        if (const bool hasForm = row[1].get<bool>(); page.isEmpty() && !row[2].get<bool>())
            EXPECT_EQ(clock.elapsed() - before < 10s, hasForm) << "only a sign-in form ends the wait early";
        EXPECT_EQ(app->scanLine(), text(row[3]));
        EXPECT_EQ(app->draftReference.value(), u"48213"_s) << "a failed scan leaves the draft";
    }
    app->fillRecipient({});
    EXPECT_EQ(app->scanLine(), QString()) << "the clerk went on without the invoice";
    showPage(false, false, invoicePage);
    app->signOut();
    EXPECT_FALSE(app->scannedInvoice.value()) << "the next clerk did not ask for it";
}

TEST_F(InvoiceFlowTest, WaitsTwentySecondsForTheCustomersPage)
{
    const QString page = uR"({"fields":{"Name":"Ann","Company Name":"%1"},"profileUserID":"771"})"_s;
    const std::tuple<QString, QString, QString, bool> rows[] = {
        {u"Ann's Store"_s, u" Ann's\u00a0Shop "_s, u"Ann's Shop"_s, true},
        {u"Ann's Store"_s, {}, u"Ann's Store"_s, true},
        {u"Ann's Store"_s, u"late"_s, u"Ann's Store"_s, false},
    };
    app->flow = AppFlow::main;
    for (const auto &[onInvoice, onProfile, company, profileShown] : rows) {
        web.answer = [&](const QString &expression) -> QVariant {
            if (isReadyProbe(expression))
                return profileShown || !expression.contains(u"companyname"_s);
            return expression.contains(u"companyname"_s) ? onProfile : page.arg(onInvoice);
        };
        const auto before = clock.elapsed();
        scan(u"48213"_s);
        EXPECT_EQ(app->draftTo.value().company, app->sanitizer.sanitize(company));
        EXPECT_GE(clock.elapsed() - before, profileShown ? 0s : 20s);
        EXPECT_LT(clock.elapsed() - before, profileShown ? 1s : 22s);
        EXPECT_EQ(http.lastLimit, 15s);
        EXPECT_EQ(web.loaded.last(),
                  app->auth.address(u"/staff/users.php?subcmd=_update-customer&id=771"_s).toString());
    }
}

TEST_F(InvoiceFlowTest, ReadsOneInvoiceAtATimeAndNamesTheScansItIgnored)
{
    const QString note = u"Invoices 48301, 48302 were not loaded — scan them again."_s;
    showPage(false, false, wholePage);
    app->flow = AppFlow::main;
    QStringList heard;
    QObject::connect(app.get(), &AppState::scanFailed, app.get(), [&](const QString &text) { heard += text; });
    for (const QString &text : {u"48300"_s, u"48301"_s, u"i48302"_s, u"48301"_s, u"48300"_s, u"noise"_s})
        app->handleInvoiceScan(text);
    EXPECT_EQ(heard.value(0), u"Invoice 48301 ignored — still loading 48300."_s);
    EXPECT_EQ(app->scanStatus.value(), u"Loading invoice 48300 from deskline…"_s);
    EXPECT_EQ(app->scanNote.value(), note);
    runUntil([this] { return !app->scanBusy; }, &clock);
    EXPECT_EQ(app->scanLine(), u"Invoice 48300: Ann — label filled. "_s + note);
    EXPECT_EQ(app->draftReference.value(), u"48300"_s);
    scan(u"48301"_s);
    EXPECT_EQ(app->scanLine(), u"Invoice 48301: Ann — label filled."_s);
    EXPECT_EQ(app->scanStatusKind.value(), StatusKind::success);

    for (const QString &text : {u"4830"_s, u"48301"_s, u"48301"_s, u"77123"_s, u"483012"_s}) // a pause in the code
        app->handleInvoiceScan(text);
    runUntil([this] { return !app->scanBusy; }, &clock);
    EXPECT_EQ(app->scanLine(), u"Invoice 483012: Ann — label filled. Invoice 77123 was not loaded — scan it again."_s);

    showPage(false, false, invoicePage); // lacks parts, and has a flag
    heard.clear();
    prompts.whileAlerted = [this] {
        EXPECT_TRUE(app->openChoices == 1 && !app->isReadingInvoice());
        app->handleInvoiceScan(u"48302"_s);
    };
    scan(u"48300"_s);
    EXPECT_EQ(heard.value(0), u"Invoice 48302 ignored — close the message about 48300 first."_s);
    EXPECT_EQ(app->scanNote.value(), u"The invoice has no street and no city and no ZIP — complete the address. "
                                     "Invoice 48302 was not loaded — scan it again."_s);
}

TEST_F(InvoiceFlowTest, AnIgnoredScanStaysInTheMessageLineUntilTheNextParcel)
{
    LabelScreen screen(*app);
    const Banner ignored{u"Invoice 48301 was not loaded — scan it again."_s, false};
    showPage(false, false, wholePage);
    app->flow = AppFlow::main;
    app->handleInvoiceScan(u"48300"_s);
    scan(u"48301"_s);
    EXPECT_EQ(screen.banner.value(), ignored);
    screen.refuseDate(u"“1” is not a date."_s);
    screen.weightLb = u"1"_s;
    EXPECT_EQ(screen.banner.value(), ignored) << "a message about the parcel in the form comes and goes";
    app->failScan(u"noise"_s);
    screen.refuseDate(u"“1” is not a date."_s);
    screen.weightLb = u"2"_s;
    EXPECT_EQ(screen.banner.value(), ignored);
    scan(u"48301"_s);
    EXPECT_FALSE(screen.banner.value());
    settlePool();
}

TEST_F(InvoiceFlowTest, IsCanceledAtAnyMoment)
{
    const auto customer = [](const QString &expression) { return expression.contains(u"companyname"_s); };
    const auto script = [](const QString &expression) { return expression.contains(u"profileUserID"_s); };
    // customersPages: that are loaded for both invoices
    const std::tuple<const char *, std::function<bool(const QString &)>, int> rows[] = {
        {"while the page loads", isReadyProbe, 1},
        {"while it is read", script, 1},
        {"at the customer's page", customer, 2}};
    app->flow = AppFlow::main;
    for (const auto &[when, isMoment, customersPages] : rows) {
        SCOPED_TRACE(when);
        bool canceled = false;
        const int fills = app->draftFillCount;
        web.loaded.clear();
        web.answer = [&](const QString &expression) -> QVariant {
            if (!canceled && isMoment(expression)) {
                canceled = true;
                app->cancelInvoiceScan();
                app->handleInvoiceScan(u"48302"_s); // the clerk scans on
            }
            return isReadyProbe(expression) ? QVariant(true) : customer(expression) ? u"Shop"_s : QVariant(wholePage);
        };
        scan(u"48301"_s);
        EXPECT_TRUE(canceled);
        EXPECT_EQ(app->scanLine(), u"Invoice 48302: Ann — label filled."_s);
        EXPECT_EQ(app->draftFillCount - fills, 1);
        EXPECT_EQ(web.loaded.filter(u"id=48302"_s).size(), 1);
        EXPECT_EQ(web.loaded.filter(u"id=771"_s).size(), customersPages);
        EXPECT_TRUE(errors->entries().isEmpty());
    }
}

TEST_F(InvoiceFlowTest, NothingIsFilledInByAReadingThatIsGivenUp)
{
    showPage(false, false, invoicePage);
    for (const bool isSignOut : {false, true}) {
        app->flow = AppFlow::main;
        app->handleInvoiceScan(u"48213"_s);
        isSignOut ? app->signOut() : app->cancelInvoiceScan();
        EXPECT_FALSE(app->scanBusy);
        EXPECT_EQ(app->scanLine(), isSignOut ? QString() : u"Invoice 48213 was not read."_s);
        runUntil([this] { return http.underWay == 0; }, &clock); // a canceled reading ends with the answer
        for (int turn = 0; turn < 20; ++turn) {
            settle();
            clock.advance(1s);
        }
        EXPECT_FALSE(app->scannedInvoice.value());
        EXPECT_TRUE(app->draftTo.value().isEmpty());
        EXPECT_THAT(web.loaded.filter(u"48213"_s), IsEmpty());
        EXPECT_TRUE(errors->entries().isEmpty());
    }
}

TEST_F(InvoiceFlowTest, SignsInAgainOnceBeforeItReportsAnExpiredSession)
{
    app->flow = AppFlow::main;
    for (const Json &row : table(u"back-office-pages"_s, "expired sessions")) {
        SCOPED_TRACE(row);
        const bool saved = row[2], admitted = row[3], renewed = row[4], kept = row[5];
        runTask(saved ? app->credentials.save({u"dana"_s, u"secret"_s}) : app->credentials.forget());
        app->signedInUser = text(row[1]);
        web.loaded.clear();
        bool expired = true;
        web.answer = [&](const QString &expression) -> QVariant {
            if (expression == DesklineAuth::loginFormProbe)
                return expired;
            if (expression == DesklineAuth::signOutProbe || expression == DesklineAuth::signedInProbe)
                return !expired;
            if (isReadyProbe(expression))
                return true;
            if (!expression.contains(u"secret"_s))
                return u"{}"_s;
            expired = !admitted;
            return u"submitted"_s;
        };
        scan(u"48213"_s);
        EXPECT_EQ(app->scanLine(),
                  renewed ? u"Parcelory signed in again. Scan the invoice again."_s
                          : u"The deskline session has expired — sign out of Parcelory and sign back in."_s);
        EXPECT_EQ(errors->entries().first().context, u"Deskline Invoice 48213"_s);
        EXPECT_EQ(web.loaded.filter(u"login.php"_s).size(), renewed || !admitted ? 1 : 0);
        EXPECT_EQ(web.loaded.filter(u"id=48213"_s).size(), 1) << "nothing is read again by itself";
        EXPECT_EQ(runTask(app->hasSavedCredentials()), kept);
        EXPECT_EQ(app->flow.value(), AppFlow::main);
    }
}

TEST_F(InvoiceFlowTest, ACanceledReadingRenewsNoSession)
{
    app->flow = AppFlow::main;
    app->signedInUser = u"dana"_s;
    runTask(app->credentials.save({u"dana"_s, u"secret"_s}));
    const QString page = uR"({"fields":{"Name":"Ann","Address":"1 Main St","City":"Bend, OR","Zip":"97702"}})"_s;
    for (const bool atTheForm : {false, true}) { // or while the saved name is read
        bool canceled = false;
        const auto scanOn = [&] {
            canceled = true;
            app->cancelInvoiceScan();
            app->handleInvoiceScan(u"48302"_s);
        };
        web.loaded.clear();
        web.answer = [&](const QString &expression) -> QVariant {
            const bool isForm = expression == DesklineAuth::loginFormProbe;
            if (isForm && atTheForm && web.loaded.last().contains(u"login.php"_s))
                scanOn();
            if (expression == DesklineAuth::signOutProbe && !atTheForm)
                QMetaObject::invokeMethod(app.get(), scanOn, Qt::QueuedConnection);
            if (isForm || isReadyProbe(expression))
                return true;
            return canceled ? QVariant(page) : QVariant();
        };
        scan(u"48301"_s);
        EXPECT_EQ(app->scanLine(), u"Invoice 48302: Ann — label filled."_s);
        EXPECT_LE(web.loaded.filter(u"login.php"_s).size(), 1); // the saved name may be read before the cancel
        EXPECT_TRUE(errors->entries().isEmpty());
    }
}

} // namespace parcelory::test
