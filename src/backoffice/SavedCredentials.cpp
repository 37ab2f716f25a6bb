#include "backoffice/SavedCredentials.h"

#include "core/Platform.h"
#include "core/SettingsKeys.h"
#include "core/Task.h"
#include "core/ports/Preferences.h"

namespace parcelory {
using namespace Qt::StringLiterals;

const QString SavedCredentials::userAccount = u"deskline.username"_s;
const QString SavedCredentials::passwordAccount = u"deskline.password"_s;

SavedCredentials::SavedCredentials(Platform &platform) : m_platform(platform) {}

Task<Credentials> SavedCredentials::stored()
{
    co_return co_await m_queue.run([&store = m_platform.secrets] {
        return Credentials{store.get(userAccount).value_or(QString()), store.get(passwordAccount).value_or(QString())};
    });
}

Task<bool> SavedCredentials::areUsable()
{
    const Credentials found = co_await stored();
    co_return read(m_platform.preferences, settings::desklineRemember) && !found.password.isEmpty();
}

Task<> SavedCredentials::save(Credentials credentials)
{
    write(m_platform.preferences, settings::desklineRemember, true);
    co_await m_queue.run([&store = m_platform.secrets, credentials] {
        store.set(credentials.user, userAccount);
        store.set(credentials.password, passwordAccount);
    });
}

Task<> SavedCredentials::forget()
{
    write(m_platform.preferences, settings::desklineRemember, false);
    co_await m_queue.run([&store = m_platform.secrets] {
        store.set(QString(), userAccount);
        store.set(QString(), passwordAccount);
    });
}

} // namespace parcelory
