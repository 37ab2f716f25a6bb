#include "addressbook/LocalAddressStore.h"

#include "addressbook/ImportProgress.h"
#include "addressbook/VCard.h"
#include "core/AppError.h"
#include "core/PostalContact.h"
#include "core/PrivateFiles.h"
#include "core/Progress.h"

#include <QFile>
#include <QScopeGuard>
#include <QSet>
#include <QStringEncoder>
#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <mutex>
#include <shared_mutex>
#include <tuple>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr auto table = "CREATE TABLE IF NOT EXISTS addresses (\n"
                       "  uuid TEXT PRIMARY KEY,\n"
                       "  name TEXT, company TEXT, street1 TEXT, street2 TEXT,\n"
                       "  city TEXT, state TEXT, zip TEXT, country TEXT,\n"
                       "  label TEXT, phone TEXT, email TEXT\n"
                       ");";
constexpr auto nameIndex = "CREATE INDEX IF NOT EXISTS idx_addresses_name ON addresses(name COLLATE NOCASE);";

constexpr auto selectRows = "SELECT uuid, name, company, street1, street2, city, state, zip, country,\n"
                            "       label, phone, email FROM addresses";
constexpr auto matchingRows =
    " WHERE name LIKE ?1 OR company LIKE ?1 OR street1 LIKE ?1 OR city LIKE ?1 OR zip LIKE ?1";

constexpr auto upsertRow = "INSERT INTO addresses (uuid, name, company, street1, street2, city, state, zip,\n"
                           "                       country, label, phone, email)\n"
                           "VALUES (?,?,?,?,?,?,?,?,?,?,?,?)\n"
                           "ON CONFLICT(uuid) DO UPDATE SET\n"
                           "  name=excluded.name, company=excluded.company, street1=excluded.street1,\n"
                           "  street2=excluded.street2, city=excluded.city, state=excluded.state,\n"
                           "  zip=excluded.zip, country=excluded.country, label=excluded.label,\n"
                           "  phone=excluded.phone, email=excluded.email";

QByteArray uuidText(const QUuid &id)
{
    return id.toByteArray(QUuid::WithoutBraces).toUpper();
}

PostalContact contactOf(const Statement &row)
{
    PostalContact contact; // keeps its new id if the stored id is unreadable
    if (const QUuid id = QUuid::fromString(row.text(0)); !id.isNull())
        contact.id = id;
    contact.name = row.text(1);
    contact.company = row.text(2);
    contact.street1 = row.text(3);
    contact.street2 = row.text(4);
    contact.city = row.text(5);
    contact.state = row.text(6);
    contact.zip = row.text(7);
    contact.country = row.text(8);
    contact.label = row.text(9);
    contact.phone = row.text(10);
    contact.email = row.text(11);
    return contact;
}

/// A contact's columns in UTF-8, concatenated. An import reuses the buffer for every contact, which saves a fifth of
/// its time.
class Columns {
public:
    /// Binds the columns to an upsert. The bindings are valid until the next call. `id`: the contact's id as stored.
    void bind(Statement &statement, const PostalContact &contact, const QByteArray &id)
    {
        const auto fill = [&](const auto &, const auto &...fields) {
            m_ends = {append(id), append(contact.*fields.member)...};
        };
        m_utf8.resize(0);
        std::apply(fill, PostalContact::fields()); // in the order of the columns
        qsizetype start = 0;
        int parameter = 0;
        for (const qsizetype end : m_ends) {
            statement.bindInPlace(++parameter, QByteArrayView(m_utf8).sliced(start, end - start));
            start = end;
        }
    }

private:
    qsizetype append(const QByteArray &id)
    {
        m_utf8 += id;
        return m_utf8.size();
    }
    qsizetype append(const QString &text)
    {
        const qsizetype start = m_utf8.size();
        QStringEncoder encode(QStringConverter::Utf8);
        m_utf8.resize(start + encode.requiredSpace(text.size()));
        m_utf8.truncate(encode.appendToBuffer(m_utf8.data() + start, text) - m_utf8.constData());
        return m_utf8.size();
    }

    QByteArray m_utf8;
    std::array<qsizetype, std::tuple_size_v<decltype(PostalContact::fields())>> m_ends{};
};

/// Contacts with the same key count as duplicates.
QString mergeKey(const PostalContact &contact)
{
    QString key;
    key.reserve(contact.name.size() + contact.street1.size() + contact.zip.size() + 2);
    key.append(contact.name).append(u'|').append(contact.street1).append(u'|').append(contact.zip);
    return std::move(key).toLower();
}

