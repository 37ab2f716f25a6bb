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

/// An imported line is exported as one line. A second export writes the same, once weight and postage are rounded.
void mailLog(const QByteArray &bytes)
{
    EndiciaDates dates;
    QByteArrayView rest = bytes;
    for (QByteArrayView line = EndiciaFormat::takeLine(rest); !line.isEmpty(); line = EndiciaFormat::takeLine(rest)) {
        auto read = EndiciaFormat::parse(line, dates);
        if (read && !read->createdAt) // an import dates it with its own time
            read->createdAt = 1795608000000;
        QByteArray former;
        for (int exports = 0; read && exports < 3; ++exports) {
            QByteArray exported;
            EndiciaFormat::append(exported, *read, dates);
            fuzz::require(exported.count('\n') == 1 && (exports < 2 || exported == former));
            former = exported;
            read = EndiciaFormat::parse(QByteArrayView(former).chopped(1), dates);
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
