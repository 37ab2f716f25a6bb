#pragma once

#include "core/Platform.h"
#include "core/SerialQueue.h"
#include "core/Task.h"

namespace parcelory {

/// A clerk's back office sign-in.
struct Credentials {
    QString user;
    QString password;
};

/// The clerk's remembered sign-in: name and password in the secret store, the "remember" flag in the preferences. The
/// store may block, so a separate thread calls it, in call order.
class SavedCredentials {
public:
    static const QString userAccount; ///< in the secret store
    static const QString passwordAccount;

    explicit SavedCredentials(Platform &platform);

    /// The stored credentials, even if "remember" is off; missing items are empty.
    Task<Credentials> stored();
    /// True if "remember" is on and a password is stored.
    Task<bool> areUsable();
    Task<> save(Credentials credentials);
    Task<> forget();

private:
    Platform &m_platform;
    SerialQueue m_queue;
};

} // namespace parcelory
