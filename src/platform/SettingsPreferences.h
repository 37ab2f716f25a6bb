#pragma once

#include "core/SerialQueue.h"
#include "core/ports/Preferences.h"

#include <QHash>
#include <QSettings>

#include <functional>
#include <memory>
#include <mutex>

namespace parcelory {

/// Preferences in the platform's per-user store, or in an INI file. A pipe, a folder or a huge file in place of the
/// file is renamed: QSettings would read it before the window opens. Values are in memory; a thread of its own writes
/// changes, so that neither value() nor setValue() waits for the disk.
class SettingsPreferences : public Preferences {
public:
    SettingsPreferences(); ///< the user's store
    explicit SettingsPreferences(const QString &iniFile);

    QVariant value(const QString &key) const override;
    void setValue(const QString &key, const QVariant &value) override;
    bool synchronize() override;

private:
    using Open = std::function<std::unique_ptr<QSettings>()>;
    using Values = QHash<QString, QVariant>;
    explicit SettingsPreferences(Open open);

    const Open m_open;
    std::mutex m_disk;           ///< while the store is written and read
    mutable std::mutex m_access; ///< never held during a wait for the disk
    Values m_values;
    Values m_changed; ///< what the store has not taken yet
    bool m_isPosted = false;
    SerialQueue m_queue;
};

} // namespace parcelory
