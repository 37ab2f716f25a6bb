#include "app/openitems/OpenItemTexts.h"

#include "core/Text.h"

#include <QRegularExpression>

namespace parcelory::OpenItemTexts {
using namespace Qt::StringLiterals;

namespace {

QString counted(int count, const QString &unit)
{
    return count == 1 ? u"1 "_s + unit : u"%1 %2s"_s.arg(QString::number(count), unit);
}

QString zipOf(const ShipmentRecord &label)
{
    static const QRegularExpression last(u"(\\d{5})(-\\d{4})?\\s*$"_s);
    return label.zip11.isEmpty() ? last.match(label.recipient).captured(1) : label.zip11.left(5);
}

} // namespace

QString title(const OpenItem &item)
{
    switch (item.reason) {
    case OpenReason::refundRejected:
        return item.isScanned ? u"Refund rejected — the carrier has scanned the label"_s : u"Refund rejected"_s;
    case OpenReason::refundUndecided:
        return item.daysOpen == 0 ? u"Refund asked — not decided"_s
                                  : u"Refund asked %1 ago — not decided"_s.arg(counted(item.daysOpen, u"day"_s));
    case OpenReason::refundUrgent:
    case OpenReason::refundEnding:
        return u"Unused for %1 — refund ends in %2"_s.arg(counted(item.days, u"day"_s),
                                                          counted(item.daysLeft, u"day"_s));
    case OpenReason::scanUnknown:
        return u"Scan unknown — refund ends in "_s + counted(item.daysLeft, u"day"_s);
    case OpenReason::returned:
        return u"Returned to sender"_s;
    case OpenReason::otherZip:
        return u"Delivered to another ZIP — %1, not %2"_s.arg(item.zip, zipOf(item.label));
    case OpenReason::customsPapers:
        return u"Customs papers not printed"_s;
    case OpenReason::labelUnchecked:
        return u"Label not checked after printing"_s;
    case OpenReason::unused:
        return u"Unused for "_s + counted(item.days, u"day"_s);
    case OpenReason::notScanned:
        return item.days < 2 ? u"Not scanned for 24 hours"_s : u"Not scanned for "_s + counted(item.days, u"day"_s);
    case OpenReason::noMovement:
        return u"No movement for "_s + counted(item.daysOpen, u"day"_s);
    case OpenReason::lateCopy:
        return item.isNever ? u"No good copy for %1"_s.arg(counted(item.days, u"day"_s))
                            : u"Last good copy %1 ago"_s.arg(counted(item.days, u"day"_s));
    }
    return {};
}

QString status(const OpenItem &item)
{
    const bool isUnknown = item.reason == OpenReason::scanUnknown;
    if (!isUnknown && stepOf(item.reason) != OpenStep::refund)
        return {};
    const QDateTime end = item.label.createdAt.addDays(OpenItems::refundEndsAfter);
    return (isUnknown ? u"Scan unknown — refund ends "_s : u"Not scanned — refund ends "_s) +
           end.toString(u"MM/dd/yy"_s);
}

QString detail(const OpenItem &item)
{
    if (item.reason == OpenReason::lateCopy)
        return u"Copies of the mailing log and the address book"_s;
    const ShipmentRecord &label = item.label;
    const QString service =
        label.service.startsWith(label.carrier) ? label.service : label.carrier + u' ' + label.service;
    const bool isSeen = item.reason == OpenReason::noMovement && !item.place.isEmpty();
    return service + u" · "_s + (isSeen ? u"last seen in "_s + item.place : u'$' + fixed(label.postage, 2));
}

QString place(const ShipmentRecord &label)
{
    static const QRegularExpression zip(u"\\s+\\d{5}(-\\d{4})?\\s*$"_s);
    const QStringList parts = label.recipient.split(u',');
    QString last = parts.size() > 1 ? parts.last().trimmed() : QString();
    if (label.isIntl || last.size() <= 2) // the country stands alone
        return parts.size() > 2 ? joinPresent({parts[parts.size() - 2].trimmed(), last}, u" "_s) : last;
    return last.remove(zip);
}

QString age(const OpenItem &item)
{
    return counted(item.days, u"day"_s);
}

QString step(OpenStep step)
{
    switch (step) {
    case OpenStep::track:
        return u"Track Online"_s;
    case OpenStep::refund:
        return u"Refund"_s;
    case OpenStep::checkStatus:
        return u"Check Status"_s;
    case OpenStep::fillLabel:
        return u"Fill Label"_s;
    case OpenStep::customsDocs:
        return u"Customs Docs"_s;
    case OpenStep::reprint:
        return u"Reprint"_s;
    case OpenStep::copyNow:
        return u"Copy Now"_s;
    }
    return {};
}

bool isUrgent(OpenReason reason)
{
    return reason == OpenReason::refundUrgent || reason == OpenReason::refundRejected;
}

QString spoken(const OpenItem &item)
{
    return joinPresent({title(item).replace(u" — "_s, u", "_s),
                        item.reason == OpenReason::refundUrgent ? u"urgent"_s : QString(), item.label.recipientName(),
                        age(item) + u" old"_s, u"next step "_s + step(stepOf(item.reason))},
                       u", "_s);
}

} // namespace parcelory::OpenItemTexts
