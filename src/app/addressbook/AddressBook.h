#pragma once

#include "addressbook/AddressFilter.h"
#include "app/AppState.h"
#include "core/Task.h"

#include <QObject>
#include <QProperty>

#include <atomic>
#include <optional>

namespace parcelory {

/// The desk's address book as the screens see it: the whole list in memory, and what changes it. One for all panes;
/// lives as long as AppState.
class AddressBook : public QObject {
    Q_OBJECT
public:
    explicit AddressBook(AppState &app);

    QProperty<QString> status; ///< what the last operation came to, or how far an import is
    QProperty<bool> importing{false};
    QProperty<std::optional<PostalContact>> deleted; ///< the last one deleted, until the next change

    /// By name. Replaced as a whole with every change: hold on to none of it while waiting.
    const QList<PostalContact> &contacts() const { return m_contacts; }
    const AddressFilter &filter() const { return m_filter; }

    /// Reads the book again; the status becomes the number of addresses.
    Task<> reload();
    /// False, with the reason as status, when it was not written.
    Task<bool> save(PostalContact contact);
    Task<> remove(PostalContact contact);
    Task<> undoRemove();
    /// Takes a label's recipient into the book, or brings the entry of the same name, street and ZIP to what it is now.
    /// Nothing is said when `quietly`.
    Task<> keep(ShippoAddress recipient, bool quietly);

    /// The Endicia list from where Endicia keeps it, or else from a file of the clerk's choice.
    Task<> importEndicia();
    Task<> importVCard();
    Task<> importContacts();
    bool hasContacts() const { return m_app.appleContacts.isAvailable(); }
    void cancelImport() { m_cancelled = true; }

signals:
    void contactsChanged();

private:
    using Reader = std::function<QList<PostalContact>(ImportProgress::Report report)>;
    /// A change of the store; false when it was not written.
    using Write = std::function<bool(LocalAddressStore &store)>;

    Task<> load();
    Task<bool> write(Write change);
    Task<> importFrom(Reader reader, QString reading);
    Task<> mergeAll(QList<PostalContact> contacts);
    ImportProgress::Report followImport(QString reading);

    AppState &m_app;
    QList<PostalContact> m_contacts;
    AddressFilter m_filter;
    int m_loads = 0; ///< readings of the book that were begun
    std::atomic<bool> m_cancelled = false;
};

/// One place where the address book is searched: the sidebar, or the window of its own.
class AddressBookPane : public QObject {
    Q_OBJECT
public:
    AddressBookPane(AppState &app, AddressBook &book);

    QProperty<QString> query;
    QProperty<std::optional<QUuid>> selection;

    AddressBook &book() { return m_book; }
    /// Positions in book().contacts() of those that match the query.
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
