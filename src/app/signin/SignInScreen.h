#pragma once

#include "app/AppState.h"

namespace parcelory {

/// The sign-in screen's input. The outcome is in AppState (loginBusy, loginError, flow). Lives as long as AppState.
class SignInScreen {
public:
    explicit SignInScreen(AppState &app);

    QProperty<QString> name;     ///< email or user name; stored in the preferences
    QProperty<QString> password; ///< stored only in the secret store, and only if `remember` is on
    QProperty<bool> remember{false};

    /// Called when the screen appears: fills in the saved credentials and signs in with them, once per run.
    Task<> appear();
    Task<> signIn();

private:
    AppState &m_app;
    std::vector<QPropertyNotifier> m_notifiers;
};

} // namespace parcelory
