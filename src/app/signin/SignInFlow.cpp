#include "app/signin/SignInFlow.h"

#include "app/AppState.h"
#include "backoffice/SavedCredentials.h"
#include "core/AppError.h"
#include "core/StaleCheck.h"
#include "core/Task.h"
#include "shell/ErrorLog.h"

#include <chrono>
#include <functional>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto pageWait = 40s;

const QString pageStopped = u"The sign-in page stopped working — try again."_s;

/// Why a sign-in failed; `formResult` is fillLogin's result.
QString signInFailure(const QString &formResult)
{
    if (formResult == u"submitted")
        return u"Login failed — check the email and password."_s;
    return u"Could not find the login form ("_s + formResult + u")."_s;
}

} // namespace

SignInFlow::~SignInFlow()
{
    m_app.platform.clock.cancel(m_tick);
}

void SignInFlow::countDown(int seconds)
{
    m_app.platform.clock.cancel(m_tick);
    if (seconds > 0)
        m_tick = m_app.platform.clock.after(1s, [this, seconds] { countDown(seconds - 1); });
    m_app.loginSecondsLeft = seconds; // last: who sees it may cancel
}

/// Waits for the page, and shows for how long at most.
Task<bool> SignInFlow::waitFor(QString probe)
{
    const auto isCanceled = staleCheck(m_attempt);
    countDown(int(std::chrono::seconds(pageWait).count()));
    const bool holds = co_await m_app.auth.waitFor(probe, pageWait);
    if (!isCanceled())
        countDown(0);
    co_return holds;
}

Task<> SignInFlow::signIn(QString user, QString pass, bool remember)
{
    ++m_attempt;
    const auto isCanceled = staleCheck(m_attempt);
    m_app.loginBusy = true;
    m_app.loginError = std::nullopt;
    std::optional<Failure> failure;
    const bool reachable = co_await m_app.auth.isReachable(5s);
    if (isCanceled())
        co_return;
    if (reachable)
        failure = co_await enter({user, pass});
    else
        failure = Failure{u"Can't reach deskline — connect to the VPN and try again."_s};
    if (isCanceled())
        co_return;
    m_app.loginBusy = false;
    if (failure) {
        m_app.loginError = m_app.recorded(u"Sign-In"_s, AppError(failure->reason), Popup::no);
        if (failure->isRejection)
            co_await forgetRejected();
        co_return;
    }
    ++m_app.session;
    m_app.signedInUser = user;
    m_app.flow = AppFlow::main;
    if (remember)
        co_await m_app.credentials.save({user, pass});
}

void SignInFlow::cancel()
{
    if (!m_app.loginBusy)
        return;
    ++m_attempt;
    m_app.auth.clear(); // the back office may have admitted the clerk already
    m_app.loginBusy = false;
    countDown(0);
}

/// Loads the sign-in page and fills in its form. Returns why that failed.
Task<std::optional<SignInFlow::Failure>> SignInFlow::enter(Credentials credentials)
{
    m_app.auth.clear(); // end any earlier session, so that the form appears and checks the password
    try {
        m_app.auth.load(m_app.auth.loginURL());
    } catch (const AppError &error) {
        co_return Failure{error.description()};
    }
    const auto isStopped = [&auth = m_app.auth, visit = m_app.auth.visit()] {
        return auth.hasCrashed() || auth.visit() != visit; // says nothing about the password
    };
    const bool formShown = co_await waitFor(DesklineAuth::loginFormProbe);
    if (isStopped())
        co_return Failure{pageStopped};
    if (!formShown)
        co_return Failure{
            u"Deskline is responding slowly — the login page didn't load after 40 seconds. Try again in a moment."_s};
    const QString result = co_await m_app.auth.fillLogin(credentials.user, credentials.password);
    const bool ok = co_await waitFor(DesklineAuth::signedInProbe);
    if (isStopped())
        co_return Failure{pageStopped};
    if (ok)
        co_return std::nullopt;
    co_return Failure{signInFailure(result), result == u"submitted"};
}

Task<> SignInFlow::forgetRejected()
{
    const bool saved = co_await m_app.hasSavedCredentials();
    if (saved)
        co_await m_app.credentials.forget();
}

Task<bool> SignInFlow::renewSession(std::function<bool()> isGivenUp)
{
    const bool saved = co_await m_app.hasSavedCredentials();
    const Credentials stored = co_await m_app.credentials.stored();
    if (!saved || isGivenUp() || stored.user != m_app.signedInUser.value())
        co_return false;
    const std::optional<Failure> failure = co_await enter(stored);
    if (isGivenUp())
        co_return false;
    if (!failure)
        co_return true;
    m_app.errors.record(u"Sign-In"_s, AppError(failure->reason), Popup::no);
    if (failure->isRejection)
        co_await forgetRejected();
    co_return false;
}

Task<> SignInFlow::signInAutomatically()
{
    if (m_app.autoLoginTried)
        co_return;
    const bool saved = co_await m_app.hasSavedCredentials();
    if (!saved || m_app.autoLoginTried || m_app.flow != AppFlow::login || m_app.loginBusy)
        co_return;
    m_app.autoLoginTried = true;
    const Credentials stored = co_await m_app.credentials.stored();
    if (m_app.flow == AppFlow::login && !m_app.loginBusy && !stored.user.isEmpty() && !stored.password.isEmpty())
        co_await signIn(stored.user, stored.password, true);
}

} // namespace parcelory
