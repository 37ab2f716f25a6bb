#pragma once

#include "core/ports/SecretStore.h"

namespace parcelory {

/// The system's secret store: the Secret Service on Linux, the keychain on macOS. Calls run one at a time.
class Keychain : public SecretStore {
public:
    std::optional<QString> get(const QString &account) override;
    void set(const QString &value, const QString &account) override;
};

} // namespace parcelory
