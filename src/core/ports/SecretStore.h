#pragma once

#include <QString>

#include <optional>

namespace parcelory {

/// Secrets by account name, under the program's own service name. May be called from any thread; may block (a locked
/// key ring asks for its password), so the main thread reads it through onPool.
class SecretStore {
public:
    static constexpr auto service = "com.corvallon.parcelory";

    virtual ~SecretStore() = default;

    /// Nothing if the item is missing, cannot be read or is not UTF-8. An empty text is a value.
    virtual std::optional<QString> get(const QString &account) = 0;
    /// Replaces the item; a failure is silent.
    virtual void set(const QString &value, const QString &account) = 0;
};

} // namespace parcelory
