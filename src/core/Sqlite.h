#pragma once

#include "core/Progress.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <optional>

struct sqlite3;
struct sqlite3_stmt;

namespace parcelory {

/// An open SQLite database. Nothing here throws; results report failures.
class Database {
public:
    /// How long a statement waits for another program's lock before it fails.
    static constexpr auto busyTimeout = std::chrono::seconds(5);

    /// Whether several threads may use the connection at the same time. With one at a time, SQLite locks nothing for
    /// each value that it reads or binds.
    enum class Threads { several, oneAtATime };

    /// Opens or creates the file. A statement waits for another program's lock for up to `patience`.
    explicit Database(const QString &path, std::chrono::milliseconds patience = busyTimeout,
                      Threads threads = Threads::several);
    Database(const QString &path, Threads threads) : Database(path, busyTimeout, threads) {}
    ~Database();
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    bool isOpen() const { return m_open; }
    /// True if the path names another file than the open one, because a program has put that file in its place. SQLite
    /// then still reads the former file, and refuses to begin a write. Asks the file system; false if there is no file
    /// at the path.
    bool isReplaced() const;
    /// Opens the file again that the path names now. A copy in progress fails.
    bool reopen();
    void setPatience(std::chrono::milliseconds patience);
    /// Runs a script; on failure logs "Parcelory SQL error: " with the library's text.
    bool exec(const char *script);
    /// The library's text about the last failure on this connection.
    QString lastError() const;
    /// True if the last failure was that the file is not a database or is corrupt.
    bool isDamaged() const;
    /// True if the last failure was that another connection held the database longer than the busy timeout.
    bool isLocked() const;

    /// The id of the row that was inserted last on this connection.
    qint64 lastInsertedId() const;
    /// How many rows this connection has changed so far, including changes by triggers.
    int totalChanges() const;

    sqlite3 *handle() const { return m_db; }

private:
    const QByteArray m_path;
    const Threads m_threads;
    std::chrono::milliseconds m_patience;
    sqlite3 *m_db = nullptr;
    bool m_open = false;
};

/// While it exists, all reads on the connection see the same state of the file.
class Snapshot {
public:
    explicit Snapshot(const Database &db);
    ~Snapshot();
    Snapshot(const Snapshot &) = delete;
    Snapshot &operator=(const Snapshot &) = delete;

private:
    const Database &m_db;
};

/// While it exists, a statement on the connection fails as soon as the operation is canceled.
class Interruption {
public:
    Interruption(const Database &db, const CancelToken &cancel);
    ~Interruption();
    Interruption(const Interruption &) = delete;
    Interruption &operator=(const Interruption &) = delete;

private:
    const Database &m_db;
    const CancelToken m_cancel;
};

/// One prepared statement, finalized at the end of its scope. Parameters count from 1, columns from 0.
class Statement {
public:
    Statement(const Database &db, const QByteArray &sql);
    ~Statement();
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;

    enum class Kind { null, number, text, blob };

    bool isPrepared() const { return m_statement; }

    void bind(int parameter, const QString &text);
    /// Not copied, for fast imports: the bytes must stay unchanged until the statement has run.
    void bindInPlace(int parameter, QByteArrayView utf8);
    void bindBlobInPlace(int parameter, QByteArrayView blob);
    void bind(int parameter, double value);
    void bind(int parameter, qint64 value);
    void bind(int parameter, bool value) { bind(parameter, qint64(value)); }
    /// Copied; absent binds NULL.
    void bind(int parameter, const std::optional<QByteArray> &blob);

    /// Moves to the next row; false if there is no further row or reading failed.
    bool step();
    /// After the last step(): true if all rows were read, false if reading failed.
    bool isComplete() const;
    /// Returns to before the first row, for new values.
    void reset();
    /// Runs a statement that returns no rows; true on success. May be called again with new values.
    bool execute();

    Kind kind(int column) const;    ///< of a value as stored; call before reading it
    QString text(int column) const; ///< NULL reads as ""
    /// The text as stored, followed by a zero byte; valid until the next step. Null for NULL.
    QByteArrayView utf8(int column) const;
    /// The bytes of a text or blob as stored, valid until the next step. Null for NULL and for an empty blob.
    QByteArrayView bytes(int column) const;
    double real(int column) const;
    qint64 integer(int column) const;
    std::optional<QByteArray> blob(int column) const; ///< absent for NULL and for an empty blob

private:
    sqlite3_stmt *m_statement = nullptr;
    int m_lastResult = 0;
};

/// Runs one statement that returns no rows, with these parameter values; true on success.
template <class... Values>
bool execute(const Database &db, const QByteArray &sql, const Values &...values)
{
    Statement statement(db, sql);
    int parameter = 0;
    if (statement.isPrepared())
        (statement.bind(++parameter, values), ...);
    return statement.execute();
}

} // namespace parcelory
