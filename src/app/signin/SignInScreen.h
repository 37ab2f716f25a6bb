#pragma once

#include "app/AppState.h"
#include "core/Observable.h"

namespace parcelory {

/// The sign-in screen's input. The outcome is in AppState (loginBusy, loginError, flow). Lives as long as AppState.
class SignInScreen : public Observable {
public:
    explicit SignInScreen(AppState &app);

    Observed<QString> name{this};     ///< email or user name; stored in the preferences
    Observed<QString> password{this}; ///< stored only in the secret store, and only if `remember` is on
    Observed<bool> remember{this, false};

    /// Called when the screen appears: fills in the saved credentials and signs in with them, once per run.
    Task<> appear();
    Task<> signIn();

private:
    void takeRemember();

    AppState &m_app;
    std::vector<QPropertyNotifier> m_notifiers;
};

} // namespace parcelory
