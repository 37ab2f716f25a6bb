#pragma once

#include "core/Setting.h"

#include <QStringList>
#include <QVariant>

#include <type_traits>

namespace parcelory {

/// The user's preference store: named values. May be called from any thread. core/SettingsKeys.h lists keys, types and
/// defaults; use read() and write() below.
class Preferences {
public:
    virtual ~Preferences() = default;

    /// Invalid if nothing is stored under the key.
    virtual QVariant value(const QString &key) const = 0;
    virtual void setValue(const QString &key, const QVariant &value) = 0;
    /// Stores what was changed and reads what other programs have stored; false if the store cannot be written, so that
    /// changes last until the program ends. May block.
    [[nodiscard]] virtual bool synchronize() = 0;
};

/// The stored value, or `fallback` if the value is missing or of another type.
template <class T>
T read(const Preferences &preferences, const Setting<T> &setting, const std::type_identity_t<T> &fallback)
{
    QVariant stored = preferences.value(setting.key);
    if constexpr (std::is_same_v<T, bool>) {
        // Text stores (INI files) keep booleans as these two words.
        const QString word = stored.toString();
        if (stored.typeId() != QMetaType::Bool && word != QLatin1StringView("true") &&
            word != QLatin1StringView("false"))
            return fallback;
    }
    return stored.convert(QMetaType::fromType<T>()) ? stored.value<T>() : fallback;
}

template <class T>
T read(const Preferences &preferences, const Setting<T> &setting)
{
    return read(preferences, setting, setting.fallback);
}

template <class T>
void write(Preferences &preferences, const Setting<T> &setting, const std::type_identity_t<T> &value)
{
    preferences.setValue(setting.key, QVariant::fromValue(value));
}

} // namespace parcelory
