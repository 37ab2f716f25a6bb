#include "app/purchase/LabelDoubts.h"

#include "app/AppState.h"
#include "app/purchase/KeptLabel.h"
#include "app/purchase/LabelVerdictTexts.h"
#include "app/purchase/QuestionPictures.h"
#include "carrier/RequestBodies.h"
#include "core/ShippoAddress.h"
#include "core/Text.h"
#include "core/ports/Prompts.h"
#include "devices/Zpl.h"
#include "devices/ZplCommands.h"
#include "devices/zpl/ZplContents.h"
#include "devices/zpl/ZplReader.h"

#include <QScopeGuard>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;
using LabelVerdictTexts::nameOf;
using LabelVerdictTexts::sentenceOf;

namespace {

const QString missing = u"(missing)"_s; ///< in the place of a part that the label does not have

QString titleOf(const QList<LabelFinding> &faults)
{
    const auto isTracking = [](const LabelFinding &fault) {
        return fault.item == LabelItem::trackingText || fault.item == LabelItem::trackingCode;
    };
    if (faults.isEmpty())
        return u"Print This Label?"_s;
    if (std::ranges::all_of(faults, [](const LabelFinding &fault) { return fault.item == LabelItem::mark; }))
        return u"This Is a Sample Label"_s;
    return std::ranges::all_of(faults, isTracking) ? u"Wrong Tracking Number on This Label"_s
                                                   : u"This Label Doesn't Match the Parcel"_s;
}

/// The parcel's text as the label should have it.
QString parcelText(const PrintedParcel &parcel)
{
    const ShippoAddress &to = parcel.to;
    QStringList lines = {
        to.name,    to.company,     to.street1, to.street2, joinPresent({to.city, to.state, to.zip}, u" "_s),
        to.country, parcel.tracking};
    lines.removeAll(QString());
    return lines.join(u'\n');
}

bool isOfAddress(LabelItem item)
{
    return item != LabelItem::trackingText && item != LabelItem::trackingCode && item != LabelItem::senderZip &&
           item != LabelItem::mark;
}

QString labelText(const LabelVerdict &verdict)
{
    QStringList lines = verdict.addressOnLabel;
    const auto isMissing = [](const LabelFinding &fault) { return fault.onLabel.isEmpty() && isOfAddress(fault.item); };
    if (!lines.isEmpty() && std::ranges::any_of(verdict.faults(), isMissing))
        lines += missing;
    const LabelFinding *tracking = verdict.find(LabelItem::trackingText);
    if (tracking && !tracking->onLabel.isEmpty())
        lines += tracking->onLabel;
    return lines.isEmpty() ? u"(no address)"_s : lines.join(u'\n');
}

/// "Same on both: name, house number, ZIP and tracking number."
QString sameOnBoth(const LabelVerdict &verdict)
{
    QStringList names;
    for (const LabelFinding &finding : verdict.findings) {
        if (finding.match == LabelMatch::same && finding.item != LabelItem::mark)
            names += nameOf(finding.item);
    }
    if (names.isEmpty())
        return {};
    const QString last = names.takeLast();
    return u"Same on both: %1."_s.arg(names.isEmpty() ? last : names.join(u", "_s) + u" and "_s + last);
}

/// The faults with their places on the label. A part of the address that is missing has no place: the whole address is
/// shown.
QList<LabelFinding> placedFaults(const LabelVerdict &verdict)
{
    QList<qsizetype> address;
    for (const LabelFinding &finding : verdict.findings) {
        if (isOfAddress(finding.item) && finding.match != LabelMatch::different)
            address += finding.elements;
    }
    QList<LabelFinding> faults = verdict.faults();
    for (LabelFinding &fault : faults) {
        if (fault.onLabel.isEmpty() && isOfAddress(fault.item))
            fault.elements += address;
    }
    return faults;
}

Question questionAbout(const LabelDoubts &doubts)
{
    const QList<LabelFinding> faults = doubts.verdict.faults();
    QStringList reasons;
    if (!doubts.changes.isEmpty())
        reasons +=
            u"This label contains %1, which can change the printer's settings permanently. Carriers don't need such "
            "commands."_s.arg(doubts.changes);
    for (const LabelFinding &fault : faults)
        reasons += sentenceOf(fault);
    if (faults.isEmpty())
        return {.title = titleOf(faults),
                .text = reasons.join(u'\n') + u"\n\nThe label is in the mailing log. Reprint asks this again."_s,
                .choices = {u"Don't Print"_s, u"Print"_s},
                .safeChoice = 0};

    Comparison texts{.lead = reasons.join(u'\n'),
                     .leftTitle = u"Your parcel:"_s,
                     .left = parcelText(doubts.parcel),
                     .rightTitle = u"On the label:"_s,
                     .right = labelText(doubts.verdict),
                     .marked = {},
                     .closing = u"The label is bought. You can reprint or refund it from My Mailing Log."_s,
                     .markedRight = {},
                     .same = sameOnBoth(doubts.verdict)};
    for (const LabelFinding &fault : faults) {
        texts.marked += fault.onParcel;
        texts.markedRight += fault.onLabel.isEmpty() ? missing : fault.onLabel;
    }
    texts.marked.removeAll(QString());
    return {.title = titleOf(faults),
            .text = joinPresent({texts.lead, texts.leftTitle + u'\n' + texts.left,
                                 texts.rightTitle + u'\n' + texts.right, texts.closing},
                                u"\n\n"_s),
            .choices = {u"Don't Print"_s, u"Print Anyway"_s},
            .safeChoice = 0,
            .comparison = texts,
            .pictures = doubts.pictures};
}

/// The sender is left out: a wrong one holds no label.
PrintedParcel parcelTo(const ShippoAddress &to, const ShipmentRecord &record)
{
    return {.to = to,
            .senderZip = {},
            .tracking = record.tracking,
            .isLive = !record.testMode,
            .ownTexts = {record.reference, record.descriptionText}};
}

LabelDoubts compared(const QByteArray &label, const QList<PrintedParcel> &parcels)
{
    LabelDoubts best;
    const LabelKind kind = labelKind(label);
    if (kind == LabelKind::notALabel)
        return best;
    LabelContents contents{.texts = {}, .codes = {}, .hasPictures = true}; // only the texts of ZPL can be read
    if (kind == LabelKind::zpl) {
        best.changes = Zpl::lastingCommands(label).join(u", "_s);
        contents = contentsOf(readZpl(label));
    }
    for (qsizetype at = 0; at < parcels.size(); ++at) {
        const LabelVerdict verdict = readBack(contents, parcels[at]);
        if (at > 0 && verdict.faults().size() >= best.verdict.faults().size())
            continue;
        best.verdict = verdict;
        best.parcel = parcels[at];
    }
    if (const QList<LabelFinding> faults = placedFaults(best.verdict); !faults.isEmpty())
        best.pictures = enlargedParts(label, contents.texts, faults);
    return best;
}

} // namespace

