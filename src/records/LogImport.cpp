#include "records/LogImport.h"

#include "core/AppError.h"
#include "core/Task.h"
#include "records/EndiciaDates.h"
#include "records/EndiciaFormat.h"
#include "records/LogChain.h"
#include "records/NewRows.h"
#include "records/ShipmentLogRows.h"

#include <QDateTime>
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

/// Bytes between two progress reports: about a thousand lines.
constexpr qsizetype portion = 256 * 1024;

/// Reads a file line by line.
class MailLines {
public:
    explicit MailLines(QByteArrayView text) : m_rest(text) {}

    /// False if no line is left.
    bool next()
    {
        const QByteArrayView before = m_rest;
        line = EndiciaFormat::takeLine(m_rest);
        number += EndiciaFormat::lineEnds(before.first(line.data() - before.data()));
        return !line.isEmpty();
    }

    QByteArrayView line;
    int number = 1; ///< of `line`; if no line is left, one more than the number of line ends

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

/// Lines that were read.
struct Portion {
    std::vector<ShipmentLogRows::NewRow> rows;
    struct Undated {
        std::size_t row;
        int line;
    };
    std::vector<Undated> undated;
    QList<int> skipped; ///< lines that should be a shipment but are not
    int known = 0;      ///< lines whose tracking number is in the log
    int lineEnds = 0;
};

ShipmentLogRows::NewRow rowOf(const EndiciaFormat::Line &line)
{
    const qint64 createdAt = line.createdAt ? *line.createdAt : QDateTime::currentMSecsSinceEpoch();
    return ShipmentLogRows::NewRow({.createdAt = ShipmentLogRows::secondsOf(createdAt),
                                    .carrier = "USPS",
                                    .service = line.service,
                                    .services = line.services,
                                    .postage = line.postage,
                                    .balance = line.balance,
                                    .declaredValue = line.declaredValue,
                                    .recipient = line.recipient,
                                    .zip11 = line.zip11,
                                    .email = line.email,
                                    .tracking = line.tracking,
                                    .transactionID = line.transactionID,
                                    .weight = EndiciaFormat::shownWeight(line.weightOz),
                                    .weightOz = line.weightOz,
                                    .descriptionText = line.descriptionText,
                                    .reference = line.reference,
                                    .groupCode = line.groupCode,
                                    .status = line.status});
}

/// Reads lines on a pool thread, beside the storing of rows.
class LineReader {
public:
    LineReader() = default;
    ~LineReader()
    {
        if (m_reading.isValid()) // a result that was taken is never finished
            waitForEnd(m_reading);
    }
    LineReader(const LineReader &) = delete;
    LineReader &operator=(const LineReader &) = delete;

    /// Counts known lines; `mode` tells whether they are read. Line numbers are of `text`.
    void start(QByteArrayView text, const QSet<QByteArray> &known, KnownRows mode)
    {
        m_reading = QtConcurrent::run(&workPool(), [this, text, &known, mode] { return read(text, known, mode); });
    }
    Portion result() { return m_reading.takeResult(); }

private:
    Portion read(QByteArrayView text, const QSet<QByteArray> &known, KnownRows mode);

    EndiciaDates m_dates;
    QFuture<Portion> m_reading;
};

Portion LineReader::read(QByteArrayView text, const QSet<QByteArray> &known, KnownRows mode)
{
    Portion portion;
    MailLines lines(text);
    while (lines.next()) {
        const std::optional<EndiciaFormat::Line> line = EndiciaFormat::parse(lines.line, m_dates);
        if (!line) {
            if (!EndiciaFormat::isHeaderOrBlank(lines.line))
                portion.skipped += lines.number;
            continue;
        }
        const bool isKnown = !known.isEmpty() && known.contains(line->tracking.toByteArray());
        portion.known += isKnown;
        if (isKnown && mode == KnownRows::skip)
            continue;
        if (!line->createdAt)
            portion.undated.push_back({.row = portion.rows.size(), .line = lines.number});
        portion.rows.push_back(rowOf(*line));
    }
    portion.lineEnds = lines.number - 1;
    return portion;
}

/// Reads portions ahead.
class ReadAhead {
public:
    ReadAhead(QByteArrayView text, const QSet<QByteArray> &known, KnownRows mode)
        : m_rest(text), m_known(known), m_mode(mode)
    {
        for (LineReader &reader : m_readers)
            start(reader);
    }

