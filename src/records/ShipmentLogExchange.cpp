#include "records/ShipmentLog.h"

#include "core/AppError.h"
#include "core/Progress.h"
#include "core/Task.h"
#include "records/EndiciaDates.h"
#include "records/EndiciaFormat.h"
#include "records/LogChain.h"
#include "records/LogExport.h"
#include "records/LogRead.h"
#include "records/ShipmentLogRows.h"
#include "records/ShipmentRecord.h"

#include <QFile>
#include <QFuture>
#include <QSet>
#include <QUtf8StringView>

#include <algorithm>
#include <array>
#include <cstddef>
#include <mutex>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Rows or lines between two progress reports.
constexpr int portion = 2000;

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
    Statement first(db, "SELECT 1 FROM shipments WHERE tracking <> '' LIMIT 1");
    if (!first.step())
        return first.isComplete() ? std::optional(known) : std::nullopt;
    first.reset();
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

/// A line that was read ahead.
struct ReadLine {
    int number = 0;
    bool isDated = true;
    ShipmentLogRows::NewRow row;
    LogChain::RowHashes hashes;
};

struct ReadLines {
    std::vector<ReadLine> shipments;
    QList<int> skipped; ///< numbers of the lines that are no shipment and should be
    qsizetype left = 0; ///< bytes after these lines
    bool isLast = false;
};

/// Reads and hashes lines on a pool thread while the rows of the lines before are stored. Each is about half of the
/// work of an import.
class ReadAhead {
public:
    explicit ReadAhead(const QByteArray &text) : m_lines(text) { start(); }
    ~ReadAhead()
    {
        if (m_reading.isValid()) // a result that was taken is never finished
            m_reading.waitForFinished();
    }
    ReadAhead(const ReadAhead &) = delete;
    ReadAhead &operator=(const ReadAhead &) = delete;

    /// Not after the last lines.
    ReadLines next()
    {
        ReadLines lines = m_reading.takeResult();
        if (!lines.isLast)
            start();
        return lines;
    }

private:
    void start()
    {
        m_reading = QtConcurrent::run(&workPool(), [this] { return read(); });
    }
    ReadLines read();

    MailLines m_lines;
    EndiciaDates m_dates;
    QFuture<ReadLines> m_reading;
};

ReadLines ReadAhead::read()
{
    ReadLines read;
    read.shipments.reserve(portion);
    for (int count = 0; count < portion; ++count) {
        if (!m_lines.next()) {
            read.isLast = true;
            break;
        }
        std::optional<ShipmentRecord> record = EndiciaFormat::parse(m_lines.line, m_dates);
        if (!record) {
            if (!EndiciaFormat::isHeaderOrBlank(m_lines.line))
                read.skipped += m_lines.number;
            continue;
        }
        const bool isDated = record->createdAt.isValid();
        if (!isDated)
            record->createdAt = QDateTime::currentDateTime();
        ShipmentLogRows::NewRow row(*record);
        LogChain::RowHashes hashes = LogChain::hashesOf(row);
        read.shipments.push_back(
            {.number = m_lines.number, .isDated = isDated, .row = std::move(row), .hashes = std::move(hashes)});
    }
    read.left = m_lines.left();
    return read;
}

/// Appends all lines or no lines. Uses its own connection, so that no reader sees rows that may still be rolled back.
/// `reasonOf` tells why the connection's last statement failed.
ImportReport appendLines(const QString &path, const QByteArray &text, KnownRows mode, const Progress &progress,
                         QString (*reasonOf)(const Database &))
{
    Database db(path, Database::Threads::oneAtATime);
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
    {
        LogChain::Sealer sealer(db);
        Statement insert(db, ShipmentLogRows::NewRow::insertSql());
        ReadAhead ahead(text);
        for (bool isLast = false; !isLast;) {
            const ReadLines lines = ahead.next();
            isLast = lines.isLast;
            report.skippedLines += lines.skipped;
            for (const ReadLine &line : lines.shipments) {
                const bool isKnown =
                    known->contains(line.row.bytes(ShipmentLogRows::NewRow::trackingColumn).toByteArray());
                report.known += isKnown;
                if (isKnown && mode == KnownRows::skip)
                    continue;
                require(line.row.store(insert));
                const qint64 row = db.lastInsertedId();
                require(sealer.seal(row, line.hashes));
                ++report.imported;
                if (!line.isDated) {
                    report.undatedLines += line.number;
                    require(ShipmentLogRows::markUndated(db, row));
                }
            }
            if (!isLast && !progress.report(text.size() - lines.left, text.size()))
                return canceled;
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
    const Database db(m_path, Database::Threads::oneAtATime);
    const std::optional<std::vector<qint64>> ids = LogExport::oldestFirst(db);
    if (!ids)
        return LogRead<bool>::failed(notRead(db));
    // One reader reads while the other reader's lines are written; reading is most of the work.
    using LogExport::LineReader;
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
    const Database db(m_path, Database::Threads::oneAtATime);
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
