#include "records/ShipmentLog.h"

#include "core/AppError.h"
#include "core/Progress.h"
#include "core/Task.h"
#include "records/EndiciaDates.h"
#include "records/EndiciaFormat.h"
#include "records/LogChain.h"
#include "records/LogRead.h"
#include "records/ShipmentLogRows.h"
#include "records/ShipmentRecord.h"

#include <QFile>
#include <QSet>
#include <QUtf8StringView>

#include <algorithm>
#include <array>
#include <cstddef>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr auto selectLine = "SELECT status, created_at, transaction_id, recipient, zip11, postage, weight_oz, balance,"
                            " service, services, tracking, declared_value, description, reference, group_code, email"
                            " FROM shipments WHERE id = ?";

/// Rows between two progress reports.
constexpr int portion = 2000;

EndiciaFormat::Line lineOf(const Statement &row)
{
    return {.status = row.utf8(0),
            .createdAt = ShipmentLogRows::msecsOf(row.real(1)),
            .transactionID = row.utf8(2),
            .recipient = row.utf8(3),
            .zip11 = row.utf8(4),
            .postage = row.real(5),
            .weightOz = row.real(6),
            .balance = row.utf8(7),
            .service = row.utf8(8),
            .services = row.utf8(9),
            .tracking = row.utf8(10),
            .declaredValue = row.utf8(11),
            .descriptionText = row.utf8(12),
            .reference = row.utf8(13),
            .groupCode = row.utf8(14),
            .email = row.utf8(15)};
}

/// Reads lines on its own connection and a pool thread.
class LineReader {
public:
    explicit LineReader(const QString &path) : m_db(path), m_row(m_db, selectLine) {}
    ~LineReader() { m_reading.waitForFinished(); }
    LineReader(const LineReader &) = delete;
    LineReader &operator=(const LineReader &) = delete;

    void start(std::span<const qint64> ids)
    {
        m_reading = QtConcurrent::run(&workPool(), [this, ids] { return read(ids); });
    }
    /// The lines of the rows that start() named; nothing if they could not be read.
    std::optional<QByteArray> result() { return m_reading.result(); }
    /// After result().
    const Database &database() const { return m_db; }

private:
    std::optional<QByteArray> read(std::span<const qint64> ids)
    {
        const Snapshot snapshot(m_db); // one lock for all rows, released before they are written
        QByteArray lines;
        for (const qint64 id : ids) {
            m_row.bind(1, id);
            if (m_row.step())
                EndiciaFormat::append(lines, lineOf(m_row), m_dates);
            else if (!m_row.isComplete())
                return std::nullopt;
            m_row.reset();
        }
        return lines;
    }

    Database m_db;
    Statement m_row;
    EndiciaDates m_dates;
    QFuture<std::optional<QByteArray>> m_reading;
};

/// The ids of all rows, the oldest first; nothing if they could not be read.
std::optional<std::vector<qint64>> oldestFirst(const Database &db)
{
    Statement query(db, "SELECT id FROM shipments ORDER BY created_at DESC, id DESC");
    std::vector<qint64> ids;
    while (query.step())
        ids.push_back(query.integer(0));
    if (!query.isComplete())
        return std::nullopt;
    std::ranges::reverse(ids);
    return ids;
}

QByteArray readFile(const QString &path)
{
    constexpr qint64 largest = 1024 * 1024 * 1024;
    QFile file(path);
    if (QFileInfo(path).exists() && !QFileInfo(path).isFile())
        throw AppError(u"This is not a file."_s); // a pipe or a device may never end
    if (file.size() > largest)
        throw AppError(u"The file is larger than 1 GB. Export the log in parts."_s);
    if (!file.open(QIODevice::ReadOnly))
        throw AppError(u"The file could not be opened — "_s + file.errorString() + u'.');
    QByteArray bytes = file.readAll();
    if (file.error() != QFile::NoError)
        throw AppError(u"The file could not be read — "_s + file.errorString() + u'.');
    if (!QUtf8StringView(bytes).isValidUtf8())
        throw AppError(u"The file is not UTF-8 text — export it again as a tab-separated mail log."_s);
    if (bytes.startsWith("\xEF\xBB\xBF"))
        bytes.remove(0, 3); // the byte order mark would hide the header's first name
    return bytes;
}

/// Reads a file line by line.
class MailLines {
public:
    explicit MailLines(const QByteArray &text) : m_rest(text) {}

    /// False if no line is left.
    bool next()
    {
        const QByteArrayView before = m_rest;
        line = EndiciaFormat::takeLine(m_rest);
        number += EndiciaFormat::lineEnds(before.first(line.data() - before.data()));
        return !line.isEmpty();
    }
    qsizetype left() const { return m_rest.size(); }

    QByteArrayView line;
    int number = 1; ///< of `line`

private:
    QByteArrayView m_rest;
};

