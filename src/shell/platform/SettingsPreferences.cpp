#include "shell/platform/SettingsPreferences.h"

namespace parcelory {
using namespace Qt::StringLiterals;

SettingsPreferences::SettingsPreferences() : m_settings(u"Corvallon"_s, u"Parcelory"_s) {}

SettingsPreferences::SettingsPreferences(const QString &iniFile) : m_settings(iniFile, QSettings::IniFormat) {}

QVariant SettingsPreferences::value(const QString &key) const
{
    const std::lock_guard lock(m_access);
    return m_settings.value(key);
}

void SettingsPreferences::setValue(const QString &key, const QVariant &value)
{
    const std::lock_guard lock(m_access);
    m_settings.setValue(key, value);
}

} // namespace parcelory
