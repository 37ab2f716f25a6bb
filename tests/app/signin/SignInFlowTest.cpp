#include "app/signin/SignInScreen.h"
#include "backoffice/DesklineAuth.h"
#include "support/AppTest.h"
#include "support/BackOfficeDesk.h"

namespace parcelory::test {
namespace {

class SignInFlowTest : public BackOfficeDesk {
protected:
    void remember() { run(app->credentials.save({u"dana"_s, u"old"_s})); }
    void signIn(bool remember = false) { run(app->signIn(u"dana"_s, u"secret"_s, remember)); }
    QString saved() { return secrets.get(SavedCredentials::passwordAccount).value_or(u"none"_s); }
};

} // namespace

TEST_F(SignInFlowTest, KeepsTheCredentialsOnlyWhenAsked)
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
    EXPECT_GE(web.cleared, 3) << "the session is cleared before each sign-in and at sign-out";
}

TEST_F(SignInFlowTest, ReportsWhyItFailedAndForgetsOnlyRejectedCredentials)
{
    const Json rows = table(u"back-office-pages"_s, "failed sign-ins"); // form, script's result, error, password kept
    for (const Json &row : rows) {
        remember();
        showPage(row[0], false, text(row[1]));
        const auto before = clock.elapsed();
        signIn(true);
        EXPECT_EQ(app->loginError.value(), text(row[2]));
        EXPECT_EQ(saved(), row[3].get<bool>() ? u"old"_s : QString());
        EXPECT_EQ(runTask(app->hasSavedCredentials()), row[3].get<bool>());
        EXPECT_EQ(app->flow.value(), AppFlow::login);
        EXPECT_GE(clock.elapsed() - before, 40s);
        EXPECT_LT(clock.elapsed() - before, 42s);
        EXPECT_EQ(http.lastLimit, 5s);
        EXPECT_EQ(web.loadLimit, 60s);
        EXPECT_FALSE(app->loginBusy);
    }
    const std::function<void()> interruptions[] = {[this] { web.crashed = true; },
                                                   [this] { app->auth.load(app->auth.loginURL()); }};
    for (const std::function<void()> &interrupt : interruptions) {
        remember();
        showPage(true, false);
        web.answer = [&, page = web.answer](const QString &expression) {
            if (expression == DesklineAuth::signedInProbe)
                interrupt();
            return page(expression);
        };
        signIn(true);
        EXPECT_EQ(app->loginError.value(), u"The sign-in page stopped working — try again."_s);
        EXPECT_EQ(saved(), u"old"_s) << "the password was not rejected";
    }
    office.setScenario({.unreachable = true});
    web.loaded.clear();
    signIn();
    EXPECT_EQ(app->loginError.value(), u"Can't reach deskline — connect to the VPN and try again."_s);
    EXPECT_THAT(web.loaded, IsEmpty());
    settle();
    EXPECT_EQ(errors->entries().size(), qsizetype(rows.size() + std::size(interruptions)) + 1);
    for (const QString &secret : {u"secret"_s, u"old"_s})
        EXPECT_FALSE(errors->asText().contains(secret));
}

TEST_F(SignInFlowTest, CountsDownAndCanBeCanceled)
{
    showPage(true, false);
    int first = 0;
    const auto watch = app->loginSecondsLeft.addNotifier([&] {
        first = std::max(first, app->loginSecondsLeft.value());
        if (app->loginSecondsLeft.value() == 35)
            app->cancelSignIn();
    });
    const auto before = clock.elapsed();
    signIn();
    EXPECT_EQ(first, 40);
    EXPECT_LT(clock.elapsed() - before, 10s);
    EXPECT_FALSE(app->loginBusy || app->loginError.value() || app->loginSecondsLeft > 0);
    EXPECT_EQ(app->flow.value(), AppFlow::login);
}

