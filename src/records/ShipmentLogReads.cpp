#include "records/ShipmentLog.h"

#include "core/Accents.h"
#include "core/Progress.h"
#include "core/SqliteCheck.h"
#include "records/LogRead.h"
#include "records/RefundNotes.h"
#include "records/SearchBlock.h"
#include "records/ShipmentLogRows.h"
#include "records/ShipmentRecord.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

bool isAscii(QByteArrayView text)
{
    return std::ranges::none_of(text, [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

QString withoutBlanks(const QString &text)
{
    QString joined = text;
    return joined.removeIf([](QChar c) { return c.isSpace(); });
}

/// True for a number that people and web pages write in groups.
bool isNumber(const QString &text)
{
    constexpr qsizetype shortest = 6;
    const auto digits = std::ranges::count_if(text, [](QChar c) { return c.isDigit(); });
    return text.size() >= shortest && 2 * digits > text.size();
}

/// Compares the searched texts of rows with a text, without regard to case and accents.
class PlainSearch {
public:
    explicit PlainSearch(const QString &search)
        : m_wanted(plainForm(search.simplified())), m_isAscii(isAscii(search.toUtf8()))
    {
    }

    bool matches(const Statement &row, int column) const
    {
        const QByteArrayView text = row.utf8(column);
        // LIKE has compared plain texts with a plain text already.
        return !(m_isAscii && isAscii(text)) && plainForm(QString::fromUtf8(text)).contains(m_wanted);
    }

private:
    QString m_wanted;
    bool m_isAscii;
};

} // namespace

QString ShipmentLog::reasonOf(const Database &db)
{
    const QString text = db.lastError();
    return db.isLocked() ? u"another program has it open (%1)"_s.arg(text) : text;
}

QString ShipmentLog::notRead(const Database &db) const
{
    if (db.isReplaced())
        return u"The mailing log could not be read — another Parcelory has just restored a copy. Try again."_s;
    return u"The mailing log could not be read — %1. %2"_s.arg(
        reasonOf(db), db.isLocked() ? u"Close that program, or wait until it is done, and try again."_s
                                    : u"Check the disk with %1, and try again."_s.arg(m_path));
}

QString ShipmentLog::trouble() const
{
    QString reason;
    readInTurn([&](const Database &db) {
        const bool isRead = rows(db, {}, listLimit, {}).has_value();
        if (!isRead && !db.isLocked())
            reason = reasonOf(db);
        if (isRead)
            m_index.isCurrent(); // the first search of a start shall be fast
        return isRead;
    });
    if (reason.isEmpty())
        return {};
    return u"The mailing log cannot be used — %1. Labels can still be bought: the purchase journal keeps them until "
           "the log can be written. Until then Parcelory can't warn about a second label or list, reprint and refund "
           "earlier labels.\n\nWhat to do: quit Parcelory, rename %2, put a backup of it in its place, and start "
           "Parcelory again. If there is no backup, rename the file anyway: Parcelory starts a new log, and the Master "
           "Log still lists every label."_s.arg(reason, m_path);
}

QString ShipmentLog::damage() const
{
    constexpr auto limit = std::chrono::seconds(3); // a label that is stored meanwhile waits for up to five
    return damageIn(m_path, limit);
}

/// The row with the label's id, unless the log was replaced and another label has that id now.
LogRead<std::optional<ShipmentRecord>> ShipmentLog::find(const ShipmentRecord &record) const
{
    using Row = std::optional<ShipmentRecord>;
    return read<Row>([&](const Database &db) -> std::optional<Row> {
        const bool isLabel = record.id && !(record.transactionID.isEmpty() && record.tracking.isEmpty());
        const std::optional<qint64> id = isLabel ? ShipmentLogRows::idOf(db, record) : record.id;
        if (!id)
            return std::nullopt;
        if (isLabel && !*id)
            return Row();
        const std::optional<QList<ShipmentRecord>> found =
            ShipmentLogRows::rowOf(db, isLabel ? ShipmentRecord{.id = *id} : record);
        if (!found)
            return std::nullopt;
        return found->isEmpty() ? Row() : Row(found->first());
    });
}

LogRead<QList<ShipmentRecord>> ShipmentLog::withTransactions(const QStringList &ids, const QDateTime &since) const
{
    return read<QList<ShipmentRecord>>(
        [&](const Database &db) { return ShipmentLogRows::withTransactions(db, ids, since); });
}

bool ShipmentLog::isEmpty() const
{
    const auto hasRow = read<bool>([](const Database &db) -> std::optional<bool> {
        Statement row(db, "SELECT 1 FROM shipments LIMIT 1");
        const bool isThere = row.step();
        return isThere || row.isComplete() ? std::optional(isThere) : std::nullopt;
    });
    return hasRow.isRead() && !*hasRow;
}

/// The second look of a search that no row matches. Reads in portions, because other callers wait while a portion is
/// read.
LogRead<QList<ShipmentRecord>> ShipmentLog::alike(const QString &search, int limit, const CancelToken &cancel) const
{
    using Rows = QList<ShipmentRecord>;
    constexpr qint64 portion = 20000;
    if (const QString number = withoutBlanks(search); number != search && isNumber(number)) {
        LogRead<Rows> found = read<Rows>([&](const Database &db) { return rows(db, number, limit, cancel); });
        if (!found.isRead() || !found->isEmpty())
            return found;
    }
    const PlainSearch plain(search);
    std::vector<SearchBlock::Place> places;
    qint64 last = 0;
    for (bool isOver = false; !isOver && !cancel.isCanceled();) {
        const LogRead<qint64> count = read<qint64>([&](const Database &db) -> std::optional<qint64> {
            Statement texts(db, "SELECT id, created_at, recipient, tracking, description, reference FROM shipments"
                                " WHERE id > ? ORDER BY id LIMIT ?");
            if (texts.isPrepared()) {
                texts.bind(1, last);
                texts.bind(2, portion);
            }
            qint64 seen = 0;
            for (; !cancel.isCanceled() && texts.step(); ++seen) {
                last = texts.integer(0);
                for (int column = 2; column <= 5; ++column) {
                    if (!plain.matches(texts, column))
                        continue;
                    places.push_back({texts.real(1), last});
                    break;
                }
            }
            return cancel.isCanceled() || texts.isComplete() ? std::optional(seen) : std::nullopt;
        });
        if (!count.isRead())
            return LogRead<Rows>::failed(count.failure());
        isOver = *count < portion;
    }
    std::ranges::sort(places, std::less());
    places.resize(std::min(places.size(), std::size_t(limit)));
    std::vector<qint64> ids;
    for (const SearchBlock::Place &place : places)
        ids.push_back(place.id);
    return read<Rows>([&ids](const Database &db) { return ShipmentLogRows::withIds(db, ids); });
}

LogRead<QList<ShipmentRecord>>
ShipmentLog::labelsLike(const QString &reference, const QDateTime &since, bool testMode,
                        const std::function<bool(const ShipmentRecord &)> &isWanted) const
{
    using Rows = QList<ShipmentRecord>;
    return read<Rows>([&](const Database &db) {
        std::optional<Rows> earlier = reference.isEmpty() ? Rows() : rows(db, reference, listLimit, {});
        Statement query(db, ShipmentLogRows::select +
                                QByteArray(" WHERE created_at >= ? ORDER BY created_at DESC, id DESC"));
        if (query.isPrepared())
            query.bind(1, ShipmentLogRows::secondsOf(since));
        const auto isSame = [&](const ShipmentRecord &label) {
            return label.testMode == testMode &&
                   ((!reference.isEmpty() && label.reference.compare(reference, Qt::CaseInsensitive) == 0) ||
                    isWanted(label));
        };
        std::optional<Rows> found = earlier ? ShipmentLogRows::allOf(db, query, isSame) : std::nullopt;
        if (!found)
            return found;
        earlier->removeIf([&](const ShipmentRecord &label) {
            return label.createdAt >= since || label.reference.compare(reference, Qt::CaseInsensitive) != 0;
        });
        *found += *earlier;
        found->removeIf([testMode](const ShipmentRecord &label) { return label.testMode != testMode; });
        return found;
    });
}

LogRead<QList<ShipmentRecord>> ShipmentLog::labelsOf(QDate day) const
{
    return read<QList<ShipmentRecord>>([day](const Database &db) {
        Statement query(db, ShipmentLogRows::select + QByteArray(" WHERE created_at >= ? AND created_at < ?") +
                                ShipmentLogRows::datedCondition(db) + " ORDER BY created_at, id");
        if (query.isPrepared()) {
            query.bind(1, ShipmentLogRows::secondsOf(day.startOfDay()));
            query.bind(2, ShipmentLogRows::secondsOf(day.addDays(1).startOfDay()));
        }
        return ShipmentLogRows::allOf(db, query);
    });
}

/// Reads in portions, because other callers wait while a portion is read.
LogRead<QList<ShipmentRecord>> ShipmentLog::openRefunds(qint64 before, int limit) const
{
    using Rows = QList<ShipmentRecord>;
    constexpr qint64 portion = 20000;
    const LogRead<qint64> last = read<qint64>([](const Database &db) -> std::optional<qint64> {
        Statement query(db, "SELECT max(id) FROM shipments");
        return query.step() ? std::optional(query.integer(0)) : std::nullopt;
    });
    if (!last.isRead())
        return LogRead<Rows>::failed(last.failure());
    Rows all;
    for (qint64 end = std::min(before, *last + 1); end > 0 && all.size() < limit; end -= portion) {
        const LogRead<Rows> some = read<Rows>([&](const Database &db) {
            Statement query(db, ShipmentLogRows::select + QByteArray(" WHERE id >= ? AND id < ? AND ") +
                                    RefundNotes::pendingCondition(db) +
                                    " AND transaction_id <> '' ORDER BY id DESC LIMIT " +
                                    QByteArray::number(limit - all.size()));
            if (query.isPrepared()) {
                query.bind(1, end - portion);
                query.bind(2, end);
            }
            return ShipmentLogRows::allOf(db, query);
        });
        if (!some.isRead())
            return some;
        all += *some;
    }
    return all;
}

LogRead<std::optional<QByteArray>> ShipmentLog::zpl(qint64 id) const
{
    return blob("SELECT zpl FROM shipments WHERE id = ?", id);
}

LogRead<std::optional<QByteArray>> ShipmentLog::customsPDF(qint64 id) const
{
    return blob("SELECT customs_pdf FROM shipments WHERE id = ?", id);
}

LogRead<std::optional<QByteArray>> ShipmentLog::blob(const QByteArray &sql, qint64 id) const
{
    using Bytes = std::optional<QByteArray>;
    return read<Bytes>([&](const Database &db) -> std::optional<Bytes> {
        Statement query(db, sql);
        if (query.isPrepared())
            query.bind(1, id);
        if (query.step())
            return query.blob(0);
        return query.isComplete() ? std::optional<Bytes>(Bytes()) : std::nullopt;
    });
}

} // namespace parcelory
