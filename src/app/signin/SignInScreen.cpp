#include "app/signin/SignInScreen.h"

#include "app/AppState.h"
#include "backoffice/SavedCredentials.h"
#include "core/SettingsKeys.h"
#include "core/Task.h"
#include "core/ports/Preferences.h"

namespace parcelory {

SignInScreen::SignInScreen(AppState &app) : m_app(app)
{
    Preferences &preferences = app.platform.preferences;
    name = read(preferences, settings::signInName);
    remember = read(preferences, settings::desklineRemember);
    m_notifiers.push_back(
        name.addNotifier([this, &preferences] { write(preferences, settings::signInName, name.value()); }));
    m_notifiers.push_back(remember.addNotifier(
        [this, &preferences] { write(preferences, settings::desklineRemember, remember.value()); }));
}

Task<> SignInScreen::appear()
{
    takeRemember();
    password = QString(); // never show another clerk's password
    const QString shown = name;
    const Credentials stored = co_await m_app.credentials.stored();
    if (m_app.flow != AppFlow::login)
        co_return;
    if (name.value() == shown && password.value().isEmpty()) { // the clerk has not typed meanwhile
        name = stored.user.isEmpty() ? shown : stored.user;
        password = stored.password;
    }
    co_await m_app.attemptAutoLogin();
    takeRemember();
}

Task<> SignInScreen::signIn()
{
    co_await m_app.signIn(name, password, remember);
    takeRemember();
}

/// A rejected password turns the switch off.
void SignInScreen::takeRemember()
{
    remember = read(m_app.platform.preferences, settings::desklineRemember);
}

} // namespace parcelory
