#include "records/LogImport.h"

#include "core/AppError.h"
#include "core/Task.h"
#include "records/EndiciaDates.h"
#include "records/EndiciaFormat.h"
#include "records/LogChain.h"
#include "records/NewRows.h"
#include "records/ShipmentLogRows.h"
#include "records/ShipmentRecord.h"

#include <QFuture>
#include <QSet>

#include <array>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace parcelory::LogImport {
using namespace Qt::StringLiterals;

namespace {

/// Lines between two progress reports.
constexpr std::size_t portion = 2000;

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

struct Line {
    QByteArrayView text;
    int number;
};

/// A line that was read: a shipment, or a line that should be but is not.
struct ReadLine {
    int number = 0;
    bool isDated = true;
    std::optional<NewRows::Hashed> row;
};

/// Reads and hashes lines on a pool thread. Two of them work beside the storing of rows, which is half of an import.
class LineReader {
public:
    LineReader() = default;
    ~LineReader()
    {
        if (!m_reading.isValid()) // a result that was taken is never finished
            return;
        try {
            m_reading.waitForFinished();
        } catch (...) { // a destructor must not throw what read() threw
            return;
        }
    }
    LineReader(const LineReader &) = delete;
    LineReader &operator=(const LineReader &) = delete;

    void start(std::vector<Line> lines)
    {
        m_reading = QtConcurrent::run(&workPool(), [this, lines = std::move(lines)] { return read(lines); });
    }
    std::vector<ReadLine> result() { return m_reading.takeResult(); }

private:
    std::vector<ReadLine> read(const std::vector<Line> &lines);

    EndiciaDates m_dates;
    QFuture<std::vector<ReadLine>> m_reading;
};

std::vector<ReadLine> LineReader::read(const std::vector<Line> &lines)
{
    std::vector<ReadLine> read;
    read.reserve(lines.size());
    for (const Line &line : lines) {
        if (std::optional<ShipmentRecord> record = EndiciaFormat::parse(line.text, m_dates)) {
            const bool isDated = record->createdAt.isValid();
            if (!isDated)
                record->createdAt = QDateTime::currentDateTime();
            read.push_back({line.number, isDated, NewRows::hashed(ShipmentLogRows::NewRow(*record))});
        } else if (!EndiciaFormat::isHeaderOrBlank(line.text)) {
            read.push_back({line.number, true, std::nullopt});
        }
    }
    return read;
}

/// Reads portions ahead.
class ReadAhead {
public:
    explicit ReadAhead(const QByteArray &text) : m_lines(text)
    {
        for (LineReader &reader : m_readers)
            start(reader);
    }

    std::vector<ReadLine> next()
    {
        LineReader &reader = m_readers[m_turn++ % m_readers.size()];
        std::vector<ReadLine> lines = reader.result();
        m_left = m_leftAfter.takeFirst();
        start(reader);
        return lines;
    }
    /// Bytes after the lines of the last next().
    qsizetype left() const { return m_left; }
    bool isOver() const { return m_isOver && m_leftAfter.isEmpty(); }

private:
    void start(LineReader &reader)
    {
        std::vector<Line> lines;
        lines.reserve(portion);
        while (!m_isOver && lines.size() < portion) {
            if (m_lines.next())
                lines.push_back({m_lines.line, m_lines.number});
            else
                m_isOver = true;
        }
        if (lines.empty())
            return;
        m_leftAfter += m_lines.left();
        reader.start(std::move(lines));
    }

