#pragma once

#include "app/AppState.h"

namespace parcelory {

/// The sign-in screen: what is typed there. What becomes of it stands in AppState (loginBusy, loginError, flow). Lives
/// as long as AppState.
class SignInScreen {
public:
    explicit SignInScreen(AppState &app);

    QProperty<QString> name;     ///< e-mail or user name; kept in the preferences
    QProperty<QString> password; ///< kept nowhere but in the secret store, and only when that is wanted
    QProperty<bool> remember{false};

    /// The screen has come up: fills in what is remembered and signs in with it, once a run.
    Task<> appear();
    Task<> signIn();

private:
    AppState &m_app;
    std::vector<QPropertyNotifier> m_notifiers;
};

} // namespace parcelory
