#include "app/signin/SignInFlow.h"

#include "app/AppState.h"
#include "backoffice/SavedCredentials.h"
#include "core/AppError.h"
#include "core/Task.h"

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

Task<> SignInFlow::signIn(QString user, QString pass, bool remember)
{
    m_app.loginBusy = true;
    m_app.loginError = std::nullopt;
    const auto fail = [this](const QString &reason) {
        m_app.loginBusy = false;
        m_app.loginError = m_app.recorded(u"Sign-In"_s, AppError(reason), Popup::no);
    };
    const bool reachable = co_await m_app.auth.isReachable(5s);
    if (!reachable) {
        fail(u"Can't reach deskline — connect to the VPN and try again."_s);
        co_return;
    }
    m_app.auth.clear(); // end any earlier session, so that the form appears and checks the password
    try {
        m_app.auth.load(m_app.auth.loginURL());
    } catch (const AppError &error) {
        fail(error.description());
        co_return;
    }
    const bool formShown = co_await m_app.auth.waitFor(DesklineAuth::loginFormProbe, pageWait);
    if (m_app.auth.hasCrashed()) {
        fail(pageStopped);
        co_return;
    }
    if (!formShown) {
        fail(u"Deskline is responding slowly — the login page didn't load after 40 seconds. Try again in a moment."_s);
        co_return;
    }
    const QString result = co_await m_app.auth.fillLogin(user, pass);
    const bool ok = co_await m_app.auth.waitFor(DesklineAuth::signedInProbe, pageWait);
    m_app.loginBusy = false;
    if (!ok && m_app.auth.hasCrashed()) { // a crash says nothing about the password
        fail(pageStopped);
        co_return;
    }
    if (!ok) {
        fail(signInFailure(result));
        const bool saved = co_await m_app.hasSavedCredentials();
        if (result == u"submitted" && saved)
            co_await m_app.credentials.forget();
        co_return;
    }
    ++m_app.session;
    m_app.signedInUser = user;
    m_app.flow = AppFlow::main;
    if (remember)
        co_await m_app.credentials.save({user, pass});
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
