#pragma once

#include "addressbook/ImportProgress.h"
#include "core/JsonFile.h"
#include "core/PostalContact.h"
#include "core/Task.h"
#include "core/ports/Clock.h"
#include "core/ports/ContactsSource.h"

#include <QDir>

#include <memory>

namespace parcelory {

/// The addresses of the contacts of macOS. The system is known to hang there, so reading has a timeout.
class ContactsAddressProvider {
public:
    static constexpr auto timeout = std::chrono::seconds(170);
    static constexpr auto stepTimeout = std::chrono::seconds(15); ///< of a step of the diagnostics

    /// `source`: null on systems without such contacts; shared, because a hanging read continues to use it. `folder`:
    /// our data folder, for a copy of the last result.
    ContactsAddressProvider(std::shared_ptr<ContactsSource> source, Clock &clock, const QDir &folder);

    bool isAvailable() const { return m_source != nullptr; }

    /// Whether the contacts may be read; the system asks the user the first time. False without a source. Throws
    /// AddressLoadTimeout and ImportCanceled.
    Task<bool> requestAccess(CancelToken cancel = {});
    /// Every address of every contact, sorted by name. Throws AddressLoadTimeout, ImportCanceled, and AppError with
    /// the system's text. `progress` is reported on another thread.
    Task<QList<PostalContact>> all(Progress progress = {});
    /// Tests each step of the access and returns a line for each.
    Task<QString> diagnostics();

    void flush() { m_cache.flush(); }

private:
    std::shared_ptr<ContactsSource> m_source;
    Clock &m_clock;
    JsonFile m_cache;
};

} // namespace parcelory
