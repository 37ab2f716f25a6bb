// Files that another version or a hand may have changed: the JSON stores, the rows of the journal and of an imported
// mail log; and what the update server and the back office's pages send.

#include "OneOf.h"
#include "backoffice/DesklineInvoice.h"
#include "backoffice/DesklinePage.h"
#include "core/Json.h"
#include "records/BoxProfile.h"
#include "records/EndiciaFormat.h"
#include "records/SenderProfile.h"
#include "records/ShipmentLogRows.h"
#include "records/ShipmentRecord.h"
#include "shell/ErrorLog.h"
#include "shell/UpdateFeed.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace parcelory {
namespace {

/// What was read is written and read again.
template <class Stored>
void stored(const QByteArray &bytes)
{
    const auto value = decodeJson<Stored>(bytes, Keys::asIs);
    const QByteArray text = encodeJson(value, Keys::asIs);
    fuzz::require(encodeJson(decodeJson<Stored>(text, Keys::asIs), Keys::asIs) == text);
}

/// A time as SQLite stores it, which has no value that is not a number.
void rowTime(const QByteArray &bytes)
{
    double seconds = 0;
    std::memcpy(&seconds, bytes.constData(), std::min(sizeof seconds, std::size_t(bytes.size())));
    if (!std::isnan(seconds))
        fuzz::require(ShipmentLogRows::timeOf(seconds).isValid());
}

QByteArray lineOf(const ShipmentRecord &record, EndiciaDates &dates)
{
    QByteArray line;
    const auto utf8 = [](const QString &text) { return text.toUtf8(); };
    const QByteArray texts[] = {
        utf8(record.status),        utf8(record.transactionID),   utf8(record.recipient), utf8(record.zip11),
        utf8(record.balance),       utf8(record.service),         utf8(record.services),  utf8(record.tracking),
        utf8(record.declaredValue), utf8(record.descriptionText), utf8(record.reference), utf8(record.groupCode),
        utf8(record.email)};
    EndiciaFormat::append(line,
                          {texts[0], record.createdAt.toMSecsSinceEpoch(), texts[1], texts[2], texts[3], record.postage,
                           record.weightOz, texts[4], texts[5], texts[6], texts[7], texts[8], texts[9], texts[10],
                           texts[11], texts[12]},
                          dates);
    return line;
}

/// An imported line is exported as one line. A second export writes the same, once weight and postage are rounded.
void mailLog(const QByteArray &bytes)
{
    EndiciaDates dates;
    QByteArrayView rest = bytes;
    for (QByteArrayView line = EndiciaFormat::takeLine(rest); !line.isEmpty(); line = EndiciaFormat::takeLine(rest)) {
        auto record = EndiciaFormat::parse(line, dates);
        if (record && !record->createdAt.isValid()) // an import dates it with its own time
            record->createdAt = QDateTime::fromSecsSinceEpoch(1795608000);
        QByteArray former;
        for (int exports = 0; record && exports < 3; ++exports) {
            const QByteArray exported = lineOf(*record, dates);
            fuzz::require(exported.count('\n') == 1 && (exports < 2 || exported == former));
            record = EndiciaFormat::parse(exported.chopped(1), dates);
            former = exported;
        }
    }
}

void updateFeed(const QByteArray &bytes)
{
    if (const auto info = parseUpdateFeed(bytes)) {
        info->signedText();
        fuzz::require(!(isNewer(info->version, info->notes) && isNewer(info->notes, info->version)));
    }
}

void invoicePage(const QByteArray &bytes)
{
    const auto page = parsePage(QString::fromUtf8(bytes));
    if (!page)
        return;
    const DesklineInvoice invoice = invoiceFrom(QStringLiteral("48213"), *page);
    fuzz::require(!invoice.buyerName.isEmpty());
    invoiceAttention(invoice);
    invoice.subtotal();
    invoice.suggestedCustomsType();
}

} // namespace
} // namespace parcelory

/// A zone with daylight-saving time, because the mail log's dates are in the machine's zone.
extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    qputenv("TZ", "America/New_York");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using namespace parcelory;
    static constexpr void (*readers[])(const QByteArray &) = {
        stored<ShippoAddress>,
        stored<ShipmentRecord>,
        stored<QList<BoxProfile>>,
        stored<QList<SenderProfile>>,
        stored<QList<APIErrorEntry>>,
        rowTime,
        mailLog,
        updateFeed,
        invoicePage,
    };
    fuzz::oneOf(readers, data, size);
    return 0;
}
