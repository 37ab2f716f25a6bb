#pragma once

#include "addressbook/AddressFilter.h"
#include "app/AppState.h"
#include "core/Observable.h"
#include "core/SerialQueue.h"
#include "core/StatusKind.h"
#include "core/Task.h"

#include <QObject>
#include <QProperty>
#include <QSet>

#include <optional>

namespace parcelory {

/// The outcome of saving a label's recipient.
struct KeptRecipient {
    ShippoAddress recipient;
    bool isWritten = false;
    QString text;
    QUuid entry; ///< its contact in the book

    bool operator==(const KeptRecipient &) const = default;
};

/// A change of an entry that can be taken back.
struct BookChange {
    PostalContact former;
    int parcel = 0; ///< whose recipient was kept, counted from 1; 0 for a change in the address book

    bool operator==(const BookChange &) const = default;
};

/// The desk's address book for the screens: the whole list in memory, and the operations that change it. One thread
/// reads and writes the store in the order of the clerk's clicks, so that an undo is written after the change. All
/// panes share the book; it lives as long as AppState.
class AddressBook : public Observable {
    Q_OBJECT
public:
    explicit AddressBook(AppState &app);
    ~AddressBook() override;

    Observed<QString> status{this};                          ///< result of the last operation, or progress of an import
    Observed<StatusKind> statusKind{this, StatusKind::none}; ///< none: only the number of addresses
    Observed<bool> loaded{this, false};
    Observed<QString> unreadable{this};                ///< why the book could not be read at the last attempt
    Observed<std::optional<KeptRecipient>> kept{this}; ///< until the next parcel begins
    Observed<bool> importing{this, false};
    Observed<bool> exporting{this, false};
    Observed<QList<BookChange>> changes{this}; ///< deletions and edits that undo() takes back, the newest last

    /// Sorted by name; entries without a name come last. Replaced as a whole at every change: keep no reference across
    /// a co_await.
    const QList<PostalContact> &contacts() const { return m_contacts; }
    const AddressFilter &filter() const { return m_filter; }

    /// Reads the book again; the status becomes the number of addresses.
    Task<> reload();
    /// False, with the reason as status, if the write failed.
    Task<bool> save(PostalContact contact);
    Task<> remove(PostalContact contact);
    /// Removes the contact if the clerk confirms.
    Task<> askAndRemove(PostalContact contact);
    bool canUndo() const { return !changes.value().isEmpty(); }
    /// Takes back the last change.
    Task<> undo();
    /// Saves a label's recipient, or updates its entry in the book (RecipientMatch); the outcome is in `kept`.
    Task<> keep(ShippoAddress recipient);
    /// What keeping a recipient has changed, for the status strip; empty if undo() would not take it back, or the next
    /// parcel has begun.
    QString changeText() const;
    void setStatus(StatusKind kind, const QString &text);

    /// Imports Endicia's address list from Endicia's folder, or else from a file that the clerk picks.
    Task<> importEndicia() { return importFrom(&AddressBook::readEndicia); }
    Task<> importVCard() { return importFrom(&AddressBook::readVCard); }
    Task<> importContacts() { return importFrom(&AddressBook::readContacts); }
    bool hasContacts() const { return m_app.appleContacts.isAvailable(); }
    /// Until the import is written; then the book is as before it.
    void cancelImport() { m_cancel.cancel(); }

    /// Waits until the changes so far are written, as the destructor does.
    void flush() { m_queue.wait(); }

    enum class Format { vCard, csv };
    /// Writes the whole book to a file that the clerk chooses.
    Task<> exportTo(Format format);

signals:
    void contactsChanged();

private:
    /// Reads a source of addresses on another thread; nothing if the clerk picks no file.
    using Source = Task<std::optional<ReadAddresses>> (AddressBook::*)();
    /// Changes the store; false if the write failed.
    using Write = std::function<bool(LocalAddressStore &store)>;

    Task<> load();
    void takeReadFailure(const QString &reason);
    Task<bool> write(Write change);
    void note(const BookChange &change);
    Task<> importFrom(Source source);
    Task<std::optional<ReadAddresses>> readEndicia();
    Task<std::optional<ReadAddresses>> readVCard();
    Task<std::optional<ReadAddresses>> readContacts();
    Task<> mergeAll(ReadAddresses read);
    Progress followImport(QString reading);
    std::optional<PostalContact> entryOf(const PostalContact &recipient) const;

    AppState &m_app;
    QList<PostalContact> m_contacts;
    AddressFilter m_filter;
    int m_loads = 0;                 ///< number of loads started
    QList<PostalContact> m_unlisted; ///< kept, but not yet in m_contacts
    QSet<QUuid> m_removing;
    quint64 m_retry = 0; ///< a timer
    static constexpr Clock::Duration retryPause = std::chrono::seconds(10);
    int m_parcel = 1; ///< how many parcels were begun, and the parcel in the form
    bool m_isDraftEmpty;
    QPropertyNotifier m_draftWatch;
    CancelToken m_cancel; ///< of the import
    SerialQueue m_queue;  ///< of all work with the store but an export
};

/// A view that searches the address book: the sidebar or the Address Book window.
class AddressBookPane : public Observable {
    Q_OBJECT
public:
    AddressBookPane(AppState &app, AddressBook &book);

    Observed<QString> query{this};
    Observed<std::optional<QUuid>> selection{this};

    AddressBook &book() { return m_book; }
    /// What the clerk sees as the source of the addresses.
    static QString sourceName() { return LocalAddressStore::sourceName(); }
    /// Indexes in book().contacts() of the contacts that match the query.
    const QList<int> &filtered() const { return m_filtered; }
    std::optional<PostalContact> selected() const;
    /// Fills the label's recipient.
    void choose(const PostalContact &contact);

signals:
    void filteredChanged();

private:
    void refilter();

    AppState &m_app;
    AddressBook &m_book;
    QList<int> m_filtered;
    QPropertyNotifier m_queryWatch;
};

} // namespace parcelory
