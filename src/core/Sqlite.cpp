#include "core/Sqlite.h"

#include "core/PrivateFiles.h"
#include "core/Progress.h"

#include <QFile>
#include <sqlite3.h>

#include <chrono>
#include <optional>

namespace parcelory {

Database::Database(const QString &path, std::chrono::milliseconds patience, Threads threads)
    : m_path(path.toUtf8()), m_threads(threads), m_patience(patience)
{
    reopen();
}

namespace {

/// SQLite counts its memory under a lock, which takes a tenth of an import's time. Nothing here asks for the count.
void stopCountingMemory()
{
    [[maybe_unused]] static const int result = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0); // refused if already in use
}

} // namespace

bool Database::reopen()
{
    stopCountingMemory();
    sqlite3_close_v2(m_db);                       // a copy in progress keeps the former file open until it fails
    createPrivateFile(QString::fromUtf8(m_path)); // its side files take its mode
    // Request the handle's mutex if threads share it: some systems' SQLite leaves it out by default.
    const int mutex = m_threads == Threads::several ? SQLITE_OPEN_FULLMUTEX : SQLITE_OPEN_NOMUTEX;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | mutex;
    m_open = sqlite3_open_v2(m_path.constData(), &m_db, flags, nullptr) == SQLITE_OK;
    setPatience(m_patience);
    return m_open;
}

bool Database::isReplaced() const
{
    int hasMoved = 0;
    const bool isKnown = m_open && sqlite3_file_control(m_db, "main", SQLITE_FCNTL_HAS_MOVED, &hasMoved) == SQLITE_OK;
    return isKnown && hasMoved && QFile::exists(QString::fromUtf8(m_path));
}

void Database::setPatience(std::chrono::milliseconds patience)
{
    m_patience = patience;
    if (m_db)
        sqlite3_busy_timeout(m_db, int(patience.count()));
}

Database::~Database()
{
    sqlite3_close(m_db);
}

bool Database::exec(const char *script)
{
    char *message = nullptr;
    if (sqlite3_exec(m_db, script, nullptr, nullptr, &message) == SQLITE_OK)
        return true;
    qWarning("Parcelory SQL error: %s", message ? message : "?");
    sqlite3_free(message);
    return false;
}

QString Database::lastError() const
{
    return QString::fromUtf8(sqlite3_errmsg(m_db));
}

bool Database::isDamaged() const
{
    const int code = sqlite3_errcode(m_db);
    return code == SQLITE_NOTADB || code == SQLITE_CORRUPT;
}

bool Database::isLocked() const
{
    const int code = sqlite3_errcode(m_db);
    return code == SQLITE_BUSY || code == SQLITE_LOCKED;
}

qint64 Database::lastInsertedId() const
{
    return sqlite3_last_insert_rowid(m_db);
}

int Database::totalChanges() const
{
    return sqlite3_total_changes(m_db);
}

Snapshot::Snapshot(const Database &db) : m_db(db)
{
    Statement(m_db, "BEGIN").execute();
}

Snapshot::~Snapshot()
{
    Statement(m_db, "COMMIT").execute();
}

Interruption::Interruption(const Database &db, const CancelToken &cancel) : m_db(db), m_cancel(cancel)
{
    constexpr int instructions = 10000; // well below a millisecond
    const auto isOver = [](void *token) { return int(static_cast<const CancelToken *>(token)->isCanceled()); };
    sqlite3_progress_handler(m_db.handle(), instructions, isOver, const_cast<CancelToken *>(&m_cancel));
}

Interruption::~Interruption()
{
    sqlite3_progress_handler(m_db.handle(), 0, nullptr, nullptr);
}

Statement::Statement(const Database &db, const QByteArray &sql)
{
    sqlite3_prepare_v2(db.handle(), sql.constData(), int(sql.size()), &m_statement, nullptr);
}

Statement::~Statement()
{
    sqlite3_finalize(m_statement);
}

void Statement::bind(int parameter, const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    sqlite3_bind_text(m_statement, parameter, utf8.constData(), int(utf8.size()), SQLITE_TRANSIENT);
}

void Statement::bindInPlace(int parameter, QByteArrayView utf8)
{
    sqlite3_bind_text(m_statement, parameter, utf8.data(), int(utf8.size()), SQLITE_STATIC);
}

void Statement::bindBlobInPlace(int parameter, QByteArrayView blob)
{
    sqlite3_bind_blob64(m_statement, parameter, blob.data(), sqlite3_uint64(blob.size()), SQLITE_STATIC);
}

void Statement::bind(int parameter, double value)
{
    sqlite3_bind_double(m_statement, parameter, value);
}

void Statement::bind(int parameter, qint64 value)
{
    sqlite3_bind_int64(m_statement, parameter, value);
}

void Statement::bind(int parameter, const std::optional<QByteArray> &blob)
{
    if (blob)
        sqlite3_bind_blob64(m_statement, parameter, blob->constData(), sqlite3_uint64(blob->size()), SQLITE_TRANSIENT);
    else
        sqlite3_bind_null(m_statement, parameter);
}

bool Statement::step()
{
    m_lastResult = m_statement ? sqlite3_step(m_statement) : SQLITE_ERROR;
    return m_lastResult == SQLITE_ROW;
}

bool Statement::isComplete() const
{
    return m_lastResult == SQLITE_DONE;
}

void Statement::reset()
{
    sqlite3_reset(m_statement);
}

bool Statement::execute()
{
    if (!m_statement)
        return false;
    const bool done = sqlite3_step(m_statement) == SQLITE_DONE;
    reset();
    return done;
}

Statement::Kind Statement::kind(int column) const
{
    switch (sqlite3_column_type(m_statement, column)) {
    case SQLITE_INTEGER:
    case SQLITE_FLOAT:
        return Kind::number;
    case SQLITE_TEXT:
        return Kind::text;
    case SQLITE_BLOB:
        return Kind::blob;
    default:
        return Kind::null;
    }
}

QString Statement::text(int column) const
{
    const QByteArrayView bytes = utf8(column);
    return bytes.isNull() ? QString() : QString::fromUtf8(bytes);
}

QByteArrayView Statement::utf8(int column) const
{
    const auto *bytes = reinterpret_cast<const char *>(sqlite3_column_text(m_statement, column));
    return {bytes, bytes ? sqlite3_column_bytes(m_statement, column) : 0};
}

QByteArrayView Statement::bytes(int column) const
{
    const auto *bytes = static_cast<const char *>(sqlite3_column_blob(m_statement, column));
    return {bytes, bytes ? sqlite3_column_bytes(m_statement, column) : 0};
}

double Statement::real(int column) const
{
    return sqlite3_column_double(m_statement, column);
}

qint64 Statement::integer(int column) const
{
    return sqlite3_column_int64(m_statement, column);
}

std::optional<QByteArray> Statement::blob(int column) const
{
    const QByteArrayView value = bytes(column);
    return value.isNull() ? std::nullopt : std::optional(value.toByteArray());
}

} // namespace parcelory