TEST_F(SignInFlowTest, IsCanceledAtAnyMoment)
{
    for (const QString &moment : {QString(), DesklineAuth::loginFormProbe, DesklineAuth::signedInProbe}) {
        remember();
        web.answer = [&, canceled = false](const QString &expression) mutable -> QVariant {
            if (expression == moment && !std::exchange(canceled, true))
                app->cancelSignIn();
            return expression.contains(u"secret"_s) ? QVariant(u"submitted"_s) : QVariant(true);
        };
        Task<> task = app->signIn(u"dana"_s, u"secret"_s, true);
        if (moment.isEmpty()) // before the back office has answered
            app->cancelSignIn();
        run(std::move(task));
        EXPECT_FALSE(app->loginBusy || app->loginError.value() || app->flow == AppFlow::main);
        EXPECT_EQ(saved(), u"old"_s);
    }
    EXPECT_TRUE(errors->entries().isEmpty());
    showPage(true, true);
    signIn();
    EXPECT_EQ(app->flow.value(), AppFlow::main);
}

TEST_F(SignInFlowTest, SignsInByItselfOncePerRun)
{
    showPage(true, false);
    SignInScreen screen(*app);
    run(screen.appear());
    EXPECT_FALSE(app->autoLoginTried) << "without a remembered password nothing is tried";
    remember();
    screen.remember = true;
    run(screen.appear());
    EXPECT_TRUE(app->autoLoginTried);
    EXPECT_FALSE(screen.remember) << "the next sign-in must not store a password unasked";
    EXPECT_EQ(screen.name.value(), u"dana"_s);
    EXPECT_EQ(web.loaded.size(), 1);
    EXPECT_EQ(app->loginError.value(), u"Login failed — check the email and password."_s);
    remember();
    run(screen.appear());
    EXPECT_EQ(web.loaded.size(), 1);
    run(screen.signIn());
    EXPECT_FALSE(screen.remember) << "the back office rejected the saved password";
    run(screen.appear());
    EXPECT_EQ(screen.password.value(), QString()) << "the password was the former clerk's";
    screen.name = u"someone"_s;
    EXPECT_EQ(read(preferences, settings::signInName), u"someone"_s);
}

TEST_F(SignInFlowTest, StaysInTheBackOffice)
{
    for (const QString &home : {app->auth.loginURL().toString(), u"about:blank"_s})
        EXPECT_TRUE(web.delegate.allows(QUrl(home))) << home.toStdString();
    for (const QString &other : {u"http://127.0.0.1.example.com/staff/login.php"_s, u"http://example.com/?127.0.0.1"_s,
                                 u"http://localhost/staff/login.php"_s})
        EXPECT_FALSE(web.delegate.allows(QUrl(other))) << other.toStdString();
    web.delegate.onFinished(app->auth.loginURL());
    EXPECT_EQ(app->auth.currentURL.value(), app->auth.loginURL().toString());
}

TEST_F(SignInFlowTest, LooksAtAPageAsSoonAsItHasLoaded)
{
    bool shown = false;
    web.answer = [&shown](const QString &) { return shown; };
    const auto before = clock.elapsed();
    auto wait = app->auth.waitFor(u"shown"_s, 40s);
    shown = true;
    web.delegate.onFinished(app->auth.loginURL());
    EXPECT_EQ(web.evaluated.count(u"shown"_s), 1) << "not inside the page's own call";
    EXPECT_TRUE(runTask(std::move(wait), &clock));
    EXPECT_EQ(clock.elapsed(), before);
}

TEST_F(SignInFlowTest, WaitsForNoPageThatWasReplaced)
{
    showPage(true, true);
    const auto replace = [](DesklineAuth &auth) { auth.load(auth.loginURL()); };
    const auto forget = [](DesklineAuth &auth) { auth.clear(); };
    for (const std::function<void(DesklineAuth &)> &act : {std::function(replace), std::function(forget)}) {
        web.answer = [&, shown = false](const QString &) mutable { return std::exchange(shown, true); };
        EXPECT_TRUE(runTask(app->auth.waitFor(u"shown"_s, 40s), &clock));
        bool asked = false;
        web.answer = [&](const QString &) {
            if (!std::exchange(asked, true))
                act(app->auth);
            return true;
        };
        EXPECT_FALSE(runTask(app->auth.waitFor(u"shown"_s, 40s), &clock));
    }
}

} // namespace parcelory::test
