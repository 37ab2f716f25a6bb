#include "records/ShipmentLogRows.h"

namespace parcelory::ShipmentLogRows {

const char *const select = "SELECT id, created_at, carrier, service, postage, recipient, services, tracking,\n"
                           "       tracking_url, weight, weight_oz, description, reference, transaction_id,\n"
                           "       label_url, status, test_mode, zip11, declared_value, group_code, email, balance,\n"
                           "       is_intl, customs_doc_url, (customs_pdf IS NOT NULL) AS has_customs\n"
                           "FROM shipments";

const char *const insert = "INSERT INTO shipments (created_at, carrier, service, postage, recipient, services,\n"
                           "  tracking, tracking_url, weight, weight_oz, description, reference, transaction_id,\n"
                           "  label_url, status, test_mode, zip11, declared_value, group_code, email, balance, zpl,\n"
                           "  is_intl, customs_doc_url, customs_pdf)\n"
                           "VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";

namespace {

ShipmentRecord recordOf(const Statement &row)
{
    ShipmentRecord record{.id = row.integer(0), .createdAt = QDateTime::fromMSecsSinceEpoch(msecsOf(row.real(1)))};
    record.carrier = row.text(2);
    record.service = row.text(3);
    record.postage = row.real(4);
    record.recipient = row.text(5);
    record.services = row.text(6);
    record.tracking = row.text(7);
    record.trackingURL = row.text(8);
    record.weight = row.text(9);
    record.weightOz = row.real(10);
    record.descriptionText = row.text(11);
    record.reference = row.text(12);
    record.transactionID = row.text(13);
    record.labelURL = row.text(14);
    record.status = row.text(15);
    record.testMode = row.integer(16) != 0;
    record.zip11 = row.text(17);
    record.declaredValue = row.text(18);
    record.groupCode = row.text(19);
    record.email = row.text(20);
    record.balance = row.text(21);
    record.isIntl = row.integer(22) != 0;
    record.customsDocURL = row.text(23);
    record.hasCustomsPDF = row.integer(24) != 0;
    return record;
}

} // namespace

QList<ShipmentRecord> recordsOf(Statement &query)
{
    QList<ShipmentRecord> records;
    while (query.step())
        records.append(recordOf(query));
    return records;
}

void bind(Statement &insert, const ShipmentRecord &record)
{
    int parameter = 0;
    const auto bind = [&](const auto &value) { insert.bind(++parameter, value); };
    bind(secondsOf(record.createdAt));
    bind(record.carrier);
    bind(record.service);
    bind(record.postage);
    bind(record.recipient);
    bind(record.services);
    bind(record.tracking);
    bind(record.trackingURL);
    bind(record.weight);
    bind(record.weightOz);
    bind(record.descriptionText);
    bind(record.reference);
    bind(record.transactionID);
    bind(record.labelURL);
    bind(record.status);
    bind(record.testMode);
    bind(record.zip11);
    bind(record.declaredValue);
    bind(record.groupCode);
    bind(record.email);
    bind(record.balance);
    bind(record.zpl);
    bind(record.isIntl);
    bind(record.customsDocURL);
    bind(record.customsPDF);
}

} // namespace parcelory::ShipmentLogRows
