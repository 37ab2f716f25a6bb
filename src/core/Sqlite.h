#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
#include <functional>
#include <optional>

struct sqlite3;
struct sqlite3_stmt;

namespace parcelory {

/// An open SQLite database. Nothing here throws: a statement that cannot run says so in its result.
class Database {
public:
    /// Another program's lock is waited for this long before a statement fails.
    static constexpr auto busyTimeout = std::chrono::seconds(5);

    /// Opens or creates the file.
    explicit Database(const QString &path);
    ~Database();
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    bool isOpen() const { return m_open; }
    /// Runs a script; on failure logs "Parcelory SQL error: " with the library's text.
    bool exec(const char *script);
    /// The library's text about the last failure on this connection.
    QString lastError() const;
    /// The last failure was that the file holds no database, or a broken one.
    bool isDamaged() const;

    /// The id of the row that was inserted last on this connection.
    qint64 lastInsertedId() const;
    /// How many rows this connection has changed so far, those that triggers changed included.
    int totalChanges() const;

    sqlite3 *handle() const { return m_db; }

private:
    sqlite3 *m_db = nullptr;
    bool m_open = false;
};

/// What is read on the connection while it lives is of one state of the file.
class Snapshot {
public:
    explicit Snapshot(const Database &db);
    ~Snapshot();
    Snapshot(const Snapshot &) = delete;
    Snapshot &operator=(const Snapshot &) = delete;

private:
    const Database &m_db;
};

/// Asked again and again during a long operation; false ends it early.
using StillWanted = std::function<bool()>;

/// While it lives, a statement of the connection fails as soon as it is not wanted any more.
class Interruption {
public:
    Interruption(const Database &db, const StillWanted &wanted);
    ~Interruption();
    Interruption(const Interruption &) = delete;
    Interruption &operator=(const Interruption &) = delete;

private:
    const Database &m_db;
};

/// One prepared statement, finalised with its scope. Parameters count from 1, columns from 0.
class Statement {
public:
    Statement(const Database &db, const QByteArray &sql);
    ~Statement();
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;

    enum class Kind { null, number, text, blob };

    bool isPrepared() const { return m_statement; }

    void bind(int parameter, const QString &text);
    /// Not copied, for imports: the bytes must stay as they are until the statement was executed.
    void bindInPlace(int parameter, QByteArrayView utf8);
    void bind(int parameter, double value);
    void bind(int parameter, qint64 value);
    void bind(int parameter, bool value) { bind(parameter, qint64(value)); }
    /// Copied; absent binds NULL.
    void bind(int parameter, const std::optional<QByteArray> &blob);

    /// True while a row is there to be read.
    bool step();
    /// After the last step(): true when there are no more rows, false when reading failed on the way.
    bool isComplete() const;
    /// Back to before the first row, for new values.
    void reset();
    /// Steps a statement that gives no rows; true when it was carried out. May be called again with new values.
    bool execute();

    Kind kind(int column) const;    ///< of a row's value; ask before reading it
    QString text(int column) const; ///< NULL reads as ""
    /// The text as it is stored, followed by a zero byte, until the next step; null for NULL.
    QByteArrayView utf8(int column) const;
    double real(int column) const;
    qint64 integer(int column) const;
    std::optional<QByteArray> blob(int column) const; ///< absent for NULL and for an empty blob

private:
    sqlite3_stmt *m_statement = nullptr;
    int m_lastResult = 0;
};

/// Runs one statement that gives no rows, with these values for its parameters; true when it was carried out.
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
