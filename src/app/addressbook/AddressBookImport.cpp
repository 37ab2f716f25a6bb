#include "app/addressbook/AddressBook.h"

#include <QScopeGuard>

namespace parcelory {
using namespace Qt::StringLiterals;

/// Shows how many addresses were read so far; called on the reading thread.
ImportProgress::Report AddressBook::followImport(QString reading)
{
    m_cancelled = false;
    status = reading;
    return [this, reading](qsizetype addresses) {
        QMetaObject::invokeMethod(
            this,
            [this, reading, addresses] {
                if (importing && !m_cancelled)
                    status = reading + u' ' + QString::number(addresses);
            },
            Qt::QueuedConnection);
        return !m_cancelled;
    };
}

/// Reads a source on the pool and merges what it holds; a failure leaves the book as it was.
Task<> AddressBook::importFrom(Reader reader, QString reading)
{
    try {
        auto work = onPool([reader, report = followImport(reading)] { return reader(report); });
        const QList<PostalContact> contacts = co_await work;
        co_await mergeAll(contacts);
    } catch (const AppError &error) {
        status = error.description();
    }
}

Task<> AddressBook::mergeAll(QList<PostalContact> contacts)
{
    auto merging = onPool([&store = m_app.addressBook, contacts] { return store.merge(contacts); });
    const LocalAddressStore::Merged merged = co_await merging;
    deleted = std::nullopt;
    co_await load();
    status = u"Imported %1 addresses (%2 duplicates skipped) — %3 total."_s.arg(merged.imported)
                 .arg(merged.skipped)
                 .arg(m_contacts.size());
}

Task<> AddressBook::importEndicia()
{
    if (importing)
        co_return;
    importing = true;
    const auto done = qScopeGuard([this] { importing = false; });
    QString path = LocalAddressStore::endiciaPlistURL(m_app.platform.dataFolder).value_or(QString());
    if (path.isEmpty())
        path = co_await m_app.platform.prompts.openFile(u"Pick Endicia's importedAddresses.plist"_s);
    if (path.isEmpty())
        co_return;
    co_await importFrom([path](auto report) { return LocalAddressStore::importEndicia(path, report); },
                        u"Reading the Endicia address list…"_s);
}

Task<> AddressBook::importVCard()
{
    if (importing)
        co_return;
    importing = true;
    const auto done = qScopeGuard([this] { importing = false; });
    const QString path = co_await m_app.platform.prompts.openFile(u"Pick a vCard export (.vcf)"_s);
    if (path.isEmpty())
        co_return;
    co_await importFrom([path](auto report) { return LocalAddressStore::importVCard(path, report); },
                        u"Parsing vCard…"_s);
}

Task<> AddressBook::importContacts()
{
    if (importing)
        co_return;
    importing = true;
    const auto done = qScopeGuard([this] { importing = false; });
    m_cancelled = false;
    status = u"Asking macOS for Contacts access…"_s;
    const bool allowed = co_await m_app.appleContacts.requestAccess();
    if (!allowed) {
        status = u"Contacts access denied — grant it in System Settings → Privacy → Contacts."_s;
        co_return;
    }
    try {
        const QList<PostalContact> contacts =
            co_await m_app.appleContacts.all(followImport(u"Reading Apple Contacts…"_s));
        co_await mergeAll(contacts);
    } catch (const AppError &error) {
        status = error.description();
    }
}

} // namespace parcelory
