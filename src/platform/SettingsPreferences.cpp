#include "platform/SettingsPreferences.h"

#include <mutex>

namespace parcelory {
using namespace Qt::StringLiterals;

SettingsPreferences::SettingsPreferences() : m_settings(u"Corvallon"_s, u"parcelory"_s) {}

SettingsPreferences::SettingsPreferences(const QString &iniFile) : m_settings(iniFile, QSettings::IniFormat) {}

namespace {

/// On macOS, Qt stores a slash as the dot of a defaults key and replaces a dot with another character.
QString stored(QString key)
{
#ifdef Q_OS_MACOS
    key.replace(u'.', u'/');
#endif
    return key;
}

} // namespace

QVariant SettingsPreferences::value(const QString &key) const
{
    const std::lock_guard lock(m_access);
    return m_settings.value(stored(key));
}

void SettingsPreferences::setValue(const QString &key, const QVariant &value)
{
    const std::lock_guard lock(m_access);
    m_settings.setValue(stored(key), value);
}

} // namespace parcelory
