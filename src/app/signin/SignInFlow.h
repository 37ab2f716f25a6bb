#pragma once

#include "app/AppState.h"

namespace parcelory {

/// Signs in to the back office. The outcome is AppState's flow and loginError.
class SignInFlow {
public:
    explicit SignInFlow(AppState &app) : m_app(app) {}

    /// AppState::signIn().
    Task<> signIn(QString user, QString pass, bool remember);
    /// AppState::attemptAutoLogin().
    Task<> signInAutomatically();

private:
    AppState &m_app;
};

} // namespace parcelory
