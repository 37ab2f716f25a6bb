#pragma once

#include "app/AppState.h"
#include "backoffice/SavedCredentials.h"

#include <functional>
#include <optional>

namespace parcelory {

/// Signs in to the back office. The outcome is AppState's flow and loginError.
class SignInFlow {
public:
    explicit SignInFlow(AppState &app) : m_app(app) {}
    ~SignInFlow();

    /// AppState::signIn().
    Task<> signIn(QString user, QString pass, bool remember);
    /// AppState::cancelSignIn().
    void cancel();
    /// AppState::attemptAutoLogin().
    Task<> signInAutomatically();
    /// AppState::renewSession().
    Task<bool> renewSession(std::function<bool()> isGivenUp);

private:
    /// Why a sign-in failed.
    struct Failure {
        QString reason;
        bool isRejection = false; ///< the back office did not accept the password
    };
    Task<std::optional<Failure>> enter(Credentials credentials);
    Task<> forgetRejected();
    Task<bool> waitFor(QString probe);
    void countDown(int seconds);

    AppState &m_app;
    int m_attempt = 0;  ///< incremented when a sign-in starts and when it is canceled
    quint64 m_tick = 0; ///< a timer
};

} // namespace parcelory
