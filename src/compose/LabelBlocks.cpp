#include "compose/LabelBlocks.h"

#include "compose/LabelWords.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype mostTexts = 400; ///< a label has less than a hundred

bool areInOneRow(const LabelText &a, const LabelText &b)
{
    return std::abs(a.y + a.height - b.y - b.height) <= std::min(a.height, b.height) / 2;
}

/// True for texts of one line of an address, or of two lines below one another.
bool belongTogether(const LabelText &a, const LabelText &b)
{
    constexpr double widestGap = 2.5, highestGap = 1.5, mostDifference = 2;
    const double lower = std::min(a.height, b.height), higher = std::max(a.height, b.height);
    if (a.turn != b.turn || higher > lower * mostDifference)
        return false;
    if (areInOneRow(a, b)) {
        const LabelText &left = a.x <= b.x ? a : b, &right = a.x <= b.x ? b : a;
        return right.x - left.x - left.width <= widestGap * higher;
    }
    const LabelText &upper = a.y <= b.y ? a : b, &below = a.y <= b.y ? b : a;
    const double gap = below.y - upper.y - upper.height;
    const bool isFlush = std::abs(a.x - b.x) <= lower * 0.3 || std::abs(a.x + a.width - b.x - b.width) <= lower * 0.1;
    return isFlush && gap <= highestGap * lower;
}

/// True for "SHIP", "TO:" and the like.
bool isCaption(const QString &text)
{
    static const QStringList captions = {u"SHIP"_s, u"TO"_s, u"SHIP TO"_s, u"DELIVER TO"_s, u"RECIPIENT"_s};
    return captions.contains(LabelWords::folded(text).join(u' '));
}

LabelBlock rowsOf(QList<LabelText> texts)
{
    std::ranges::sort(texts, {}, [](const LabelText &text) { return text.y + text.height; });
    LabelBlock block;
    for (qsizetype from = 0; from < texts.size();) {
        qsizetype to = from + 1;
        while (to < texts.size() && areInOneRow(texts[from], texts[to]))
            ++to;
        std::sort(texts.begin() + from, texts.begin() + to,
                  [](const LabelText &a, const LabelText &b) { return a.x < b.x; });
        LabelRow row;
        const bool isAddress = to - from > 1; // a caption has a text beside it
        for (; from < to; ++from) {
            if (isAddress && isCaption(texts[from].text)) {
                row.isRecipient = true;
                continue;
            }
            row.text += (row.text.isEmpty() ? QString() : u" "_s) + texts[from].text.simplified();
            row.elements += texts[from].element;
        }
        block += row;
    }
    return block;
}

/// How much of the recipient's address a block has.
double score(const LabelBlock &block, const PrintedParcel &parcel)
{
    const ShippoAddress &to = parcel.to;
    QStringList words;
    for (const LabelRow &row : block)
        words += LabelWords::folded(row.text);
    const auto found = [&words](const QString &text, double each, double most) {
        double sum = 0;
        for (const QString &word : LabelWords::folded(text))
            sum += words.contains(word) ? each : 0;
        return std::min(sum, most);
    };
    double sum = found(to.name, 2, 5) + found(to.company, 1, 3) + found(to.street1, 1, 5) + found(to.street2, 1, 2) +
                 found(to.city, 2, 4) + found(to.zip.left(5), 3, 3);
    bool hasPlace = false, isSenders = false;
    for (const LabelRow &row : block) {
        const QStringList start = LabelWords::folded(row.text);
        if (row.isRecipient || start.value(0) == u"TO" || (start.value(0) == u"SHIP" && start.value(1) == u"TO"))
            sum += 2;
        if (const auto place = placeOf(row.text)) {
            hasPlace = true;
            isSenders = isSenders || place->zip == parcel.senderZip.left(5);
        }
    }
    if (isSenders && parcel.senderZip.left(5) != to.zip.left(5))
        sum -= 4;
    return sum + (hasPlace ? 1 : 0) + (block.size() > 2 ? 0.5 : 0);
}

} // namespace

QList<LabelBlock> blocksOf(const QList<LabelText> &all)
{
    const QList<LabelText> texts = all.first(std::min(all.size(), mostTexts));
    QList<qsizetype> group(texts.size());
    std::iota(group.begin(), group.end(), 0);
    for (qsizetype a = 0; a < texts.size(); ++a) {
        for (qsizetype b = 0; b < a; ++b) {
            if (group[a] != group[b] && belongTogether(texts[a], texts[b]))
                std::ranges::replace(group, qsizetype(group[a]), qsizetype(group[b]));
        }
    }
    QList<LabelBlock> blocks;
    for (qsizetype at = 0; at < texts.size(); ++at) {
        if (group.indexOf(group[at]) != at)
            continue;
        QList<LabelText> members;
        for (qsizetype other = at; other < texts.size(); ++other) {
            if (group[other] == group[at])
                members += texts[other];
        }
        blocks += rowsOf(members);
    }
    return blocks;
}

std::optional<LabelPlace> placeOf(const QString &line)
{
    static const QRegularExpression place(
        u"^(.*?)[ ,]+([A-Za-z]{2})[ ,]+(\\d{5})(?:[- ]?(\\d{4}))?(?![\\d-])[ ,]*(?:\\(?(?:US|USA|UNITED STATES)\\)?)?\\s*$"_s);
    const QRegularExpressionMatch match = place.match(line);
    if (!match.hasMatch())
        return std::nullopt;
    return LabelPlace{match.captured(1).trimmed(), match.captured(2).toUpper(), match.captured(3), match.captured(4)};
}

LabelBlock recipientBlock(const QList<LabelBlock> &blocks, const PrintedParcel &parcel)
{
    constexpr double least = 2; // less may be chance
    const LabelBlock *best = nullptr;
    double bestScore = least;
    for (const LabelBlock &block : blocks) {
        const double points = score(block, parcel);
        if (points >= bestScore && (!best || points > bestScore)) {
            best = &block;
            bestScore = points;
        }
    }
    if (best)
        return *best;
    for (const LabelBlock &block : blocks) {
        for (const LabelRow &row : block) {
            const auto place = placeOf(row.text);
            if (place && place->zip != parcel.senderZip.left(5))
                return block;
        }
    }
    return {};
}

} // namespace parcelory
