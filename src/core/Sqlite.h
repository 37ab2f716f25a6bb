#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>
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

    sqlite3 *handle() const { return m_db; }

private:
    sqlite3 *m_db = nullptr;
    bool m_open = false;
};

/// One prepared statement, finalised with its scope. Parameters count from 1, columns from 0.
class Statement {
public:
    Statement(const Database &db, const QByteArray &sql);
    ~Statement();
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;

    bool isPrepared() const { return m_statement; }

    void bind(int parameter, const QString &text);
    void bind(int parameter, double value);
    void bind(int parameter, qint64 value);
    void bind(int parameter, bool value) { bind(parameter, qint64(value)); }
    /// Copied; absent binds NULL.
    void bind(int parameter, const std::optional<QByteArray> &blob);

    /// True while a row is there to be read.
    bool step();
    /// After the last step(): true when there are no more rows, false when reading failed on the way.
    bool isComplete() const;
    /// Steps a statement that gives no rows; true when it was carried out. May be called again with new values.
    bool execute();

    QString text(int column) const; ///< NULL reads as ""
    double real(int column) const;
    qint64 integer(int column) const;
    std::optional<QByteArray> blob(int column) const; ///< absent for NULL and for an empty blob

private:
    sqlite3_stmt *m_statement = nullptr;
    int m_lastResult = 0;
};

} // namespace parcelory
