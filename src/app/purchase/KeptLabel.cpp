#include "app/purchase/KeptLabel.h"

#include "core/Words.h"
#include "records/FetchedLabels.h"
#include "records/LabelVerdicts.h"
#include "records/LogRead.h"

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr Word<LabelItem> itemWords[] = {
    {LabelItem::name, u"NAME"},
    {LabelItem::houseNumber, u"HOUSE_NUMBER"},
    {LabelItem::unit, u"UNIT"},
    {LabelItem::city, u"CITY"},
    {LabelItem::state, u"STATE"},
    {LabelItem::zip, u"ZIP"},
    {LabelItem::country, u"COUNTRY"},
    {LabelItem::trackingText, u"TRACKING_TEXT"},
    {LabelItem::trackingCode, u"TRACKING_CODE"},
    {LabelItem::senderZip, u"SENDER_ZIP"},
    {LabelItem::mark, u"MARK"},
};

constexpr Word<LabelMatch> matchWords[] = {
    {LabelMatch::same, u"SAME"},
    {LabelMatch::different, u"DIFFERENT"},
    {LabelMatch::notFound, u"NOT_FOUND"},
    {LabelMatch::unchecked, u"UNCHECKED"},
};

/// Nothing if a later version has stored an item or a result that this one does not know: it must not count as a match.
std::optional<LabelVerdict> verdictOf(const QList<StoredFinding> &stored)
{
    LabelVerdict verdict;
    for (const StoredFinding &finding : stored) {
        const auto item = valueOf(itemWords, finding.item);
        const auto match = valueOf(matchWords, finding.match);
        if (!item || !match)
            return std::nullopt;
        verdict.findings += {*item, *match, finding.onParcel, finding.onLabel, finding.elements};
    }
    return verdict.findings.isEmpty() ? std::nullopt : std::optional(verdict);
}

/// The row's id now: the log may have been replaced since the record was read. 0 if the log does not have it.
LogRead<qint64> idOf(const ShipmentLog &log, const ShipmentRecord &record)
{
    if (record.transactionID.isEmpty())
        return record.id;
    const auto row = log.find(record);
    if (!row.isRead())
        return LogRead<qint64>::failed(row.failure());
    return *row ? (*row)->id : 0;
}

} // namespace

LogRead<KeptLabel> keptLabel(const ShipmentLog &log, const ShipmentRecord &record)
{
    KeptLabel kept{.bytes = record.zpl, .verdict = {}};
    const LogRead<qint64> id = idOf(log, record);
    if (!id.isRead())
        return kept.bytes ? LogRead(kept) : LogRead<KeptLabel>::failed(id.failure());
    if (!kept.bytes && *id > 0) {
        const auto stored = log.zpl(*id);
        if (!stored.isRead())
            return LogRead<KeptLabel>::failed(stored.failure());
        kept.bytes = *stored;
    }
    if (!kept.bytes && *id > 0)
        kept.bytes = FetchedLabels::of(log, *id).valueOr({});
    if (*id > 0)
        kept.verdict = verdictOf(LabelVerdicts::of(log, *id).valueOr({}));
    return kept;
}

bool keepFetched(ShipmentLog &log, const ShipmentRecord &record, const QByteArray &label)
{
    return FetchedLabels::put(log, record, label);
}

bool keepVerdict(ShipmentLog &log, const ShipmentRecord &record, const LabelVerdict &verdict)
{
    QList<StoredFinding> findings;
    for (const LabelFinding &finding : verdict.findings)
        findings += {textOf(itemWords, finding.item), textOf(matchWords, finding.match), finding.onParcel,
                     finding.onLabel, finding.elements};
    return LabelVerdicts::put(log, record, findings);
}

} // namespace parcelory