    MailLines m_lines;
    std::array<LineReader, 2> m_readers;
    std::size_t m_turn = 0;
    QList<qsizetype> m_leftAfter; ///< of the portions that are being read
    qsizetype m_left = 0;
    bool m_isOver = false; ///< all lines are being read
};

/// The definitions of the indexes of the shipments, which are dropped: to build them after a large import takes less
/// time than to add each row to them. Nothing if a statement failed.
std::optional<QList<QByteArray>> setIndexesAside(Database &db)
{
    QList<QByteArray> definitions, names;
    Statement indexes(db, "SELECT sql, name FROM sqlite_master"
                          " WHERE type = 'index' AND tbl_name = 'shipments' AND sql IS NOT NULL");
    while (indexes.step()) {
        definitions += indexes.utf8(0).toByteArray();
        names += indexes.utf8(1).toByteArray().replace('"', "\"\"");
    }
    bool isDone = indexes.isComplete();
    indexes.reset();
    for (const QByteArray &name : std::as_const(names))
        isDone = isDone && db.exec(("DROP INDEX \"" + name + '"').constData());
    return isDone ? std::optional(definitions) : std::nullopt;
}

bool isIn(const QSet<QByteArray> &known, const ShipmentLogRows::NewRow &row)
{
    return !known.isEmpty() && known.contains(row.bytes(ShipmentLogRows::NewRow::trackingColumn).toByteArray());
}

} // namespace

std::optional<int> knownLines(const Database &db, const QByteArray &text)
{
    const std::optional<QSet<QByteArray>> known = knownTracking(db, text);
    if (!known)
        return std::nullopt;
    int count = 0;
    for (MailLines lines(text); !known->isEmpty() && lines.next();)
        count += known->contains(EndiciaFormat::trackingOf(lines.line));
    return count;
}

ImportReport appendLines(const QString &path, const QByteArray &text, KnownRows mode, const Progress &progress,
                         QString (*reasonOf)(const Database &))
{
    constexpr qint64 muchLarger = 10; // an index of more rows is not built again: that reads all labels
    Database db(path, Database::Threads::oneAtATime);
    const auto require = [&](bool done) {
        if (!done) // closing the connection rolls the transaction back
            throw AppError(u"The mailing log could not be written, so nothing was imported — "_s + reasonOf(db) + u'.');
    };
    // A spilled page would lock readers out until the end. Indexes are sorted in memory: temporary files would hold the
    // recipients.
    db.exec("PRAGMA cache_spill = OFF; PRAGMA temp_store = MEMORY; PRAGMA cache_size = -65536");
    require(db.exec("BEGIN IMMEDIATE"));
    const std::optional<QSet<QByteArray>> known = knownTracking(db, text);
    require(known.has_value());
    const LogChain::Sealer sealer(db); // creates the chain of a new log
    const std::optional<NewRows::Last> last = NewRows::last(db);
    require(last.has_value());
    std::optional<QList<QByteArray>> indexes = QList<QByteArray>();
    if (text.count('\n') / muchLarger >= last->id)
        require((indexes = setIndexesAside(db)).has_value());
    ImportReport report;
    const ImportReport canceled{.isCanceled = true, .skippedLines = {}, .undatedLines = {}};
    {
        NewRows::Storage storage(db, *last);
        for (ReadAhead ahead(text); !ahead.isOver();) {
            std::vector<NewRows::Hashed> rows;
            rows.reserve(portion);
            for (ReadLine &line : ahead.next()) {
                if (!line.row) {
                    report.skippedLines += line.number;
                    continue;
                }
                const bool isKnown = isIn(*known, line.row->row);
                report.known += isKnown;
                if (isKnown && mode == KnownRows::skip)
                    continue;
                rows.push_back(*std::move(line.row));
                if (!line.isDated) {
                    report.undatedLines += line.number;
                    require(ShipmentLogRows::markUndated(db, storage.lastId() + qint64(rows.size())));
                }
            }
            require(storage.store(rows));
            report.imported += int(rows.size());
            if (!ahead.isOver() && !progress.report(text.size() - ahead.left(), text.size()))
                return canceled;
        }
    }
    for (const QByteArray &index : std::as_const(*indexes))
        require(db.exec(index.constData()));
    if (!progress.report(text.size(), text.size()))
        return canceled;
    require(db.exec("COMMIT"));
    return report;
}

} // namespace parcelory::LogImport