/// The tracking numbers of a file that are in the log; nothing if the log could not be read.
std::optional<QSet<QByteArray>> knownTracking(const Database &db, const QByteArray &text)
{
    QSet<QByteArray> named, known;
    for (MailLines lines(text); lines.next();) {
        if (const QByteArray tracking = EndiciaFormat::trackingOf(lines.line); !tracking.isEmpty())
            named.insert(tracking);
    }
    if (named.isEmpty())
        return known;
    Statement rows(db, "SELECT tracking FROM shipments WHERE tracking <> ''");
    while (rows.step()) {
        const QByteArrayView tracking = rows.utf8(0);
        if (const auto place = named.constFind(QByteArray::fromRawData(tracking.data(), tracking.size()));
            place != named.cend())
            known.insert(*place);
    }
    return rows.isComplete() ? std::optional(known) : std::nullopt;
}

/// Appends all lines or no lines. Uses its own connection, so that no reader sees rows that may still be rolled back.
/// `reasonOf` tells why the connection's last statement failed.
ImportReport appendLines(const QString &path, const QByteArray &text, KnownRows mode, const Progress &progress,
                         QString (*reasonOf)(const Database &))
{
    Database db(path);
    const auto require = [&](bool done) {
        if (!done) // closing the connection rolls the transaction back
            throw AppError(u"The mailing log could not be written, so nothing was imported — "_s + reasonOf(db) + u'.');
    };
    db.exec("PRAGMA cache_spill = OFF"); // a spilled page would lock readers out until the end
    require(db.exec("BEGIN IMMEDIATE"));
    const std::optional<QSet<QByteArray>> known = knownTracking(db, text);
    require(known.has_value());
    ImportReport report;
    const ImportReport canceled{.isCanceled = true, .skippedLines = {}, .undatedLines = {}};
    qint64 count = 0;
    {
        LogChain::Sealer sealer(db);
        Statement insert(db, ShipmentLogRows::insert);
        EndiciaDates dates;
        for (MailLines lines(text); lines.next();) {
            if (++count % portion == 0 && !progress.report(text.size() - lines.left(), text.size()))
                return canceled;
            std::optional<ShipmentRecord> record = EndiciaFormat::parse(lines.line, dates);
            if (!record) {
                if (!EndiciaFormat::isHeaderOrBlank(lines.line))
                    report.skippedLines += lines.number;
                continue;
            }
            const bool isDated = record->createdAt.isValid();
            if (!isDated)
                record->createdAt = QDateTime::currentDateTime();
            const bool isKnown = known->contains(record->tracking.toUtf8());
            report.known += isKnown;
            if (isKnown && mode == KnownRows::skip)
                continue;
            require(insert.isPrepared());
            ShipmentLogRows::bind(insert, *record);
            require(insert.execute());
            const qint64 row = db.lastInsertedId();
            require(sealer.seal(row));
            ++report.imported;
            if (!isDated) {
                report.undatedLines += lines.number;
                require(ShipmentLogRows::markUndated(db, row));
            }
        }
    }
    if (!progress.report(text.size(), text.size()))
        return canceled;
    require(db.exec("COMMIT"));
    return report;
}

} // namespace

LogRead<bool> ShipmentLog::exportEndiciaCSV(QIODevice &out, const Progress &progress) const
{
    const auto write = [&out](const QByteArray &text) { return out.write(text) == text.size(); };
    if (!write(EndiciaFormat::header().toUtf8() + '\n'))
        return false;
    const Database db(m_path);
    const std::optional<std::vector<qint64>> ids = oldestFirst(db);
    if (!ids)
        return LogRead<bool>::failed(notRead(db));
    // One reader reads while the other reader's lines are written; reading is most of the work.
    std::array<LineReader, 2> readers{LineReader(m_path), LineReader(m_path)};
    std::span<const qint64> rest(*ids);
    const auto start = [&rest](LineReader &reader) {
        const auto ids = rest.first(std::min<std::size_t>(portion, rest.size()));
        rest = rest.subspan(ids.size());
        reader.start(ids);
    };
    for (LineReader &reader : readers)
        start(reader);
    for (std::size_t done = 0, turn = 0; done < ids->size(); ++turn) {
        LineReader &reader = readers[turn % readers.size()];
        const std::optional<QByteArray> lines = reader.result();
        if (!lines)
            return LogRead<bool>::failed(notRead(reader.database()));
        start(reader);
        done = std::min(done + portion, ids->size());
        if (!write(*lines) || !progress.report(qint64(done), qint64(ids->size())))
            return false;
    }
    return true;
}

int ShipmentLog::knownLines(const QString &path) const
{
    const QByteArray text = readFile(path);
    const Database db(m_path);
    const std::optional<QSet<QByteArray>> known = knownTracking(db, text);
    if (!known)
        throw AppError(notRead(db));
    int count = 0;
    for (MailLines lines(text); !known->isEmpty() && lines.next();)
        count += known->contains(EndiciaFormat::trackingOf(lines.line));
    return count;
}

ImportReport ShipmentLog::importEndiciaCSV(const QString &path, KnownRows known, const Progress &progress)
{
    const QByteArray text = readFile(path);
    ImportReport report;
    prepare();
    {
        const std::lock_guard writing(m_writing);
        report = appendLines(m_path, text, known, progress, &ShipmentLog::reasonOf);
    }
    reload();
    return report;
}

} // namespace parcelory
