#include "app/addressbook/AddressBook.h"

#include "addressbook/ImportProgress.h"
#include "addressbook/LocalAddressStore.h"
#include "core/AppError.h"
#include "core/PostalContact.h"
#include "core/Progress.h"
#include "core/StatusKind.h"
#include "core/Task.h"

#include <QScopeGuard>

#include <algorithm>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString importContext = u"Address Book Import"_s;

/// "Jo Doe, Harbor Books, … and 3 more".
QString listed(const QStringList &names, qsizetype most)
{
    const qsizetype more = names.size() - most;
    return names.first(std::min(most, names.size())).join(u", "_s) +
           (more > 0 ? u" and %1 more"_s.arg(more) : QString());
}

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
        const ReadAddresses read =
            co_await onPool([reader, progress = followImport(reading)] { return reader(progress); });
        co_await mergeAll(read);
    } catch (const ImportCanceled &canceled) { // as the clerk wanted
        setStatus(StatusKind::failure, canceled.description());
    } catch (const AppError &error) {
        setStatus(StatusKind::failure, m_app.recorded(importContext, error, Popup::no));
    }
}

/// A company without a person gets the company as its name: a label needs a name, and the merge would take all
/// companies of a building for one. A contact of our own export stays as it is.
Task<> AddressBook::mergeAll(ReadAddresses read)
{
    const LocalAddressStore::Merged merged = co_await onPool([&store = m_app.addressBook, read]() mutable {
        if (read.isExport)
            return store.restore(read.contacts);
        for (PostalContact &contact : read.contacts) {
            if (contact.name.isEmpty())
                contact.name = contact.company;
        }
        return store.merge(read.contacts);
    });
    changes = QList<BookChange>(); // to restore an entry could undo a part of the import
    co_await load();
    QString summary = u"Imported %1 addresses (%2 duplicates skipped) — %3 total."_s.arg(merged.imported)
                          .arg(merged.skipped)
                          .arg(m_contacts.size());
    if (!read.skipped.isEmpty()) {
        const qsizetype count = read.skipped.size();
        const QString skipped =
            count == 1 ? u"1 incomplete card skipped: "_s : u"%1 incomplete cards skipped: "_s.arg(count);
        m_app.recorded(importContext, AppError(skipped + listed(read.skipped, 100)), Popup::no);
        summary += u" ("_s + skipped + listed(read.skipped, 5) + u')';
    }
    if (unreadable.value().isEmpty())
        setStatus(StatusKind::success, summary);
}

Task<> AddressBook::importEndicia()
{
    if (importing)
        co_return;
    importing = true;
    const auto done = qScopeGuard([this] { importing = false; });
    QString path = LocalAddressStore::endiciaPlistURL(m_app.platform.dataFolder).value_or(QString());
    if (path.isEmpty())
        path = co_await m_app.platform.prompts.openFile(u"Pick Endicia's importedAddresses.plist"_s,
                                                        u"Property lists (*.plist)"_s);
    if (path.isEmpty())
        co_return;
    const auto read = [path](Progress progress) {
        return ReadAddresses{.contacts = LocalAddressStore::importEndicia(path, progress), .skipped = {}};
    };
    co_await importFrom(read, u"Reading the Endicia address list…"_s);
}

Task<> AddressBook::importVCard()
{
    if (importing)
        co_return;
    importing = true;
    const auto done = qScopeGuard([this] { importing = false; });
    const QString path =
        co_await m_app.platform.prompts.openFile(u"Pick a vCard export (.vcf)"_s, u"vCard files (*.vcf *.vcard)"_s);
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
    try {
        const bool allowed = co_await m_app.appleContacts.requestAccess(m_cancel);
        if (!allowed)
            throw AppError(u"Contacts access denied — grant it in System Settings → Privacy → Contacts."_s);
        const QList<PostalContact> contacts =
            co_await m_app.appleContacts.all(followImport(u"Reading Apple Contacts…"_s));
        co_await mergeAll({.contacts = contacts, .skipped = {}});
    } catch (const ImportCanceled &canceled) { // as the clerk wanted
        setStatus(StatusKind::failure, canceled.description());
    } catch (const AppError &error) {
        setStatus(StatusKind::failure, m_app.recorded(importContext, error, Popup::no));
    }
}

} // namespace parcelory
