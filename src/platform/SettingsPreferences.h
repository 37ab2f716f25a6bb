#pragma once

#include "core/ports/Preferences.h"

#include <QSettings>

#include <mutex>

namespace parcelory {

/// Preferences in the platform's per-user store, or in an INI file.
class SettingsPreferences : public Preferences {
public:
    SettingsPreferences(); ///< the user's store
    explicit SettingsPreferences(const QString &iniFile);

    QVariant value(const QString &key) const override;
    void setValue(const QString &key, const QVariant &value) override;

private:
    mutable std::mutex m_access;
    QSettings m_settings;
};

} // namespace parcelory
