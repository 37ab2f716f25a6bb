#include "app/addressbook/AddressBook.h"

#include "addressbook/ImportProgress.h"
#include "addressbook/LocalAddressStore.h"
#include "core/AppError.h"
#include "core/PostalContact.h"
#include "core/Progress.h"
#include "core/StatusKind.h"
#include "core/Task.h"

#include <QScopeGuard>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString importContext = u"Address Book Import"_s;

} // namespace

/// Shows how many addresses were read so far; the returned callback runs on the reading thread.
Progress AddressBook::followImport(QString reading)
{
    m_cancel = {};
    setStatus(StatusKind::progress, reading);
    return Progress(m_cancel, [this, reading, cancel = m_cancel](qint64 addresses, qint64) {
        QMetaObject::invokeMethod(
            this,
            [this, reading, addresses, cancel] {
                if (importing && !cancel.isCanceled())
                    setStatus(StatusKind::progress, reading + u' ' + QString::number(addresses));
            },
            Qt::QueuedConnection);
    });
}

/// Reads a source on the pool and merges its contacts; on failure the book is unchanged.
Task<> AddressBook::importFrom(Reader reader, QString reading)
{
    try {
        const QList<PostalContact> contacts =
            co_await onPool([reader, progress = followImport(reading)] { return reader(progress); });
        co_await mergeAll(contacts);
    } catch (const ImportCanceled &canceled) { // as the clerk wanted
        setStatus(StatusKind::failure, canceled.description());
    } catch (const AppError &error) {
        setStatus(StatusKind::failure, m_app.recorded(importContext, error, Popup::no));
    }
}

Task<> AddressBook::mergeAll(QList<PostalContact> contacts)
{
    const LocalAddressStore::Merged merged = co_await onPool(m_app.addressBook, &LocalAddressStore::merge, contacts);
    deleted = std::nullopt;
    co_await load();
    setStatus(StatusKind::success, u"Imported %1 addresses (%2 duplicates skipped) — %3 total."_s.arg(merged.imported)
                                       .arg(merged.skipped)
                                       .arg(m_contacts.size()));
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
    co_await importFrom([path](Progress progress) { return LocalAddressStore::importEndicia(path, progress); },
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
    co_await importFrom([path](Progress progress) { return LocalAddressStore::importVCard(path, progress); },
                        u"Parsing vCard…"_s);
}

Task<> AddressBook::importContacts()
{
    if (importing)
        co_return;
    importing = true;
    const auto done = qScopeGuard([this] { importing = false; });
    m_cancel = {};
    setStatus(StatusKind::progress, u"Asking macOS for Contacts access…"_s);
    const bool allowed = co_await m_app.appleContacts.requestAccess();
    if (!allowed) {
        const AppError denied(u"Contacts access denied — grant it in System Settings → Privacy → Contacts."_s);
        setStatus(StatusKind::failure, m_app.recorded(importContext, denied, Popup::no));
        co_return;
    }
    try {
        const QList<PostalContact> contacts =
            co_await m_app.appleContacts.all(followImport(u"Reading Apple Contacts…"_s));
        co_await mergeAll(contacts);
    } catch (const ImportCanceled &canceled) { // as the clerk wanted
        setStatus(StatusKind::failure, canceled.description());
    } catch (const AppError &error) {
        setStatus(StatusKind::failure, m_app.recorded(importContext, error, Popup::no));
    }
}

} // namespace parcelory
