#include "ui/log/OpenItemCells.h"

#include "app/openitems/OpenItemTexts.h"
#include "core/Text.h"

#include <algorithm>
#include <numeric>

namespace parcelory::OpenItemCells {
using namespace Qt::StringLiterals;

QString iconOf(OpenReason reason)
{
    switch (reason) {
    case OpenReason::refundRejected:
    case OpenReason::refundUndecided:
        return u"ui_refund"_s;
    case OpenReason::refundUrgent:
        return u"ui_error"_s;
    case OpenReason::returned:
        return u"ui_home"_s;
    case OpenReason::otherZip:
        return u"ui_flag"_s;
    case OpenReason::customsPapers:
        return u"ui_document"_s;
    case OpenReason::labelUnchecked:
        return u"ui_qr"_s;
    case OpenReason::noMovement:
        return u"service_usps_tracking"_s;
    case OpenReason::lateCopy:
        return u"ui_shield"_s;
    default:
        return u"ui_status"_s;
    }
}

QString iconOf(OpenStep step)
{
    switch (step) {
    case OpenStep::track:
        return u"ui_external"_s;
    case OpenStep::refund:
        return u"ui_refund"_s;
    case OpenStep::checkStatus:
        return u"ui_status"_s;
    case OpenStep::fillLabel:
        return u"ui_edit"_s;
    case OpenStep::customsDocs:
        return u"ui_document"_s;
    case OpenStep::reprint:
        return u"ui_printer"_s;
    case OpenStep::copyNow:
        return u"ui_copy"_s;
    }
    return {};
}

QString firstLine(const OpenItem &item, int column)
{
    switch (column) {
    case what:
        return OpenItemTexts::title(item);
    case recipient:
        return item.label.recipientName();
    case tracking:
        return groupsOfFour(item.label.tracking);
    case age:
        return OpenItemTexts::age(item);
    case step:
        return OpenItemTexts::step(stepOf(item.reason));
    default:
        return {};
    }
}

QString secondLine(const OpenItem &item, int column)
{
    switch (column) {
    case what:
        return OpenItemTexts::detail(item);
    case recipient:
        return OpenItemTexts::place(item.label);
    case age:
        return item.label.createdAt.toString(u"MM/dd/yy"_s);
    default:
        return {};
    }
}

std::vector<qsizetype> orderOf(const QList<OpenItem> &items, int column, bool isFalling)
{
    if (column == age && isFalling)
        return {};
    std::vector<qsizetype> order(std::size_t(items.size()));
    std::iota(order.begin(), order.end(), qsizetype(0));
    if (column == age) {
        std::ranges::reverse(order);
        return order;
    }
    std::vector<QString> keys;
    keys.reserve(order.size());
    for (const OpenItem &item : items)
        keys.push_back(column == mark ? QString(QChar(u'a' + int(item.reason)))
                                      : firstLine(item, column).toCaseFolded());
    std::ranges::sort(order, [&](qsizetype left, qsizetype right) {
        const QString &one = keys[std::size_t(left)], &other = keys[std::size_t(right)];
        if (one == other)
            return left < right;
        return isFalling ? other < one : one < other;
    });
    return order;
}

} // namespace parcelory::OpenItemCells
