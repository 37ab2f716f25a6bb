#include "app/addressbook/AddressBook.h"

#include "addressbook/AddressFilter.h"
#include "app/AppState.h"
#include "core/AppError.h"
#include "core/PostalContact.h"
#include "core/ShippoAddress.h"
#include "core/StatusKind.h"
#include "core/Task.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Identifies a recipient, even after the carrier has rewritten the street and ZIP code: name, ZIP, and house number
/// with the street's first word, or the whole line if it has no house number, such as a PO box.
QString personKey(const QString &name, const QString &street1, const QString &zip)
{
    const QString street = street1.simplified();
    const bool hasNumber = !street.isEmpty() && street.front().isDigit();
    const QString place = hasNumber ? street.section(u' ', 0, 1) : street;
    return (name + u'|' + place + u'|' + zip.section(u'-', 0, 0)).toLower();
}

/// Keeps the known value if the new value is blank.
QString orKnown(const QString &value, const QString &known)
{
    return value.trimmed().isEmpty() ? known : value;
}

} // namespace

AddressBook::AddressBook(AppState &app) : m_app(app)
{
    connect(&app, &AppState::recipientToKeep, this,
            [this](const ShippoAddress &recipient) { spawn([=, this] { return keep(recipient); }); });
    connect(this, &AddressBook::contactsChanged, this, &AddressBook::changed);
    m_draftWatch = app.draftTo.addNotifier([this] {
        const ShippoAddress draft = m_app.draftTo;
        if (kept.value() && !draft.isEmpty() && draft != kept.value()->recipient)
            kept = std::nullopt;
    });
}

AddressBook::~AddressBook()
{
    m_app.platform.clock.cancel(m_retry);
}

/// False if the book could not be read.
Task<bool> AddressBook::load()
{
    struct Book {
        QString trouble;
        QList<PostalContact> contacts = {};
        AddressFilter filter = {};
    };
    auto reading = onPool([&store = m_app.addressBook] {
        Book book{store.trouble()};
        if (!book.trouble.isEmpty())
            return book;
        book.contacts = store.rows(QString());
        book.filter = AddressFilter(book.contacts);
        return book;
    });
    const int number = ++m_loads;
    Book book = co_await reading;
    if (number != m_loads) // a later load has started
        co_return true;
    if (!book.trouble.isEmpty()) {
        takeReadFailure(book.trouble);
        co_return false;
    }
    m_contacts = std::move(book.contacts);
    m_filter = std::move(book.filter);
    loaded = true;
    emit contactsChanged();
    co_return true;
}

Task<> AddressBook::reload()
{
    const bool wasRead = co_await load();
    if (wasRead)
        setStatus(StatusKind::none, QString::number(m_contacts.size()) + u" addresses"_s);
}

/// Keeps the list and tries again by itself.
void AddressBook::takeReadFailure(const QString &sentence)
{
    const AppError error(sentence);
    const QString text = sentence + u" Parcelory tries again by itself."_s;
    if (status.value() != text) {
        m_app.recorded(u"Address Book"_s, error, Popup::no);
        setStatus(StatusKind::failure, text);
    }
    m_app.platform.clock.cancel(m_retry);
    m_retry = m_app.platform.clock.after(retryPause, [this] { spawn([this] { return reload(); }); });
}

void AddressBook::setStatus(StatusKind kind, const QString &text)
{
    status = text;
    statusKind = kind;
}

/// Writes on the pool and reads the book again. False, with the reason as status, if the write failed.
Task<bool> AddressBook::write(Write change)
{
    const QString reason =
        co_await onPool([&store = m_app.addressBook, change] { return change(store) ? QString() : store.lastError(); });
    if (!reason.isEmpty()) {
        const AppError error(u"The address book could not be written — "_s + reason + u'.');
        setStatus(StatusKind::failure, m_app.recorded(u"Address Book"_s, error, Popup::no));
        co_return false;
    }
    deleted = std::nullopt;
    co_await load();
    co_return true;
}

Task<bool> AddressBook::save(PostalContact contact)
{
    const bool written = co_await write([contact](LocalAddressStore &store) { return store.upsert(contact); });
    if (written)
        setStatus(StatusKind::success, u"Saved "_s + contact.name);
    co_return written;
}

Task<> AddressBook::remove(PostalContact contact)
{
    const bool written = co_await write([id = contact.id](LocalAddressStore &store) { return store.remove(id); });
    if (!written)
        co_return;
    deleted = contact;
    setStatus(StatusKind::success, u"Address deleted."_s);
}

Task<> AddressBook::undoRemove()
{
    const std::optional<PostalContact> contact = deleted;
    if (contact)
        co_await save(*contact);
}

Task<> AddressBook::keep(ShippoAddress recipient)
{
    kept = std::nullopt;
    PostalContact contact = PostalContact::of(recipient);
    const QString key = personKey(contact.name, contact.street1, contact.zip);
    const auto known = std::ranges::find_if(m_contacts, [&key](const PostalContact &entry) {
        return personKey(entry.name, entry.street1, entry.zip) == key;
    });
    if (known != m_contacts.end()) {
        contact.id = known->id;
        contact.label = known->label;
        contact.phone = orKnown(contact.phone, known->phone);
        contact.email = orKnown(contact.email, known->email);
        if (m_app.sanitizer.sanitize(known->company) == contact.company || contact.company.isEmpty())
            contact.company = known->company; // only labels use the sanitized company
    }
    const bool written = co_await write([contact](LocalAddressStore &store) { return store.upsert(contact); });
    if (written)
        setStatus(StatusKind::success, u"Recipient saved to the address book."_s);
    const ShippoAddress draft = m_app.draftTo;
    if (draft.isEmpty() || draft == recipient) // otherwise the clerk has begun the next parcel
        kept = KeptRecipient{recipient, written, status};
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
    m_app.fillRecipient(contact);
    m_book.setStatus(StatusKind::success, u"Filled label for "_s + contact.name);
}

} // namespace parcelory
