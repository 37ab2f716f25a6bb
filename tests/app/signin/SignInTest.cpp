// The sign-in and invoice flows over a fake page; only the check whether the back office is reachable uses HTTP.

#include "app/AppState.h"
#include "app/signin/SignInScreen.h"
#include "backoffice/DesklineAuth.h"
#include "core/SettingsKeys.h"
#include "core/ports/Preferences.h"
#include "practice/backoffice/PracticeBackOffice.h"
#include "shell/ErrorLog.h"
#include "support/FakePlatform.h"
#include "support/Printing.h"
#include "support/RunTask.h"

#include <gmock/gmock.h>

#include <chrono>
#include <memory>

namespace parcelory::test {
using namespace Qt::StringLiterals;
using testing::IsEmpty;

namespace {

class SignIn : public testing::Test, protected FakePlatform {
protected:
    SignIn()
    {
        platform.deployment.backOffice = office.baseUrl();
        errors = std::make_unique<ErrorLog>(platform);
        app = std::make_unique<AppState>(platform);
        settle();
    }

    /// Sets up the page: the results of the probes and of the program's scripts.
    void showPage(bool form, bool signedIn, const QString &scriptResult = u"submitted"_s)
    {
        web.answer = [=](const QString &expression) -> QVariant {
            if (expression == DesklineAuth::loginFormProbe)
                return form;
            if (expression == DesklineAuth::signedInProbe)
                return signedIn;
            return expression.startsWith(u"document.readyState"_s) ? QVariant(true) : QVariant(scriptResult);
        };
    }
    void remember()
    {
        run([this] { return app->credentials.save({u"dana"_s, u"old"_s}); });
    }
    template <class Start>
    void run(Start start)
    {
        runTask(start(), &clock);
        settle();
    }
    void signIn(bool remember = false)
    {
        run([=, this] { return app->signIn(u"dana"_s, u"secret"_s, remember); });
    }
    void scan(const QString &text)
    {
        app->handleInvoiceScan(text);
        runUntil([this] { return !app->scanBusy; }, &clock);
        settle();
    }
    QString saved() { return secrets.get(SavedCredentials::passwordAccount).value_or(u"none"_s); }

