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

/// The addresses among the contacts of macOS. The system has been seen to hang there, so nothing is waited for without
/// end.
class ContactsAddressProvider {
public:
    static constexpr auto timeout = std::chrono::seconds(170);
    static constexpr auto stepTimeout = std::chrono::seconds(15); ///< of the diagnostics

    static QString sourceName();

    /// `source`: null on systems without such contacts; shared, because a read that hangs goes on using it. `folder`:
    /// of our data, for a copy of what was read last.
    ContactsAddressProvider(std::shared_ptr<ContactsSource> source, Clock &clock, const QDir &folder);

    bool isAvailable() const { return m_source != nullptr; }

    /// Whether the contacts may be read; the system asks the user the first time. False without a source.
    Task<bool> requestAccess();
    /// Every address of every contact, by name. Throws AddressLoadTimeout, ImportCancelled, and AppError with the
    /// system's text. `report` is called on another thread.
    Task<QList<PostalContact>> all(ImportProgress::Report report = {});
    /// What works and what does not, a line for each step.
    Task<QString> diagnostics();

    void flush() { m_cache.flush(); }

private:
    std::shared_ptr<ContactsSource> m_source;
    Clock &m_clock;
    JsonFile m_cache;
};

} // namespace parcelory