    Portion next()
    {
        LineReader &reader = m_readers[m_turn++ % m_readers.size()];
        Portion portion = reader.result();
        m_left = m_leftAfter.takeFirst();
        start(reader);
        return portion;
    }
    /// Bytes after the lines of the last next().
    qsizetype left() const { return m_left; }
    bool isOver() const { return m_leftAfter.isEmpty(); }

private:
    void start(LineReader &reader)
    {
        if (m_rest.isEmpty())
            return;
        const QByteArrayView lines = EndiciaFormat::takeLines(m_rest, portion);
        m_leftAfter += m_rest.size();
        reader.start(lines, m_known, m_mode);
    }

    QByteArrayView m_rest;
    const QSet<QByteArray> &m_known;
    const KnownRows m_mode;
    std::array<LineReader, 2> m_readers;
    std::size_t m_turn = 0;
    QList<qsizetype> m_leftAfter; ///< of the portions that are being read
    qsizetype m_left = 0;
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

/// The second half of `whole`: builds the indexes and stores the entries. False if a statement failed or the import is
/// canceled, which interrupts the statement.
bool finish(Database &db, const QList<QByteArray> &indexes, NewRows::Storage &storage, const Progress &progress,
            qint64 whole)
{
    const Interruption interruption(db, progress.cancelToken());
    qint64 done = whole / 2;
    for (const QByteArray &index : indexes) {
        done += whole / 2 / (indexes.size() + 1);
        if (!db.exec(index.constData()) || !progress.report(done, whole))
            return false;
    }
    return storage.seal();
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
    constexpr qint64 usualLine = 200; // bytes
    constexpr qint64 muchLarger = 10; // an index of more rows is not built again: that reads all labels
    Database db(path, Database::Threads::oneAtATime);
    const auto require = [&](bool done) {
        if (!done) // closing the connection rolls the transaction back
            throw AppError(u"The mailing log could not be written, so nothing was imported — "_s + reasonOf(db) + u'.');
    };
    const auto begin = [&db] {
        // A spilled page would lock readers out until the end. Indexes are sorted in memory: temporary files would hold
        // the recipients.
        db.exec("PRAGMA cache_spill = OFF; PRAGMA temp_store = MEMORY; PRAGMA cache_size = -65536");
        return db.exec("BEGIN IMMEDIATE");
    };
    bool isBegun = begin();
    if (db.isReplaced()) { // by the program that had the lock
        db.reopen();
        isBegun = begin();
    }
    require(isBegun);
    const std::optional<QSet<QByteArray>> known = knownTracking(db, text);
    require(known.has_value());
    const LogChain::Sealer sealer(db); // creates the chain of a new log
    const std::optional<NewRows::Last> last = NewRows::last(db);
    require(last.has_value());
    std::optional<QList<QByteArray>> indexes = QList<QByteArray>();
    if (text.size() / usualLine / muchLarger >= last->id)
        require((indexes = setIndexesAside(db)).has_value());
    ImportReport report;
    const ImportReport canceled{.isCanceled = true, .skippedLines = {}, .undatedLines = {}};
    const qint64 whole = 2 * text.size(); // the indexes and the entries take nearly as long as the rows
    NewRows::Storage storage(db, *last);
    int linesBefore = 0;
    for (ReadAhead ahead(text, *known, mode); !ahead.isOver();) {
        Portion portion = ahead.next();
        for (const int line : std::as_const(portion.skipped))
            report.skippedLines += linesBefore + line;
        for (const auto [row, line] : portion.undated) {
            report.undatedLines += linesBefore + line;
            require(ShipmentLogRows::markUndated(db, storage.lastId() + qint64(row) + 1));
        }
        report.imported += int(portion.rows.size());
        require(storage.store(std::move(portion.rows)));
        report.known += portion.known;
        linesBefore += portion.lineEnds;
        if (!progress.report(text.size() - ahead.left(), whole))
            return canceled;
    }
    if (!finish(db, *indexes, storage, progress, whole)) {
        if (progress.cancelToken().isCanceled())
            return canceled;
        require(false);
    }
    if (!progress.report(whole, whole))
        return canceled;
    require(db.exec("COMMIT"));
    return report;
}

} // namespace parcelory::LogImport