    PracticeBackOffice office;
    std::unique_ptr<ErrorLog> errors;
    std::unique_ptr<AppState> app;
};

const QString invoicePage =
    uR"({"fields":{"Name":"Eleanor Whitfield","Codes":"QQ1"},"items":[],"notes":[],"shipMethod":"","shipCost":"",)"
    R"("tracking":"--","paid":"","profileUserID":""})"_s;

} // namespace

TEST_F(SignIn, KeepsTheCredentialsOnlyWhenAsked)
{
    showPage(true, true);
    signIn();
    EXPECT_EQ(app->flow.value(), AppFlow::main);
    EXPECT_EQ(app->signedInUser.value(), u"dana"_s);
    EXPECT_EQ(saved(), u"none"_s);
    app->flow = AppFlow::login;
    signIn(true);
    EXPECT_EQ(saved(), u"secret"_s);
    EXPECT_TRUE(runTask(app->hasSavedCredentials()));

    app->signOut();
    runUntil([this] { return saved().isEmpty(); });
    EXPECT_EQ(app->flow.value(), AppFlow::login);
    EXPECT_FALSE(runTask(app->hasSavedCredentials()));
    EXPECT_GE(web.cleared, 3) << "before each sign-in and at its end";
}

TEST_F(SignIn, ReportsWhyItFailedAndForgetsOnlyRejectedCredentials)
{
    struct Row {
        bool form;
        QString scriptResult, error;
        bool kept;
    };
    const Row rows[] = {
        {false,
         {},
         u"Deskline is responding slowly — the login page didn't load after 40 seconds. Try again in a moment."_s,
         true},
        {true, u"no-form"_s, u"Could not find the login form (no-form)."_s, true},
        {true, {}, u"Could not find the login form ()."_s, true},
        {true, u"submitted"_s, u"Login failed — check the email and password."_s, false},
    };
    for (const Row &row : rows) {
        remember();
        showPage(row.form, false, row.scriptResult);
        const auto before = clock.elapsed();
        signIn(true);
        EXPECT_EQ(app->loginError.value(), row.error);
        EXPECT_EQ(saved(), row.kept ? u"old"_s : QString());
        EXPECT_EQ(runTask(app->hasSavedCredentials()), row.kept);
        EXPECT_EQ(app->flow.value(), AppFlow::login);
        EXPECT_GE(clock.elapsed() - before, std::chrono::seconds(40));
        EXPECT_FALSE(app->loginBusy);
    }
    remember();
    showPage(true, false);
    web.answer = [this, page = web.answer](const QString &expression) {
        web.crashed = expression == DesklineAuth::signedInProbe;
        return page(expression);
    };
    signIn(true);
    EXPECT_EQ(app->loginError.value(), u"The sign-in page stopped working — try again."_s);
    EXPECT_EQ(saved(), u"old"_s) << "nobody has rejected it";
    office.setScenario({.unreachable = true});
    web.loaded.clear();
    signIn();
    EXPECT_EQ(app->loginError.value(), u"Can't reach deskline — connect to the VPN and try again."_s);
    EXPECT_THAT(web.loaded, IsEmpty());
    for (const QString &secret : {u"secret"_s, u"old"_s})
        EXPECT_FALSE(errors->asText().contains(secret));
}

TEST_F(SignIn, SignsInByItselfOncePerRun)
{
    showPage(true, false);
    SignInScreen screen(*app);
    run([&] { return screen.appear(); });
    EXPECT_FALSE(app->autoLoginTried) << "nothing is remembered";
    remember();
    run([&] { return screen.appear(); });
    EXPECT_TRUE(app->autoLoginTried);
    EXPECT_EQ(screen.name.value(), u"dana"_s);
    EXPECT_EQ(web.loaded.size(), 1);
    EXPECT_EQ(app->loginError.value(), u"Login failed — check the email and password."_s);
    remember();
    run([&] { return screen.appear(); });
    EXPECT_EQ(web.loaded.size(), 1);
    screen.name = u"someone"_s;
    EXPECT_EQ(read(preferences, settings::signInName), u"someone"_s);
}

TEST_F(SignIn, FillsTheLabelFromAScanAndReportsEveryFailure)
{
    showPage(false, false, invoicePage);
    scan(u"48213"_s);
    EXPECT_THAT(web.loaded, IsEmpty()) << "nobody is signed in";
    app->flow = AppFlow::main;
    scan(u"012"_s);
    EXPECT_EQ(app->scanStatus.value(), u"\"012\" doesn't look like an invoice QR code or number."_s);

    app->tab = MainTab::settings;
    scan(u"https://crvl.example/i48213"_s);
    EXPECT_EQ(app->scanStatus.value(), u"Invoice 48213: Eleanor Whitfield — label filled."_s);
    EXPECT_EQ(app->tab.value(), MainTab::newLabel);
    EXPECT_EQ(app->draftReference.value(), u"48213"_s);
    EXPECT_EQ(app->draftTo.value().country, u"US"_s);
    EXPECT_EQ(app->scannedInvoice.value()->tracking, QString());
    ASSERT_EQ(prompts.alerts.size(), 1);
    EXPECT_EQ(prompts.alerts[0].first, u"Check Invoice 48213"_s);

    struct Row {
        QString page;
        bool form, crashed;
        QString error;
    };
    const QString noBuyer = u"Invoice 4900 loaded but no buyer details were found on the page."_s;
    const Row rows[] = {
        {u"{}"_s, true, false, u"The deskline session has expired — sign out of Parcelory and sign back in."_s},
        {u"{}"_s, false, false, noBuyer},
        {u"[1]"_s, false, false, noBuyer},
        {u"{\"fields\":{\"Name\":7}}"_s, false, false, noBuyer},
        {u"{\"fields\":{\"Name\":\"\"}}"_s, false, false, noBuyer},
        {{}, true, false, u"The deskline session has expired — sign out of Parcelory and sign back in."_s},
        {{},
         false,
         false,
         u"Deskline is responding slowly — invoice 4900 didn't load after 45 seconds. Try again in a moment."_s},
        {{}, false, true, u"The page of invoice 4900 stopped working while it was read — scan the invoice again."_s},
    };
    for (const Row &row : rows) {
        web.answer = [&](const QString &expression) -> QVariant {
            web.crashed = row.crashed;
            if (expression == DesklineAuth::loginFormProbe)
                return row.form;
            return expression.startsWith(u"document.readyState"_s) ? QVariant(!row.page.isEmpty()) : QVariant(row.page);
        };
        scan(u"i4900"_s);
        EXPECT_EQ(app->scanStatus.value(), row.error);
        EXPECT_EQ(errors->entries().first().context, u"Deskline Invoice 4900"_s);
        EXPECT_EQ(errors->entries().first().detail, row.error);
        EXPECT_EQ(app->draftReference.value(), u"48213"_s) << "the draft stays";
    }
}

TEST_F(SignIn, DoesNotShowAScanAfterASignOut)
{
    showPage(false, false, invoicePage);
    app->flow = AppFlow::main;
    app->handleInvoiceScan(u"48213"_s);
    app->handleInvoiceScan(u"48214"_s); // ignored: one scan at a time
    app->signOut();
    runUntil([this] { return !app->scanBusy; }, &clock);
    settle();
    EXPECT_FALSE(app->scannedInvoice.value());
    EXPECT_TRUE(app->draftTo.value().isEmpty());
    EXPECT_EQ(app->scanStatus.value(), QString());
    EXPECT_THAT(web.loaded, testing::Not(testing::Contains(
                                app->auth.address(u"/staff/buyers.php?subcmd=_detail_invoice&id=48214"_s).toString())));
    EXPECT_TRUE(errors->entries().isEmpty());
}

} // namespace parcelory::test
