#pragma once

#include "core/ports/SecretStore.h"

#include <QHash>

#include <mutex>

namespace parcelory {

/// Secrets in memory, gone when the program ends.
class MemorySecrets : public SecretStore {
public:
    std::optional<QString> get(const QString &account) override
    {
        const std::lock_guard lock(m_access);
        const auto found = m_values.constFind(account);
        return found == m_values.cend() ? std::nullopt : std::optional(*found);
    }
    void set(const QString &value, const QString &account) override
    {
        const std::lock_guard lock(m_access);
        m_values[account] = value;
    }

private:
    std::mutex m_access;
    QHash<QString, QString> m_values;
};

} // namespace parcelory
