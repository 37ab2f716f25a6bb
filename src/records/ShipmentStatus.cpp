#include "records/ShipmentStatus.h"

#include "records/ShipmentRecord.h"

#include <QLocale>

#include <algorithm>
#include <iterator>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

struct StatusInfo {
    QString stored;
    QString display;
    RefundState refund = RefundState::none;
};

const StatusInfo *infoOf(const QString &status)
{
    static const QString pending = u"Refund pending (USPS: up to 14 days)"_s;
    static const StatusInfo table[] = {{u"PRINTED"_s, u"Printed"_s},
                                       {u"DELIVERED"_s, u"Delivered"_s},
                                       {u"REFUND_PENDING"_s, pending, RefundState::pending},
                                       {u"REFUND_REQUESTED"_s, pending, RefundState::pending},
                                       {u"REFUNDED"_s, u"Refunded"_s, RefundState::granted},
                                       {u"REFUND_ERROR"_s, u"Refund failed — see Error Log"_s, RefundState::failed},
                                       {QString(), u"—"_s}};
    const auto *found = std::ranges::find(table, status, &StatusInfo::stored);
    return found == std::end(table) ? nullptr : found;
}

} // namespace

RefundState refundState(const QString &status)
{
    const StatusInfo *info = infoOf(status);
    return info ? info->refund : RefundState::none;
}

QString refundBadge(const QString &status)
{
    switch (refundState(status)) {
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
    const StatusInfo *info = infoOf(status);
    return info ? info->display : status;
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
