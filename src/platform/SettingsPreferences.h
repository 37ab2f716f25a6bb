#pragma once

#include "core/ports/Preferences.h"

#include <QSettings>

#include <functional>
#include <memory>
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
    bool synchronize() override;

private:
    using Open = std::function<std::unique_ptr<QSettings>()>;
    explicit SettingsPreferences(Open open);

    const Open m_open;
    mutable std::mutex m_access;
    const std::unique_ptr<QSettings> m_settings; ///< of the thread whose event loop writes changes
};

} // namespace parcelory
