#include "records/ShipmentLogRows.h"

#include "core/Json.h"
#include "records/NewRows.h"
#include "records/RefundNotes.h"
#include "records/SealedValue.h"
#include "records/ShipmentRecord.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace parcelory::ShipmentLogRows {

const char *const select = "SELECT id, created_at, carrier, service, postage, recipient, services, tracking,\n"
                           "       tracking_url, weight, weight_oz, description, reference, transaction_id,\n"
                           "       label_url, status, test_mode, zip11, declared_value, group_code, email, balance,\n"
                           "       is_intl, customs_doc_url, (customs_pdf IS NOT NULL) AS has_customs\n"
                           "FROM shipments";

const char *const sealedColumns = "created_at, carrier, service, services, postage, balance, declared_value,"
                                  " recipient, zip11, email, is_intl, tracking, tracking_url,"
                                  " transaction_id, label_url, customs_doc_url, test_mode, zpl,"
                                  " weight, weight_oz, description, reference, group_code";

namespace {

/// A text for the list, cut to a readable length: an imported text may be megabytes long.
QString brief(const QString &text)
{
    constexpr qsizetype longest = 1000;
    return text.size() <= longest ? text : text.left(longest) + u'…';
}

ShipmentRecord recordOf(const Statement &row)
{
    ShipmentRecord record{.id = row.integer(0), .createdAt = timeOf(row.real(1))};
    record.carrier = brief(row.text(2));
    record.service = brief(row.text(3));
    record.postage = row.real(4);
    record.recipient = brief(row.text(5));
    record.services = brief(row.text(6));
    record.tracking = brief(row.text(7));
    record.trackingURL = row.text(8);
    record.weight = brief(row.text(9));
    record.weightOz = row.real(10);
    record.descriptionText = brief(row.text(11));
    record.reference = brief(row.text(12));
    record.transactionID = row.text(13);
    record.labelURL = row.text(14);
    record.status = brief(row.text(15));
    record.testMode = row.integer(16) != 0;
    record.zip11 = brief(row.text(17));
    record.declaredValue = brief(row.text(18));
    record.groupCode = brief(row.text(19));
    record.email = brief(row.text(20));
    record.balance = brief(row.text(21));
    record.isIntl = row.integer(22) != 0;
    record.customsDocURL = row.text(23);
    record.hasCustomsPDF = row.integer(24) != 0;
    return record;
}

} // namespace

bool append(QList<ShipmentRecord> &records, Statement &query, const Wanted &isWanted)
{
    while (query.step()) {
        ShipmentRecord record = recordOf(query);
        if (!isWanted || isWanted(record))
            records.append(std::move(record));
    }
    return query.isComplete();
}

std::optional<QList<ShipmentRecord>> allOf(const Database &db, Statement &query, const Wanted &isWanted)
{
    QList<ShipmentRecord> records;
    const bool isRead = append(records, query, isWanted) && RefundNotes::addTo(db, records);
    return isRead ? std::optional(std::move(records)) : std::nullopt;
}

QString listOf(std::span<const qint64> ids)
{
    QStringList numbers;
    for (const qint64 id : ids)
        numbers += QString::number(id);
    return u'[' + numbers.join(u',') + u']';
}

std::optional<QList<ShipmentRecord>> withIds(const Database &db, const std::vector<qint64> &ids)
{
    // One statement, because starting one for each row takes a third of the time. The left side of a CROSS JOIN is read
    // in its order.
    Statement rows(db, "SELECT shown.* FROM (SELECT value AS wanted FROM json_each(?)) CROSS JOIN (" +
                           QByteArray(select) + ") AS shown WHERE shown.id = wanted");
    if (rows.isPrepared())
        rows.bind(1, listOf(ids));
    return allOf(db, rows);
}

std::optional<QList<ShipmentRecord>> rowOf(const Database &db, const ShipmentRecord &record)
{
    Statement query(db, QByteArray(select) +
                            (record.id ? " WHERE id = ?"
                                       : " WHERE created_at >= ? AND transaction_id = ? AND transaction_id <> ''"
                                         " ORDER BY created_at DESC, id DESC LIMIT 1"));
    if (!query.isPrepared())
        return std::nullopt;
    if (record.id) {
        query.bind(1, record.id);
    } else {
        query.bind(1, secondsOf(record.createdAt.addDays(-1))); // the clock may have been set back
        query.bind(2, record.transactionID);
    }
    return allOf(db, query);
}

std::optional<QList<ShipmentRecord>> withTransactions(const Database &db, const QStringList &ids,
                                                      const QDateTime &since)
{
    Statement query(db, select + QByteArray(" WHERE created_at >= ? AND transaction_id <> '' AND transaction_id IN"
                                            " (SELECT value FROM json_each(?)) ORDER BY created_at, id"));
    if (query.isPrepared()) {
        query.bind(1, secondsOf(since));
        query.bind(2, QString::fromUtf8(encodeJson(ids, Keys::asIs)));
    }
    return allOf(db, query);
}

std::optional<qint64> idOf(const Database &db, const ShipmentRecord &label)
{
    const auto isLabel = [&label](const ShipmentRecord &row) {
        return row.transactionID == label.transactionID && row.tracking == label.tracking;
    };
    const auto same = rowOf(db, label);
    if (!same || std::ranges::any_of(*same, isLabel))
        return same ? std::optional(same->first().id) : std::nullopt;
    const auto moved = rowOf(db, {.createdAt = label.createdAt, .transactionID = label.transactionID});
    if (!moved)
        return std::nullopt;
    return moved->isEmpty() ? 0 : moved->first().id;
}

