#include "LargeLog.h"
#include "records/LogChain.h"
#include "records/ShipmentLog.h"

#include <QTemporaryDir>

#include <optional>

namespace parcelory::bench {
using namespace Qt::StringLiterals;

namespace {

/// As the program does with every row that it writes.
bool seal(Database &db)
{
    constexpr int portion = 5000;
    std::optional<qint64> last = 0;
    do
        last = LogChain::sealOlder(db, *last, portion);
    while (last.value_or(0));
    return last.has_value();
}

} // namespace

int rowCount()
{
    static const int asked = qEnvironmentVariableIntValue("PARCELORY_BENCH_ROWS");
    return asked > 0 ? asked : 100000;
}

const QDir &largeLog()
{
    static const QTemporaryDir folder;
    static const bool filled = [] {
        const ShipmentLog log(QDir(folder.path()));
        Database db(folder.filePath(u"mailing_log.sqlite"_s));
        return db.exec("PRAGMA synchronous = OFF; PRAGMA journal_mode = OFF; BEGIN") &&
               db.exec(
                   ("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < " +
                    QByteArray::number(rowCount()) +
                    ") INSERT INTO shipments (created_at, carrier, service, postage, recipient, services, tracking,"
                    " tracking_url, weight, weight_oz, description, reference, transaction_id, label_url, status,"
                    " test_mode, zip11, zpl) SELECT 1700000000 + i * 60, 'USPS', 'Priority Mail', 7.42,"
                    " 'Recipient ' || i || ', 418 Montford Ave, Asheville NC', 'Signature', '9210890175547700' || i,"
                    " 'https://tools.example.com/' || i, '1 lb 8.5 oz', 24.5, 'Three coins', 'INV-' || i, 'tx' || i,"
                    " 'https://labels.example.com/' || i, 'PRINTED', 0, '28801', randomblob(6144) FROM n")
                       .constData()) &&
               seal(db) && db.exec("COMMIT");
    }();
    static const QDir dir(folder.path());
    if (!filled)
        qFatal("the log could not be filled");
    return dir;
}

} // namespace parcelory::bench
