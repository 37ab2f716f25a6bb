#pragma once

#include "core/ports/Preferences.h"

#include <QSettings>

#include <mutex>

namespace parcelory {

/// Preferences in the platform's per-user store, or in an INI file. A pipe, a folder or a huge file in place of the
/// file is renamed: QSettings would read it before the window opens.
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
