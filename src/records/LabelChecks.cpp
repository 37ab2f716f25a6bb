#include "records/LabelChecks.h"

#include "records/ShipmentRecord.h"
#include "records/ShipmentStatus.h"
#include "records/StatusWords.h"

#include <algorithm>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// A warning if the carrier's tracking status shows that the parcel has left the desk; empty for any other status.
QString journeyText(const ShipmentRecord &record, const LabelFacts &facts)
{
    const bool isDelivered = logStatusFrom(record.status) == LogStatus::delivered;
    switch (isDelivered ? TrackingStatus::delivered : facts.tracked) {
    case TrackingStatus::delivered:
        return u"The carrier has delivered this package."_s;
    case TrackingStatus::transit:
        return u"This package is already on its way."_s;
    case TrackingStatus::returned:
        return u"The carrier has returned this package to the sender."_s;
    case TrackingStatus::failure:
        return u"The carrier reports a problem with this package."_s;
    case TrackingStatus::unknown:
    case TrackingStatus::preTransit:
        break;
    }
    return {};
}

QString refundText(LabelUse use, RefundState state)
{
    if (state == RefundState::granted)
        return u"This label was refunded. The carrier won't accept it."_s;
    if (state != RefundState::pending)
        return {};
    return use == LabelUse::refund ? u"A refund was requested before, but the carrier has no record of it."_s
                                   : u"A refund was requested for this label. Don't use it."_s;
}

QString ageText(LabelUse use, qint64 seconds)
{
    constexpr qint64 day = 24 * 3600;
    if (seconds <= freshDays * day)
        return {};
    return (use == LabelUse::refund ? u"This label is %1 days old. The carrier may refuse the refund."_s
                                    : u"This label is %1 days old. The carrier may not accept it."_s)
        .arg(seconds / day);
}

QString modeText(bool testLabel, std::optional<bool> testKey)
{
    if (!testKey || *testKey == testLabel)
        return {};
    return testLabel ? u"This is a TEST label, bought with a key that is not active."_s
                     : u"This is real postage, but the active key is a TEST key."_s;
}

QString reprintText(LabelUse use, const LabelFacts &facts)
{
    if (facts.reprints == 0 || use == LabelUse::scanForm)
        return {};
    const QString last = dateTimeText(facts.lastReprint);
    return (facts.reprints == 1
                ? u"This label was reprinted on %1"_s.arg(last)
                : u"This label was reprinted %1 times, last on %2"_s.arg(QString::number(facts.reprints), last)) +
           u". Make sure no copy is already on a package."_s;
}

QString formText(LabelUse use, const std::optional<QDateTime> &madeAt)
{
    if (!madeAt || use == LabelUse::reprint)
        return {};
    const QString form = dateTimeText(*madeAt);
    return use == LabelUse::refund
               ? u"This label is on the SCAN form of %1, so the carrier expects the package."_s.arg(form)
               : u"This label is already on the SCAN form of %1."_s.arg(form);
}

} // namespace

bool isCarriersId(const QString &transactionId)
{
    constexpr qsizetype length = 32;
    const auto isHex = [](QChar c) { return QStringView(u"0123456789abcdefABCDEF").contains(c); };
    return transactionId.size() == length && std::ranges::all_of(transactionId, isHex);
}

QString labelBlocker(LabelUse use, const ShipmentRecord &record)
{
    if (use == LabelUse::reprint)
        return record.labelURL.isEmpty() && !isCarriersId(record.transactionID) && !record.zpl
                   ? u"No copy of this label is stored, so it can't be reprinted."_s
                   : QString();
    if (use != LabelUse::refund && use != LabelUse::checkStatus)
        return {};
    const bool isRefund = use == LabelUse::refund;
    if (!isCarriersId(record.transactionID))
        return isRefund ? u"This shipment was imported, so you can't request its refund here."_s
                        : u"This shipment was imported, so you can't check its status here."_s;
    if (isRefund && refundState(record) == RefundState::granted)
        return u"This label was already refunded."_s;
    return !isRefund && record.tracking.isEmpty() ? u"This shipment has no tracking number."_s : QString();
}

QStringList labelWarnings(LabelUse use, const ShipmentRecord &record, const LabelFacts &facts)
{
    if (use == LabelUse::checkStatus) // a lookup changes nothing
        return {};
    QStringList warnings = {refundText(use, refundState(record)),
                            journeyText(record, facts),
                            ageText(use, record.createdAt.secsTo(facts.now)),
                            modeText(record.testMode, facts.testKey),
                            reprintText(use, facts),
                            formText(use, facts.onScanForm),
                            use == LabelUse::reprint ? facts.waiting : QString()};
    warnings.removeAll(QString());
    return warnings;
}

} // namespace parcelory
