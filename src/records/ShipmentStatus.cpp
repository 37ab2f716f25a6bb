#include "records/ShipmentStatus.h"

#include "records/ShipmentRecord.h"
#include "records/StatusWords.h"

#include <QLocale>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

RefundState refundState(const QString &status)
{
    switch (logStatusFrom(status).value_or(LogStatus::printed)) {
    case LogStatus::refundPending:
    case LogStatus::refundRequested:
        return RefundState::pending;
    case LogStatus::refunded:
        return RefundState::granted;
    case LogStatus::refundError:
        return RefundState::failed;
    case LogStatus::printed:
    case LogStatus::delivered:
        break;
    }
    return RefundState::none;
}

RefundState refundState(const ShipmentRecord &record)
{
    const RefundState told = refundState(record.status);
    return told == RefundState::none ? refundState(record.refund) : told;
}

QString statusAfter(RefundState refund, const QString &status)
{
    switch (refund) {
    case RefundState::pending:
        return wordOf(LogStatus::refundPending);
    case RefundState::granted:
        return wordOf(LogStatus::refunded);
    case RefundState::failed: // otherwise every sync asks again, and the clerk waits for money
        return wordOf(LogStatus::refundError);
    case RefundState::none:
        break;
    }
    return refundState(status) == RefundState::pending ? wordOf(LogStatus::printed) : status;
}

QString refundBadge(RefundState refund)
{
    switch (refund) {
    case RefundState::pending:
        return u"REFUND PENDING"_s;
    case RefundState::granted:
        return u"REFUNDED"_s;
    case RefundState::failed:
        return u"REFUND FAILED"_s;
    case RefundState::none:
        break;
    }
    return {};
}

QString friendlyStatus(const QString &status)
{
    if (status.isEmpty())
        return u"—"_s;
    const std::optional<LogStatus> known = logStatusFrom(status);
    if (!known)
        return status;
    switch (*known) {
    case LogStatus::printed:
        return u"Printed"_s;
    case LogStatus::delivered:
        return u"Delivered"_s;
    case LogStatus::refundPending:
    case LogStatus::refundRequested:
        return u"Refund pending (USPS: up to 14 days)"_s;
    case LogStatus::refunded:
        return u"Refunded"_s;
    case LogStatus::refundError:
        return u"Refund failed — see Error Log"_s;
    }
    return status;
}

QString friendlyStatus(const ShipmentRecord &record)
{
    const QString status = friendlyStatus(record.status);
    const bool isNoted = refundState(record.status) == RefundState::none && refundState(record) != RefundState::none;
    return isNoted ? status + u" — "_s + friendlyStatus(record.refund) : status;
}

QString refundRefusal(const ShipmentRecord &record)
{
    return u"The carrier has refused the refund of %1's label (%2)."_s.arg(record.recipientName(), record.tracking);
}

QString dateTimeText(const QDateTime &time)
{
    return QLocale::c().toString(time.toLocalTime(), u"MM/dd/yy, h:mm AP"_s);
}

} // namespace parcelory
