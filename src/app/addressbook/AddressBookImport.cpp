#include "app/addressbook/AddressBook.h"

#include "addressbook/ImportProgress.h"
#include "addressbook/LocalAddressStore.h"
#include "app/records/CopyRecords.h"
#include "core/AppError.h"
#include "core/PostalContact.h"
#include "core/Progress.h"
#include "core/StatusKind.h"
#include "core/Task.h"

#include <QMetaObject>
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

/// Imports from a source, unless an import is running; on failure and when canceled the book is unchanged.
Task<> AddressBook::importFrom(Source source)
{
    if (importing)
        co_return;
    importing = true;
    m_cancel = {};
    const auto done = qScopeGuard([this] { importing = false; });
    try {
        const std::optional<ReadAddresses> read = co_await (this->*source)();
        if (read) {
            co_await copyRecordsBefore(m_app, CopyReason::beforeImport, m_cancel);
            co_await mergeAll(*read);
        }
    } catch (const ImportCanceled &canceled) { // as the clerk wanted
        setStatus(StatusKind::failure, canceled.description());
    } catch (const AppError &error) {
        setStatus(StatusKind::failure, m_app.recorded(importContext, error, Popup::no));
    }
}

/// Shows how many addresses were read so far; the returned callback runs on the reading thread.
Progress AddressBook::followImport(QString reading)
{
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

Task<std::optional<ReadAddresses>> AddressBook::readEndicia()
{
    QString path = LocalAddressStore::endiciaPlistURL(m_app.platform.dataFolder).value_or(QString());
    if (path.isEmpty())
        path = co_await m_app.platform.prompts.openFile(u"Pick Endicia's importedAddresses.plist"_s,
                                                        u"Property lists (*.plist)"_s);
    if (path.isEmpty())
        co_return std::nullopt;
    const QList<PostalContact> contacts =
        co_await onPool([path, progress = followImport(u"Reading the Endicia address list…"_s)] {
            return LocalAddressStore::importEndicia(path, progress);
        });
    co_return ReadAddresses{.contacts = contacts, .exported = {}, .skipped = {}};
}

Task<std::optional<ReadAddresses>> AddressBook::readVCard()
{
    const QString path =
        co_await m_app.platform.prompts.openFile(u"Pick a vCard export (.vcf)"_s, u"vCard files (*.vcf *.vcard)"_s);
    if (path.isEmpty())
        co_return std::nullopt;
    const ReadAddresses read = co_await onPool([path, progress = followImport(u"Parsing vCard…"_s)] {
        return LocalAddressStore::importVCard(path, progress);
    });
    co_return read;
}

Task<std::optional<ReadAddresses>> AddressBook::readContacts()
{
    setStatus(StatusKind::progress, u"Asking macOS for Contacts access…"_s);
    const bool allowed = co_await m_app.appleContacts.requestAccess(m_cancel);
    requireNotCanceled(m_cancel);
    if (!allowed)
        throw AppError(u"Contacts access denied — grant it in System Settings → Privacy → Contacts."_s);
    const QList<PostalContact> contacts = co_await m_app.appleContacts.all(followImport(u"Reading Apple Contacts…"_s));
    co_return ReadAddresses{.contacts = contacts, .exported = {}, .skipped = {}};
}

/// A company without a person gets the company as its name: a label needs a name, and the merge would take all
/// companies of a building for one. An entry of our own export stays as it is.
Task<> AddressBook::mergeAll(ReadAddresses read)
{
    const QStringList skipped = read.skipped;
    const LocalAddressStore::Merged merged =
        co_await m_queue.run([&store = m_app.addressBook, read, cancel = m_cancel]() mutable {
            for (PostalContact &contact : read.contacts) {
                if (contact.name.isEmpty())
                    contact.name = contact.company;
            }
            return store.add(read, cancel);
        });
    changes = QList<BookChange>(); // to restore an entry could undo a part of the import
    co_await load();
    const bool isReadable = unreadable.value().isEmpty();
    QString summary = u"Imported %1 addresses (%2 duplicates skipped) — "_s.arg(merged.imported).arg(merged.skipped) +
                      (isReadable ? u"%1 total."_s.arg(m_contacts.size()) : unreadable.value());
    if (!skipped.isEmpty()) {
        const qsizetype count = skipped.size();
        const QString cards =
            count == 1 ? u"1 incomplete card skipped: "_s : u"%1 incomplete cards skipped: "_s.arg(count);
        m_app.recorded(importContext, AppError(cards + listed(skipped, 100)), Popup::no);
        summary += u" ("_s + cards + listed(skipped, 5) + u')';
    }
    setStatus(isReadable ? StatusKind::success : StatusKind::failure, summary);
}

} // namespace parcelory
