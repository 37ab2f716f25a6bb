#include "app/purchase/LabelVerdictTexts.h"

#include "core/Words.h"

#include <QStringList>

#include <algorithm>

namespace parcelory::LabelVerdictTexts {
using namespace Qt::StringLiterals;

namespace {

constexpr Word<LabelItem> names[] = {
    {LabelItem::name, u"name"},
    {LabelItem::houseNumber, u"house number"},
    {LabelItem::unit, u"unit"},
    {LabelItem::city, u"city"},
    {LabelItem::state, u"state"},
    {LabelItem::zip, u"ZIP"},
    {LabelItem::country, u"country"},
    {LabelItem::trackingText, u"tracking number"},
    {LabelItem::trackingCode, u"tracking number in the bar code"},
    {LabelItem::senderZip, u"sender's ZIP"},
    {LabelItem::mark, u"sample mark"},
};

QStringList namesWith(const LabelVerdict &verdict, LabelMatch match)
{
    QStringList items;
    for (const LabelFinding &finding : verdict.findings) {
        if (finding.match == match)
            items += nameOf(finding.item);
    }
    return items;
}

/// Some carriers print no mark on the labels of a test key.
LabelVerdict withoutMark(LabelVerdict verdict)
{
    verdict.findings.removeIf([](const LabelFinding &finding) {
        return finding.item == LabelItem::mark && finding.match == LabelMatch::notFound;
    });
    return verdict;
}

} // namespace

QString nameOf(LabelItem item)
{
    return textOf(names, item);
}

QString sentenceOf(const LabelFinding &difference)
{
    const QString name = nameOf(difference.item);
    if (difference.item == LabelItem::mark)
        return u"This label says “%1”, but the key is live."_s.arg(difference.onLabel);
    if (difference.onLabel.isEmpty())
        return u"The %1 is missing on the label: %2."_s.arg(name, difference.onParcel);
    if (difference.onParcel.isEmpty())
        return u"The %1 is only on the label: %2."_s.arg(name, difference.onLabel);
    return u"The %1 differs: %2 on the parcel, %3 on the label."_s.arg(name, difference.onParcel, difference.onLabel);
}

LabelOutcome outcomeOf(const std::optional<LabelVerdict> &verdict)
{
    if (!verdict || verdict->findings.isEmpty())
        return LabelOutcome::notCompared;
    const LabelVerdict relevant = withoutMark(*verdict);
    const auto has = [&](LabelMatch match) {
        return std::ranges::find(relevant.findings, match, &LabelFinding::match) != relevant.findings.end();
    };
    return has(LabelMatch::different)   ? LabelOutcome::different
           : has(LabelMatch::notFound)  ? LabelOutcome::notFound
           : has(LabelMatch::unchecked) ? LabelOutcome::unchecked
                                        : LabelOutcome::same;
}

QString lineOf(const std::optional<LabelVerdict> &verdict)
{
    const LabelVerdict relevant = withoutMark(verdict.value_or(LabelVerdict()));
    const QStringList different = namesWith(relevant, LabelMatch::different),
                      unchecked = namesWith(relevant, LabelMatch::unchecked);
    switch (outcomeOf(verdict)) {
    case LabelOutcome::notCompared:
        break;
    case LabelOutcome::same:
        return u"Address and tracking match the label ✓"_s;
    case LabelOutcome::different:
        if (different.size() == 1)
            return sentenceOf(*std::ranges::find(relevant.findings, LabelMatch::different, &LabelFinding::match));
        return u"%1 things differ: %2."_s.arg(QString::number(different.size()), different.join(u", "_s));
    case LabelOutcome::notFound:
        return u"Not found on the label: %1."_s.arg(namesWith(relevant, LabelMatch::notFound).join(u", "_s));
    case LabelOutcome::unchecked:
        return unchecked.size() == relevant.findings.size() ? u"Cannot be checked: graphic"_s
                                                            : u"Cannot be checked: %1"_s.arg(unchecked.join(u", "_s));
    }
    return u"Not checked"_s;
}

QString itemsWith(const LabelVerdict &verdict, LabelMatch match)
{
    const QString items = namesWith(verdict, match).join(u", "_s);
    return items.left(1).toUpper() + items.mid(1);
}

} // namespace parcelory::LabelVerdictTexts