bool hasTable(const Database &db, const char *name)
{
    Statement query(db, "SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?");
    if (query.isPrepared())
        query.bind(1, QString::fromLatin1(name));
    return query.step();
}

namespace {

/// A value of a new row.
struct Value {
    Statement::Kind kind = Statement::Kind::null;
    double real = 0;
    QByteArrayView bytes = {};

    // As SQLite stores it: NaN becomes NULL, and -0 becomes 0.
    Value(double number)
        : kind(std::isnan(number) ? Statement::Kind::null : Statement::Kind::number), real(number + 0.0)
    {
    }
    Value(QByteArrayView text) : kind(Statement::Kind::text), bytes(text) {}
    Value(const std::optional<QByteArrayView> &document)
        : kind(document ? Statement::Kind::blob : Statement::Kind::null), bytes(document.value_or(QByteArrayView()))
    {
    }
};

std::optional<QByteArrayView> viewOf(const std::optional<QByteArray> &document)
{
    return document ? std::optional(QByteArrayView(*document)) : std::nullopt;
}

} // namespace

NewRow::NewRow(const Values &row)
{
    const Value values[columns] = {
        row.createdAt,       row.carrier,          row.service,     row.services,      row.postage,
        row.balance,         row.declaredValue,    row.recipient,   row.zip11,         row.email,
        double(row.isIntl),  row.tracking,         row.trackingURL, row.transactionID, row.labelURL,
        row.customsDocURL,   double(row.testMode), row.zpl,         row.weight,        row.weightOz,
        row.descriptionText, row.reference,        row.groupCode,   row.status,        row.customsPDF};
    qsizetype size = columns * LogChain::valueHead;
    for (const Value &value : values)
        size += value.bytes.size();
    m_sealed = QByteArray(size, Qt::Uninitialized);
    char *const start = m_sealed.data(), *at = start;
    for (std::size_t column = 0; column < columns; ++column) {
        m_starts[column] = at - start;
        at = LogChain::putValue(at, values[column].kind, values[column].real, values[column].bytes);
    }
    m_starts[columns] = at - start;
}

NewRow::NewRow(const ShipmentRecord &record)
    : NewRow(Values{.createdAt = secondsOf(record.createdAt),
                    .carrier = record.carrier.toUtf8(),
                    .service = record.service.toUtf8(),
                    .services = record.services.toUtf8(),
                    .postage = record.postage,
                    .balance = record.balance.toUtf8(),
                    .declaredValue = record.declaredValue.toUtf8(),
                    .recipient = record.recipient.toUtf8(),
                    .zip11 = record.zip11.toUtf8(),
                    .email = record.email.toUtf8(),
                    .isIntl = record.isIntl,
                    .tracking = record.tracking.toUtf8(),
                    .trackingURL = record.trackingURL.toUtf8(),
                    .transactionID = record.transactionID.toUtf8(),
                    .labelURL = record.labelURL.toUtf8(),
                    .customsDocURL = record.customsDocURL.toUtf8(),
                    .testMode = record.testMode,
                    .zpl = viewOf(record.zpl),
                    .weight = record.weight.toUtf8(),
                    .weightOz = record.weightOz,
                    .descriptionText = record.descriptionText.toUtf8(),
                    .reference = record.reference.toUtf8(),
                    .groupCode = record.groupCode.toUtf8(),
                    .status = record.status.toUtf8(),
                    .customsPDF = viewOf(record.customsPDF)})
{
}

Statement::Kind NewRow::kind(int column) const
{
    return Statement::Kind(qFromLittleEndian<qint64>(sealed(column, 1).data()));
}

double NewRow::real(int column) const
{
    return std::bit_cast<double>(qFromLittleEndian<qint64>(sealed(column, 1).data() + sizeof(qint64)));
}

QByteArrayView NewRow::bytes(int column) const
{
    return sealed(column, 1).sliced(LogChain::valueHead);
}

QByteArrayView NewRow::sealed(int column, int count) const
{
    const qsizetype start = m_starts[std::size_t(column)];
    return {m_sealed.constData() + start, m_starts[std::size_t(column + count)] - start};
}

QByteArray NewRow::insertSql()
{
    return QByteArray("INSERT INTO shipments (") + sealedColumns + ", status, customs_pdf) VALUES (?" +
           QByteArray(", ?").repeated(columns - 1) + ")";
}

bool NewRow::store(Statement &insert) const
{
    if (!insert.isPrepared())
        return false;
    NewRows::bind(insert, 1, *this);
    return insert.execute();
}

bool markUndated(Database &db, qint64 id)
{
    return db.exec("CREATE TABLE IF NOT EXISTS undated_imports (shipment_id INTEGER PRIMARY KEY)") &&
           execute(db, "INSERT INTO undated_imports (shipment_id) VALUES (?)", id);
}

QByteArray datedCondition(const Database &db)
{
    return hasTable(db, "undated_imports") ? " AND id NOT IN (SELECT shipment_id FROM undated_imports)" : "";
}

} // namespace parcelory::ShipmentLogRows
