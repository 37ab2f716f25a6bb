#pragma once

#include "addressbook/ImportProgress.h"
#include "addressbook/VCard.h"
#include "core/Observable.h"
#include "core/PostalContact.h"
#include "core/Progress.h"
#include "core/Sqlite.h"

#include <QDir>
#include <QList>
#include <QObject>

#include <functional>
#include <mutex>
#include <optional>
#include <shared_mutex>

namespace parcelory {

/// The desk's own address book, in addresses.sqlite. Everything but `count` may be used from any thread; reading and
/// writing wait for the disk, so screens call them through onPool.
class LocalAddressStore : public Observable {
public:
    static QString sourceName();

    /// Opens or creates the book in `folder`. Waits for no other program: a failure is logged, and later calls try
    /// again, also to open the file.
    explicit LocalAddressStore(const QDir &folder);

    /// The number of contacts, set on the main thread soon after every write. Main thread only.
    Observed<int> count{this, 0};

    /// All contacts, or the contacts with the text in name, company, street, city or postal code; sorted by name,
    /// ignoring case. `matching` goes into LIKE as it is: % and _ are wildcards.
    QList<PostalContact> rows(const QString &matching = {}) const { return read(matching).contacts; }

    struct Book {
        QList<PostalContact> contacts;
        QString failure; ///< why the book, or the rest of it, could not be read; empty if all was read
    };
    /// The same as rows(), with the reason if they could not be read.
    Book read(const QString &matching = {}) const;

    /// Adds the contact or replaces the contact with the same id; false if it could not be stored (see lastError()).
    [[nodiscard]] bool upsert(const PostalContact &contact);
    enum class Removal { done, missing, failed };
    /// Missing: no contact has this id, so nothing was deleted.
    Removal remove(const QUuid &id);

    struct Merged {
        int imported = 0;
        int skipped = 0; ///< the book already has the same name, street and postal code, ignoring case
    };
    /// Adds many contacts, each normalized, in one transaction, and replaces no entry: a contact whose id the book uses
    /// gets a new id. If the book cannot be read or written, throws AppError; a single contact that the database
    /// refuses is left out and not counted. Throws ImportCanceled. After an exception the book is unchanged.
    Merged merge(const QList<PostalContact> &contacts)
    {
        return add({.contacts = contacts, .exported = {}, .skipped = {}});
    }
    /// The same for what a file holds. Exported entries are added as they are; only an entry that the book has with the
    /// same text in every field is skipped.
    Merged add(const ReadAddresses &read, const CancelToken &cancel = {});

    /// Repairs a contact whose whole address was typed into the first street line.
    static PostalContact normalized(PostalContact contact);

    /// The addresses of a file, for add(). Both throw AppError if the file cannot be read or has no addresses of that
    /// kind, and ImportCanceled.
    static QList<PostalContact> importEndicia(const QString &path, Progress progress = {});
    static ReadAddresses importVCard(const QString &path, Progress progress = {});
    /// The path of Endicia's address list, if it exists. `dataFolder`: our own folder, which is next to Endicia's.
    static std::optional<QString> endiciaPlistURL(const QDir &dataFolder);

    /// Why the last write failed.
    QString lastError() const;
    /// What is wrong with the file, as far as a check of a few seconds finds it; empty if nothing is.
    QString damage() const;
    QString path() const { return m_path; }
    /// Copies the book into the new file `path`; writers wait for one portion of it at most. Returns why it failed;
    /// the text is empty on success and after a cancellation.
    QString copyTo(const QString &path, const Progress &progress = {}) const;
    struct Difference {
        int added = 0;
        int changed = 0;
    };
    /// How many entries a book has that its copy lacks or has with other text; 0 if either cannot be read.
    static Difference changedSince(const QString &present, const QString &copy);
    /// Runs `replace`, which puts another file in the book's place; other threads and programs wait. Returns its
    /// result, or that another program has the file open.
    QString replaceFile(const std::function<QString()> &replace);

private:
    bool exec(const char *sql) const;
    QString whyNotReady() const;
    bool isWritable();
    bool isReplaced() const;
    std::shared_lock<std::shared_mutex> inUse() const;
    QString reason() const;
    void refreshCount();
    bool write(const std::function<bool()> &change);
    QByteArray storedId(const QUuid &id) const;
    template <class Prepare, class Key>
    void addAll(const QList<PostalContact> &contacts, Prepare prepare, Key key, const CancelToken &cancel,
                Merged &merged);

    const QString m_path;
    mutable std::shared_mutex m_use; ///< held alone while the file is replaced
    mutable Database m_db;
    mutable std::mutex m_opening;   ///< guards m_isReady
    mutable bool m_isReady = false; ///< the file is open and has the table
    mutable std::mutex m_writing;   ///< one writer of this program at a time; guards m_lastError
    QString m_lastError;
};

} // namespace parcelory
