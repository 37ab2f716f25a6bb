#pragma once

#include "core/Platform.h"
#include "core/Task.h"

#include <QThreadPool>

namespace parcelory {

/// What signs a clerk in to the back office.
struct Credentials {
    QString user;
    QString password;
};

/// The clerk's remembered sign-in: name and password in the secret store, whether they are to be used in the
/// preferences. The store may block, so it is asked on a thread of its own, in the order of the calls.
class SavedCredentials {
public:
    static const QString userAccount; ///< in the secret store
    static const QString passwordAccount;

    explicit SavedCredentials(Platform &platform);

    /// What the store holds, whether it is to be used or not; missing items are empty.
    Task<Credentials> stored();
    /// "Remember me" was on, and a password is there.
    Task<bool> areUsable();
    Task<> save(Credentials credentials);
    Task<> forget();

private:
    Platform &m_platform;
    QThreadPool m_thread; ///< one thread, so that operations keep their order
};

} // namespace parcelory
