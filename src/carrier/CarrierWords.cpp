#include "carrier/CarrierWords.h"

#include "carrier/ShippoRecords.h"
#include "core/Words.h"

#include <cstddef>
#include <optional>

namespace parcelory {

namespace {

constexpr Word<TransactionStatus> transactionWords[] = {
    {TransactionStatus::queued, u"QUEUED"},
    {TransactionStatus::waiting, u"WAITING"},
    {TransactionStatus::success, u"SUCCESS"},
    {TransactionStatus::error, u"ERROR"},
    {TransactionStatus::refunded, u"REFUNDED"},
    {TransactionStatus::refundPending, u"REFUNDPENDING"},
    {TransactionStatus::refundRejected, u"REFUNDREJECTED"},
};

constexpr Word<RefundAnswer> refundWords[] = {
    {RefundAnswer::queued, u"QUEUED"},
    {RefundAnswer::pending, u"PENDING"},
    {RefundAnswer::success, u"SUCCESS"},
    {RefundAnswer::error, u"ERROR"},
};

constexpr Word<ManifestStatus> manifestWords[] = {
    {ManifestStatus::queued, u"QUEUED"},
    {ManifestStatus::waiting, u"WAITING"},
    {ManifestStatus::success, u"SUCCESS"},
    {ManifestStatus::error, u"ERROR"},
};

template <class Value, std::size_t count>
Value read(const Word<Value> (&table)[count], QAnyStringView word)
{
    return valueOf(table, word, Qt::CaseInsensitive).value_or(Value::unknown);
}

} // namespace

TransactionStatus transactionStatusFrom(QAnyStringView word)
{
    return read(transactionWords, word);
}

TransactionStatus transactionStatus(const ShippoTransaction &transaction)
{
    return transactionStatusFrom(transaction.status);
}

RefundAnswer refundAnswer(const ShippoRefund &refund)
{
    return read(refundWords, refund.status.value_or(QString()));
}

ManifestStatus manifestStatus(const ShippoManifest &manifest)
{
    return read(manifestWords, manifest.status.value_or(QString()));
}

bool isPending(const ShippoTransaction &transaction)
{
    const TransactionStatus status = transactionStatus(transaction);
    return status == TransactionStatus::queued || status == TransactionStatus::waiting;
}

bool isPending(const ShippoManifest &manifest)
{
    const ManifestStatus status = manifestStatus(manifest);
    return status == ManifestStatus::queued || status == ManifestStatus::waiting;
}

} // namespace parcelory
