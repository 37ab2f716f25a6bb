#include "ui/log/ShipmentTexts.h"

#include "core/Text.h"
#include "records/ShipmentRecord.h"
#include "records/ShipmentStatus.h"
#include "ui/log/LogModel.h"
#include "ui/parts/Badge.h"

namespace parcelory {
using namespace Qt::StringLiterals;

QString timeText(const ShipmentRecord &record)
{
    return dateTimeText(record.createdAt);
}

QString postageText(const ShipmentRecord &record)
{
    return u'$' + fixed(record.postage, 2);
}

QString recipientName(const ShipmentRecord &record)
{
    return record.recipientName();
}

QString recipientAddress(const ShipmentRecord &record)
{
    return record.recipient.section(u',', 1).trimmed();
}

QString trackingLines(const QString &tracking)
{
    constexpr int firstLine = 20;
    QString text = groupsOfFour(tracking);
    return text.size() > firstLine ? text.replace(firstLine - 1, 1, u'\n') : text;
}

QList<RowBadge> badgesOf(const ShipmentRecord &record)
{
    QList<RowBadge> badges;
    const RefundState refund = refundState(record);
    switch (refund) {
    case RefundState::pending:
        badges.append({refundBadge(refund), BadgeKind::pending, u"PENDING"_s});
        break;
    case RefundState::granted:
        badges.append({refundBadge(refund), BadgeKind::granted});
        break;
    case RefundState::failed:
        badges.append({refundBadge(refund), BadgeKind::failed, u"FAILED"_s});
        break;
    case RefundState::none:
        break;
    }
    if (record.testMode)
        badges.append({u"TEST"_s, BadgeKind::test});
    return badges;
}

} // namespace parcelory