/// Two contacts with the same text in every field have the same key.
QString wholeKey(const PostalContact &contact)
{
    QString key;
    const auto append = [&key](const QString &text) {
        key.append(QString::number(text.size())).append(u':').append(text);
    };
    const auto appendAll = [&](const auto &, const auto &...fields) { (append(contact.*fields.member), ...); };
    std::apply(appendAll, PostalContact::fields());
    return key;
}

QString pathIn(const QDir &folder)
{
    createPrivateFolder(folder);
    return folder.filePath(u"addresses.sqlite"_s);
}

} // namespace

QString LocalAddressStore::sourceName()
{
    return u"Parcelory Address Book"_s;
}

LocalAddressStore::LocalAddressStore(const QDir &folder)
    : m_path(pathIn(folder)), m_db(m_path, std::chrono::milliseconds(0))
{
    if (!m_db.isOpen())
        qWarning("Parcelory: cannot open address store at %s", qUtf8Printable(m_path));
    if (whyNotReady().isEmpty())
        refreshCount();
    m_db.setPatience(Database::busyTimeout);
}

/// Opens the file and creates the table at the first call that can; otherwise the reason why not. Nothing else may use
/// the connection before: opening the file again replaces it.
QString LocalAddressStore::whyNotReady() const
{
    const std::lock_guard opening(m_opening);
    if (m_isReady)
        return {};
    if ((!m_db.isOpen() || m_db.isReplaced()) && !m_db.reopen())
        return reason();
    // Large enough for a whole address book, so that an import does not write the same pages repeatedly.
    exec("PRAGMA cache_size = -65536");
    if (!exec(table))
        return reason();
    exec(nameIndex);
    m_isReady = true;
    return {};
}

/// The caller holds m_writing.
bool LocalAddressStore::isWritable()
{
    m_lastError = whyNotReady();
    return m_lastError.isEmpty();
}

/// Why the last statement failed.
QString LocalAddressStore::reason() const
{
    const QString reason = m_db.lastError();
    return m_db.isLocked() ? u"another program has it open (%1)"_s.arg(reason) : reason;
}

bool LocalAddressStore::exec(const char *sql) const
{
    const bool done = Statement(m_db, sql).execute();
    if (!done)
        qWarning("Parcelory address SQL error: %s", qUtf8Printable(m_db.lastError()));
    return done;
}

void LocalAddressStore::refreshCount()
{
    Statement query(m_db, "SELECT COUNT(*) FROM addresses");
    const int total = query.step() ? int(query.integer(0)) : 0;
    QMetaObject::invokeMethod(this, [this, total] { count = total; }, Qt::QueuedConnection);
}

LocalAddressStore::Book LocalAddressStore::read(const QString &matching) const
{
    const auto use = inUse();
    Book book;
    book.failure = whyNotReady();
    if (!book.failure.isEmpty())
        return book;
    QByteArray sql = selectRows;
    if (!matching.isEmpty())
        sql += matchingRows;
    Statement row(m_db, sql + " ORDER BY name COLLATE NOCASE");
    if (!matching.isEmpty())
        row.bind(1, u'%' + matching + u'%');
    while (row.step())
        book.contacts.append(contactOf(row));
    if (!row.isComplete())
        book.failure = reason();
    return book;
}

/// The id as its row has it: other programs may write it in small letters or in braces. The usual text for a new
/// contact.
QByteArray LocalAddressStore::storedId(const QUuid &id) const
{
    const QByteArray usual = uuidText(id);
    constexpr auto asWritten = "SELECT uuid FROM addresses WHERE uuid = ?";
    constexpr auto inAnyForm = "SELECT uuid FROM addresses WHERE trim(uuid, '{}') = ? COLLATE NOCASE"; // reads all rows
    for (const char *query : {asWritten, inAnyForm}) {
        Statement row(m_db, query);
        row.bindInPlace(1, usual);
        if (row.step())
            return row.text(0).toUtf8();
    }
    return usual;
}

/// Runs `change`, which writes with one statement. Twice if another program had the lock and has replaced the file:
/// SQLite refuses to write into the former file.
bool LocalAddressStore::write(const std::function<bool()> &change)
{
    for (bool isSecond = false;; isSecond = true) {
        const auto use = inUse();
        const std::lock_guard writing(m_writing);
        if (!isWritable())
            return false;
        const bool done = change();
        m_lastError = done ? QString() : m_db.lastError();
        if (!done && !isSecond && isReplaced())
            continue;
        refreshCount();
        return done;
    }
}

