#include "records/DayOfLabels.h"

#include "records/LabelChecks.h"
#include "records/ShipmentStatus.h"

#include <algorithm>
#include <tuple>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

bool isOf(const ShipmentRecord &record, QStringView carrier)
{
    return record.carrier.trimmed().compare(carrier, Qt::CaseInsensitive) == 0;
}

/// True once a refund is asked for, unless it was refused.
bool isGivenBack(const ShipmentRecord &record)
{
    const RefundState refund = refundState(record);
    return refund == RefundState::pending || refund == RefundState::granted;
}

std::optional<Exemption> exemptionOf(const ShipmentRecord &record, KeyView key)
{
    if (!isCarriersId(record.transactionID))
        return Exemption::imported;
    if (record.testMode != key.test)
        return Exemption::otherKey;
    return isGivenBack(record) ? std::optional(Exemption::refund) : std::nullopt;
}

/// The service without the carrier's name, which has a column of its own.
QString serviceOf(const ShipmentRecord &record)
{
    const QString prefix = record.carrier + u' ';
    return record.service.startsWith(prefix) ? record.service.mid(prefix.size()) : record.service;
}

void count(DayOfLabels &day, const ShipmentRecord &record)
{
    const QString service = serviceOf(record);
    auto line = std::ranges::find_if(day.spend, [&](const ServiceSpend &spend) {
        return spend.carrier == record.carrier && spend.service == service;
    });
    if (line == day.spend.end())
        line = day.spend.insert(day.spend.end(), ServiceSpend{.carrier = record.carrier, .service = service});
    ++line->labels;
    line->dollars += record.postage;
    ++day.counted;
    day.dollars += record.postage;
}

} // namespace

DayOfLabels sortDay(const QList<DayLabel> &labels, KeyView key)
{
    DayOfLabels day{.all = labels};
    for (const DayLabel &label : labels) {
        const ShipmentRecord &record = label.record;
        const std::optional<Exemption> exemption = exemptionOf(record, key);
        if (isOf(record, u"USPS")) {
            if (label.onForm)
                day.onForm += label;
            else if (exemption)
                day.exempt += {record, *exemption};
            else
                day.notOnForm += label;
        } else if (isOf(record, u"FedEx") && !exemption) {
            day.toHandOver += label;
        }
        if ((label.print == PrintState::never || label.print == PrintState::sent) && !isGivenBack(record))
            day.unprinted += label;
        if (!isGivenBack(record) && (!record.testMode || key.practice))
            count(day, record);
    }
    std::ranges::sort(day.spend, [](const ServiceSpend &one, const ServiceSpend &other) {
        const auto rank = [](const ServiceSpend &spend) {
            return std::tuple(spend.carrier != u"USPS", spend.carrier, -spend.dollars, spend.service);
        };
        return rank(one) < rank(other);
    });
    return day;
}

} // namespace parcelory
