#include "app/addressbook/AddressBook.h"

#include "addressbook/AddressFilter.h"
#include "addressbook/RecipientMatch.h"
#include "app/AppState.h"
#include "core/AppError.h"
#include "core/PostalContact.h"
#include "core/ShippoAddress.h"
#include "core/StatusKind.h"
#include "core/Task.h"
#include "core/Text.h"
#include "core/ports/Prompts.h"

#include <QScopeGuard>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Keeps the known value if the new value is blank.
QString orKnown(const QString &value, const QString &known)
{
    return value.trimmed().isEmpty() ? known : value;
}

QList<PostalContact> namelessLast(const QList<PostalContact> &contacts)
{
    QList<PostalContact> named, nameless;
    for (const PostalContact &contact : contacts)
        (contact.name.trimmed().isEmpty() ? nameless : named).append(contact);
    return named + nameless;
}

} // namespace

AddressBook::AddressBook(AppState &app) : m_app(app), m_isDraftEmpty(app.draftTo.value().isEmpty())
{
    connect(&app, &AppState::recipientToKeep, this,
            [this](const ShippoAddress &recipient) { spawn([=, this] { return keep(recipient); }); });
    connect(this, &AddressBook::contactsChanged, this, &AddressBook::changed);
    m_draftWatch = app.draftTo.addNotifier([this] {
        const ShippoAddress draft = m_app.draftTo;
        const bool isNext = std::exchange(m_isDraftEmpty, draft.isEmpty()) && !draft.isEmpty();
        m_parcel += isNext;
        if (isNext || (kept.value() && !draft.isEmpty() && draft != kept.value()->recipient))
            kept = std::nullopt;
    });
}

AddressBook::~AddressBook()
{
    m_app.platform.clock.cancel(m_retry);
}

/// Reads the book. If that fails, the list stays as it was and the reason is the status.
Task<> AddressBook::load()
{
    struct Loaded {
        LocalAddressStore::Book book;
        AddressFilter filter;
    };
    auto reading = m_queue.run([&store = m_app.addressBook] {
        Loaded read{store.read(), {}};
        read.book.contacts = namelessLast(read.book.contacts);
        if (read.book.failure.isEmpty())
            read.filter = AddressFilter(read.book.contacts);
        return read;
    });
    m_app.platform.clock.cancel(m_retry);
    const int number = ++m_loads;
    Loaded read = co_await reading;
    if (number != m_loads && loaded) // a later load has started
        co_return;
    m_app.platform.clock.cancel(m_retry);
    if (!read.book.failure.isEmpty()) {
        takeReadFailure(read.book.failure);
        co_return;
    }
    unreadable = QString();
    m_contacts = std::move(read.book.contacts);
    m_filter = std::move(read.filter);
    m_unlisted.removeIf([this](const PostalContact &unlisted) {
        return std::ranges::find(m_contacts, unlisted.id, &PostalContact::id) != m_contacts.end();
    });
    loaded = true;
    emit contactsChanged();
}

Task<> AddressBook::reload()
{
    co_await load();
    if (unreadable.value().isEmpty())
        setStatus(StatusKind::none, QString::number(m_contacts.size()) + u" addresses"_s);
}

/// Keeps the list and tries again by itself.
void AddressBook::takeReadFailure(const QString &reason)
{
    const AppError error(u"The address book could not be read — "_s + reason + u'.');
    if (unreadable.value() != error.description())
        unreadable = m_app.recorded(u"Address Book"_s, error, Popup::no);
    setStatus(StatusKind::failure, unreadable);
    m_retry = m_app.platform.clock.after(retryPause, [this] { spawn([this] { return reload(); }); });
}

void AddressBook::setStatus(StatusKind kind, const QString &text)
{
    status = text;
    statusKind = kind;
}

/// Writes after the changes before it, and reads the book again. False, with the reason as status, if the write failed.
Task<bool> AddressBook::write(Write change)
{
    struct Written {
        bool done = false;
        QString reason;
    };
    const Written written = co_await m_queue.run([&store = m_app.addressBook, change] {
        const bool done = change(store);
        return Written{done, done ? QString() : store.lastError()};
    });
    if (!written.done) {
        const AppError error(u"The address book could not be written — "_s + written.reason + u'.');
        setStatus(StatusKind::failure, m_app.recorded(u"Address Book"_s, error, Popup::no));
        co_return false;
    }
    co_await load();
    co_return true;
}

void AddressBook::note(const BookChange &change)
{
    changes = changes.value() + QList{change};
}

Task<bool> AddressBook::save(PostalContact contact)
{
    const QList<PostalContact> before = m_contacts;
    const bool written = co_await write([contact](LocalAddressStore &store) { return store.upsert(contact); });
    const auto former = std::ranges::find(before, contact.id, &PostalContact::id);
    if (written && former != before.end() && *former != contact)
        note({*former});
    if (written && unreadable.value().isEmpty())
        setStatus(StatusKind::success, u"Saved "_s + contact.name);
    co_return written;
}