bool LabelDoubts::isEmpty() const
{
    return changes.isEmpty() && verdict.faults().isEmpty();
}

QString LabelDoubts::reason() const
{
    QStringList reasons, items;
    if (!changes.isEmpty())
        reasons += u"it contains %1, which can change the printer's settings permanently"_s.arg(changes);
    for (const LabelFinding &fault : verdict.faults()) {
        if (fault.item == LabelItem::mark)
            reasons += u"it says “%1”, but the key is live"_s.arg(fault.onLabel);
        else
            items += nameOf(fault.item);
    }
    if (items.size() == 1)
        reasons += u"the %1 on the label differs"_s.arg(items.first());
    else if (!items.isEmpty())
        reasons += u"%1 things on the label differ: %2"_s.arg(items.size()).arg(items.join(u", "_s));
    return u"not printed because "_s + reasons.join(u"; "_s);
}

PrintedParcel parcelOf(const AppState &app, const OpenPurchase &purchase)
{
    ShippoAddress to = addressAsSent(purchase.recipient);
    to.company = app.sanitizer.sanitize(to.company);
    return parcelTo(to, purchase.record);
}

QList<PrintedParcel> recordedParcels(const ShipmentRecord &record)
{
    QList<PrintedParcel> parcels;
    for (const ShippoAddress &to : addressesOf(record.recipient, record.zip11, record.isIntl))
        parcels += parcelTo(to, record);
    return parcels;
}

void LabelDoubts::remember(const std::optional<LabelVerdict> &kept)
{
    if (kept && verdict.faults().isEmpty() && !kept->faults().isEmpty())
        verdict.findings = kept->findings;
}

Task<LabelDoubts> doubtsAbout(QByteArray label, QList<PrintedParcel> parcels)
{
    co_return co_await onPool([label, parcels] { return compared(label, parcels); });
}

Task<bool> mayPrint(AppState &app, LabelDoubts doubts, ShipmentRecord label)
{
    if (doubts.isEmpty())
        co_return true;
    app.openChoices = app.openChoices + 1;
    const auto answered = qScopeGuard([&app] { app.openChoices = app.openChoices - 1; });
    Question question = questionAbout(doubts);
    question.enlarge = [&app, label, verdict = doubts.verdict] { emit app.labelToShow(label, verdict); };
    const int answer = co_await app.platform.prompts.choose(question);
    co_return answer == 1;
}

} // namespace parcelory
