#include "app/AppState.h"

namespace parcelory {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto pageWait = 40s;

const QString pageStopped = u"The sign-in page stopped working — try again."_s;

/// Why a sign-in failed; `formResult` is fillLogin's answer.
QString signInFailure(const QString &formResult)
{
    if (formResult == u"submitted")
        return u"Login failed — check the email and password."_s;
    return u"Could not find the login form ("_s + formResult + u")."_s;
}

} // namespace

Task<> AppState::signIn(QString user, QString pass, bool remember)
{
    loginBusy = true;
    loginError = std::nullopt;
    const auto fail = [this](const QString &reason) {
        loginBusy = false;
        loginError = reason;
    };
    const bool reachable = co_await auth.isReachable(5s);
    if (!reachable) {
        fail(u"Can't reach deskline — connect to the VPN and try again."_s);
        co_return;
    }
    auth.clear(); // whoever was signed in here before, the form comes up and the password is asked for
    try {
        auth.load(auth.loginURL());
    } catch (const AppError &error) {
        fail(error.description());
        co_return;
    }
    const bool formShown = co_await auth.waitFor(DesklineAuth::loginFormProbe, pageWait);
    if (auth.hasCrashed()) {
        fail(pageStopped);
        co_return;
    }
    if (!formShown) {
        fail(u"Deskline is responding slowly — the login page didn't load after 40 seconds. Try again in a moment."_s);
        co_return;
    }
    const QString result = co_await auth.fillLogin(user, pass);
    const bool ok = co_await auth.waitFor(DesklineAuth::signedInProbe, pageWait);
    loginBusy = false;
    if (!ok && auth.hasCrashed()) { // says nothing about the password
        loginError = pageStopped;
        co_return;
    }
    if (!ok) {
        loginError = signInFailure(result);
        const bool saved = co_await hasSavedCredentials();
        if (result == u"submitted" && saved)
            co_await credentials.forget();
        co_return;
    }
    ++m_signIns;
    signedInUser = user;
    flow = AppFlow::main;
    if (remember)
        co_await credentials.save({user, pass});
}

Task<bool> AppState::hasSavedCredentials()
{
    const bool usable = co_await credentials.areUsable();
    co_return usable;
}

Task<> AppState::attemptAutoLogin()
{
    if (autoLoginTried)
        co_return;
    const bool saved = co_await hasSavedCredentials();
    if (!saved || autoLoginTried || flow != AppFlow::login || loginBusy)
        co_return;
    autoLoginTried = true;
    const Credentials stored = co_await credentials.stored();
    if (flow == AppFlow::login && !loginBusy && !stored.user.isEmpty() && !stored.password.isEmpty())
        co_await signIn(stored.user, stored.password, true);
}

void AppState::signOut()
{
    ++m_signIns;
    flow = AppFlow::login;
    signedInUser = QString();
    loginError = std::nullopt;
    scanStatus = QString();
    scannedInvoice = std::nullopt; // the next clerk has not asked for it
    auth.clear();
    spawn([this] { return credentials.forget(); });
}

} // namespace parcelory