Task<> AddressBook::remove(PostalContact contact)
{
    if (m_removing.contains(contact.id)) // the key was pressed twice
        co_return;
    m_removing.insert(contact.id);
    const auto done = qScopeGuard([this, contact] { m_removing.remove(contact.id); });
    const auto outcome = std::make_shared<LocalAddressStore::Removal>(LocalAddressStore::Removal::failed);
    const bool written = co_await write([outcome, id = contact.id](LocalAddressStore &store) {
        *outcome = store.remove(id);
        return *outcome != LocalAddressStore::Removal::failed;
    });
    if (!written)
        co_return;
    if (*outcome == LocalAddressStore::Removal::missing) {
        const AppError error(u"This address was already deleted."_s);
        setStatus(StatusKind::failure, m_app.recorded(u"Address Book"_s, error, Popup::no));
        co_return;
    }
    note({contact});
    setStatus(StatusKind::success, u"Address deleted."_s);
}

Task<> AddressBook::askAndRemove(PostalContact contact)
{
    const int answer = co_await m_app.platform.prompts.choose(
        {.title = u"Delete This Address?"_s,
         .text = joinPresent({contact.name, contact.company, contact.addressSummary()}, u"\n"_s),
         .choices = {u"Keep the Address"_s, u"Delete"_s}});
    if (answer == 1)
        co_await remove(contact);
}

Task<> AddressBook::undo()
{
    QList<BookChange> left = changes;
    if (left.isEmpty())
        co_return;
    const BookChange last = left.takeLast();
    changes = left; // first, so that a second press takes back the change before
    const bool isRestored =
        co_await write([contact = last.former](LocalAddressStore &store) { return store.upsert(contact); });
    if (!isRestored) {
        note(last);
        co_return;
    }
    setStatus(StatusKind::success, u"Restored "_s + joinPresent({last.former.name, last.former.company}, u", "_s));
    kept = std::nullopt;
}

/// The recipient's entry in the book; also if it was kept a moment ago and the list was not read since.
std::optional<PostalContact> AddressBook::entryOf(const PostalContact &recipient) const
{
    const RecipientMatch match(recipient, m_app.sanitizer);
    for (const QList<PostalContact> *list : {&m_unlisted, &m_contacts}) {
        const auto found =
            std::ranges::find_if(*list, [&](const PostalContact &entry) { return match.matches(entry); });
        if (found != list->end())
            return *found;
    }
    return std::nullopt;
}

Task<> AddressBook::keep(ShippoAddress recipient)
{
    kept = std::nullopt;
    const int parcel = m_parcel;
    if (!loaded)         // otherwise every recipient is new
        co_await load(); // then the book is loaded, or `unreadable` says why not
    PostalContact contact = PostalContact::of(recipient);
    const std::optional<PostalContact> known = entryOf(contact);
    if (known) {
        contact.id = known->id;
        contact.label = known->label;
        contact.company = known->company; // only labels use the sanitized company
        if (contact.name.trimmed().isEmpty() || isNamedAfterCompany(*known))
            contact.name = known->name;
        contact.phone = orKnown(contact.phone, known->phone);
        contact.email = orKnown(contact.email, known->email);
    }
    m_unlisted.removeIf([&contact](const PostalContact &entry) { return entry.id == contact.id; });
    m_unlisted.append(contact);
    const bool written =
        loaded && co_await write([contact](LocalAddressStore &store) { return store.upsert(contact); });
    if (!written)
        m_unlisted.removeOne(contact);
    if (written && known && *known != contact) // otherwise the button was pressed twice
        note({*known, parcel});
    if (written && unreadable.value().isEmpty())
        setStatus(StatusKind::success, u"Recipient saved to the address book."_s);
    const ShippoAddress draft = m_app.draftTo;
    if (draft.isEmpty() || draft == recipient) // otherwise the clerk has begun the next parcel
        kept = KeptRecipient{recipient, written, status, contact.id};
}

QString AddressBook::changeText() const
{
    const std::optional<KeptRecipient> latest = kept; // nothing once the next parcel has begun
    if (!canUndo() || !latest || changes.value().last().parcel != m_parcel)
        return {};
    const PostalContact &former = changes.value().last().former;
    if (former.id != latest->entry) // the form was filled for another recipient
        return {};
    return u"Address book entry changed: "_s + joinPresent({isolated(former.name), former.addressSummary()}, u", "_s);
}

AddressBookPane::AddressBookPane(AppState &app, AddressBook &book)
    : m_app(app), m_book(book), m_queryWatch(query.addNotifier([this] { refilter(); }))
{
    buildOn(book);
    connect(&book, &AddressBook::contactsChanged, this, &AddressBookPane::refilter);
    connect(this, &AddressBookPane::filteredChanged, this, &AddressBookPane::changed);
    refilter();
}

void AddressBookPane::refilter()
{
    m_filtered = m_book.filter().filtered(query);
    if (!selected())
        selection = std::nullopt;
    emit filteredChanged();
}

std::optional<PostalContact> AddressBookPane::selected() const
{
    if (!selection.value())
        return std::nullopt;
    const QList<PostalContact> &all = m_book.contacts();
    const auto found = std::ranges::find_if(m_filtered, [&](int at) { return all[at].id == selection.value(); });
    return found == m_filtered.end() ? std::nullopt : std::optional(all[*found]);
}

void AddressBookPane::choose(const PostalContact &contact)
{
    PostalContact recipient = contact;
    if (isNamedAfterCompany(contact)) // the label must be as discreet in the name as in the company line
        recipient.name = m_app.sanitizer.sanitize(contact.name);
    m_app.fillRecipient(recipient);
    m_book.setStatus(StatusKind::success, u"Filled label for "_s + contact.name);
}

} // namespace parcelory