bool LocalAddressStore::upsert(const PostalContact &contact)
{
    return write([&] {
        const QByteArray id = storedId(contact.id);
        Columns columns;
        Statement statement(m_db, upsertRow);
        columns.bind(statement, contact, id);
        return statement.execute();
    });
}

LocalAddressStore::Removal LocalAddressStore::remove(const QUuid &id)
{
    bool isMissing = false;
    const bool done = write([&] {
        const QByteArray text = storedId(id);
        Statement statement(m_db, "DELETE FROM addresses WHERE uuid = ?");
        statement.bindInPlace(1, text);
        const int changes = m_db.totalChanges();
        const bool isDone = statement.execute();
        isMissing = m_db.totalChanges() == changes;
        return isDone;
    });
    return !done ? Removal::failed : isMissing ? Removal::missing : Removal::done;
}

LocalAddressStore::Merged LocalAddressStore::add(const ReadAddresses &read, const CancelToken &cancel)
{
    const auto use = inUse();
    const std::lock_guard writing(m_writing);
    const auto fail = [this](const QString &reason) {
        m_lastError = reason;
        throw AppError(u"The address book could not be written, so nothing was imported — "_s + m_lastError + u'.');
    };
    // IMMEDIATE, because otherwise every single contact would wait for another program's lock.
    if (!isWritable() || !exec("BEGIN IMMEDIATE TRANSACTION"))
        fail(m_lastError.isEmpty() ? reason() : m_lastError);
    const auto isOpen = [this] { return !sqlite3_get_autocommit(m_db.handle()); };
    const auto undo = qScopeGuard([&] {
        if (isOpen())
            exec("ROLLBACK");
    });
    if (isReplaced())
        fail(u"another Parcelory has just restored a copy"_s);
    Merged merged;
    addAll(read.exported, std::identity(), wholeKey, cancel, merged);
    addAll(read.contacts, normalized, mergeKey, cancel, merged);
    if (!isOpen() || !exec("COMMIT")) // a full disk has already ended it
        fail(reason());
    refreshCount();
    return merged;
}

/// Adds the contacts, each as `prepare` returns it, whose `key` the book does not have.
template <class Prepare, class Key>
void LocalAddressStore::addAll(const QList<PostalContact> &contacts, Prepare prepare, Key key,
                               const CancelToken &cancel, Merged &merged)
{
    if (contacts.isEmpty())
        return;
    QSet<QString> keys;
    QSet<QUuid> ids;
    Statement row(m_db, selectRows);
    while (row.step()) {
        requireNotCanceled(cancel);
        const PostalContact known = contactOf(row);
        keys.insert(key(known));
        ids.insert(known.id);
    }
    if (!row.isComplete()) // what is not known would be added again
        throw AppError(u"The address book could not be read, so nothing was imported — "_s + reason() + u'.');
    keys.reserve(keys.size() + contacts.size());
    Columns columns;
    Statement statement(m_db, upsertRow);
    for (const PostalContact &incoming : contacts) {
        requireNotCanceled(cancel);
        PostalContact contact = prepare(incoming);
        const qsizetype known = keys.size();
        keys.insert(key(contact));
        if (keys.size() == known) {
            ++merged.skipped;
            continue;
        }
        if (ids.contains(contact.id)) // an upsert would replace that entry
            contact.id = QUuid::createUuid();
        ids.insert(contact.id);
        columns.bind(statement, contact, uuidText(contact.id));
        if (statement.execute())
            ++merged.imported;
        else if (sqlite3_get_autocommit(m_db.handle()))
            break;
    }
    requireNotCanceled(cancel);
}

QString LocalAddressStore::lastError() const
{
    const std::lock_guard writing(m_writing);
    return m_lastError;
}

LocalAddressStore::Difference LocalAddressStore::changedSince(const QString &present, const QString &copy)
{
    if (!QFile::exists(present) || !QFile::exists(copy))
        return {};
    const Database db(present);
    if (!execute(db, "ATTACH ? AS copy", copy))
        return {};
    const auto count = [&db](const QByteArray &rows) {
        Statement query(db, "SELECT count(*) FROM (" + rows + ")");
        return query.step() ? int(query.integer(0)) : 0;
    };
    const int added = count("SELECT uuid FROM main.addresses EXCEPT SELECT uuid FROM copy.addresses");
    const int other =
        count(QByteArray(selectRows) + " EXCEPT " + QByteArray(selectRows).replace("FROM ", "FROM copy."));
    return {.added = added, .changed = std::max(0, other - added)};
}

} // namespace parcelory
