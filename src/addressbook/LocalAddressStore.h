#pragma once

#include "addressbook/ImportProgress.h"
#include "core/PostalContact.h"
#include "core/Sqlite.h"

#include <QDir>
#include <QList>
#include <QObject>
#include <QProperty>

#include <mutex>
#include <optional>

namespace parcelory {

/// The desk's own address book, in addresses.sqlite. Everything but `count` may be used from any thread; reading and
/// writing wait for the disk, so screens call them through onPool.
class LocalAddressStore : public QObject {
public:
    static QString sourceName();

    /// Opens or creates the book in `folder`. A failure is logged; later calls then come back empty.
    explicit LocalAddressStore(const QDir &folder);

    /// The number of contacts, set on the main thread soon after every write. Main thread only.
    QProperty<int> count{0};

    /// Everyone, or those with the text in name, company, street, city or postal code, by name without regard to case.
    /// `matching` goes into LIKE as it is: % and _ are wildcards.
    QList<PostalContact> rows(const QString &matching = {}) const;

    /// Adds the contact or replaces the one of the same id; false when it could not be stored (see lastError()).
    [[nodiscard]] bool upsert(const PostalContact &contact);
    /// False when it could not be written; a contact that is not there is none to delete, too.
    [[nodiscard]] bool remove(const QUuid &id);

    struct Merged {
        int imported = 0;
        int skipped = 0; ///< somebody of the same name, street and postal code is there already, whatever the case
    };
    /// Adds many contacts, each normalized, in one transaction. Throws AppError when the book cannot be written, and it
    /// is then as it was; a single contact that the database refuses is left out and counts as neither.
    Merged merge(const QList<PostalContact> &contacts);

    /// Repairs a contact whose whole address was typed into the first street line.
    static PostalContact normalized(PostalContact contact);

    /// The addresses of a file, for merge(). Both throw AppError when it cannot be read or holds no addresses of that
    /// kind, and ImportCancelled.
    static QList<PostalContact> importEndicia(const QString &path, ImportProgress::Report report = {});
    static QList<PostalContact> importVCard(const QString &path, ImportProgress::Report report = {});
    /// Where Endicia keeps its list, when it does. `dataFolder`: our own folder, which stands beside Endicia's.
    static std::optional<QString> endiciaPlistURL(const QDir &dataFolder);

    /// Why the last write failed.
    QString lastError() const;

private:
    bool exec(const char *sql);
    void refreshCount();
    bool write(Statement &statement);
    Merged mergeAll(const QList<PostalContact> &contacts);

    Database m_db;
    mutable std::mutex m_writing; ///< one writer of this program at a time; guards m_lastError
    QString m_lastError;
};

} // namespace parcelory
