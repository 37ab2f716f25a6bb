#include "app/endofday/AccountDifferences.h"

#include "carrier/CarrierWords.h"
#include "records/LabelChecks.h"
#include "records/ShipmentStatus.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

namespace parcelory {

namespace {

bool isRefunded(const MasterEntry &entry)
{
    const TransactionStatus status = transactionStatusFrom(entry.status);
    return status == TransactionStatus::refunded || status == TransactionStatus::refundPending;
}

/// True if the account has the refund, or has rejected it.
bool isRefundAnswered(const MasterEntry &entry)
{
    return isRefunded(entry) || transactionStatusFrom(entry.status) == TransactionStatus::refundRejected;
}

/// True once the account has the label: a purchase in progress is not compared.
bool isSold(const MasterEntry &entry)
{
    const TransactionStatus status = transactionStatusFrom(entry.status);
    return status == TransactionStatus::success || status == TransactionStatus::refundRejected || isRefunded(entry);
}

bool isRefundKnown(const ShipmentRecord &record)
{
    const RefundState refund = refundState(record);
    return refund == RefundState::pending || refund == RefundState::granted;
}

/// True if the account had to know the refund when it was listed. A granted refund that was not asked here is the
/// carrier's own word.
bool isRefundAskedHere(const ShipmentRecord &record, const QDateTime &asked, const QDateTime &listed)
{
    return asked.isValid() ? isRefundKnown(record) && asked < listed : refundState(record) == RefundState::pending;
}

/// An amount of 0 means that the account does not tell it.
bool isOtherAmount(double account, double here)
{
    constexpr double halfACent = 0.005;
    return account != 0 && std::abs(account - here) >= halfACent;
}

AccountDifference of(const ShipmentRecord &record, DifferenceKind kind, const MasterEntry *entry)
{
    return {.id = record.transactionID,
            .kind = kind,
            .time = record.createdAt,
            .recipient = record.recipientName(),
            .service = record.service,
            .tracking = record.tracking,
            .account = entry ? std::optional(entry->amount) : std::nullopt,
            .here = record.postage,
            .row = record.id};
}

AccountDifference of(const MasterEntry &entry)
{
    return {.id = entry.id,
            .kind = DifferenceKind::boughtElsewhere,
            .time = entry.date.value_or(QDateTime()),
            .recipient = entry.recipient,
            .service = entry.service,
            .tracking = entry.tracking,
            .account = entry.amount};
}

} // namespace

QList<AccountDifference> differencesOf(QDate day, const DeskListing &desk, const AccountListing &account)
{
    const QList<ShipmentRecord> &rows = desk.rows;
    QList<AccountDifference> found;
    for (const ShipmentRecord &row : rows) {
        if (!isCarriersId(row.transactionID) || row.createdAt >= account.askedAt)
            continue;
        const auto entry = std::ranges::find(account.entries, row.transactionID, &MasterEntry::id);
        if (entry == account.entries.end()) {
            if (!account.isCut) // otherwise the account may list it further back
                found += of(row, DifferenceKind::notInAccount, nullptr);
        } else if (isRefunded(*entry) && !isRefundKnown(row)) {
            found += of(row, DifferenceKind::refundedThere, &*entry);
        } else if (isRefundAskedHere(row, desk.refundsAsked.value(row.transactionID), account.askedAt) &&
                   !isRefundAnswered(*entry)) {
            found += of(row, DifferenceKind::refundedHere, &*entry);
        } else if (isOtherAmount(entry->amount, row.postage)) {
            found += of(row, DifferenceKind::otherAmount, &*entry);
        }
    }
    for (const MasterEntry &entry : account.entries) {
        const bool isOfDay = entry.date && entry.date->date() == day;
        const bool isHere = std::ranges::find(rows, entry.id, &ShipmentRecord::transactionID) != rows.end();
        if (isOfDay && isSold(entry) && !isHere && !desk.known.contains(entry.id))
            found += of(entry);
    }
    std::ranges::sort(found, std::ranges::greater(),
                      [](const AccountDifference &one) { return std::pair(one.time, one.id); });
    return found;
}

} // namespace parcelory
