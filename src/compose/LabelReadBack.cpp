#include "compose/LabelReadBack.h"

#include "compose/Destination.h"
#include "compose/LabelBlocks.h"
#include "compose/LabelRecipient.h"
#include "compose/LabelWords.h"

#include <QRegularExpression>

#include <algorithm>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

QString lettersAndDigits(const QString &text)
{
    QString result;
    for (const QChar c : text.toUpper()) {
        if (c.isLetterOrNumber())
            result += c;
    }
    return result;
}

/// A text as a tracking number: without the words that carriers put before it.
QString withoutCaption(const QString &text)
{
    static const QRegularExpression caption(
        u"^\\s*(?:USPS|FEDEX)?\\s*(?:TRACKING|TRACK|TRK)\\s*(?:NUMBER|NO|ID)?\\s*[#.:]*\\s*"_s,
        QRegularExpression::CaseInsensitiveOption);
    return lettersAndDigits(QString(text).remove(caption));
}

/// False for a text that only stands in a number's place, such as in an imported row; it would look like any word.
bool isTrackingNumber(const QString &text)
{
    constexpr int fewestDigits = 8;
    return std::ranges::count_if(text, [](QChar c) { return c.isDigit(); }) >= fewestDigits;
}

LabelFinding trackingText(const LabelContents &label, const QString &tracking)
{
    LabelFinding finding{LabelItem::trackingText, LabelMatch::notFound, tracking, {}, {}};
    const QString number = lettersAndDigits(tracking);
    const auto kinds = [](const QString &text) {
        QString kind;
        for (const QChar c : text)
            kind += c.isDigit() ? u'9' : u'A';
        return kind;
    };
    for (const LabelText &text : label.texts) {
        const QString printed = withoutCaption(text.text);
        if (printed.contains(number))
            return {LabelItem::trackingText, LabelMatch::same, tracking, text.text, {text.element}};
        if (finding.match == LabelMatch::notFound && kinds(printed) == kinds(number))
            finding = {LabelItem::trackingText, LabelMatch::different, tracking, text.text.trimmed(), {text.element}};
    }
    return finding;
}

LabelFinding trackingCode(const LabelContents &label, const QString &tracking)
{
    LabelFinding finding{LabelItem::trackingCode,
                         label.codes.isEmpty() ? LabelMatch::unchecked : LabelMatch::notFound,
                         tracking,
                         {},
                         {}};
    const QString number = lettersAndDigits(tracking);
    for (const LabelCode &code : label.codes) {
        const QString data = lettersAndDigits(code.data);
        if (code.isLinear && data.contains(number))
            return {LabelItem::trackingCode, LabelMatch::same, tracking, data, {code.element}};
        const bool mayBeNumber = code.isLinear && data.size() >= number.size();
        if (mayBeNumber && finding.match == LabelMatch::notFound)
            finding = {LabelItem::trackingCode, LabelMatch::different, tracking, data, {code.element}};
    }
    return finding;
}

LabelFinding senderZip(const LabelContents &label, const LabelBlock &recipient, const QString &zip)
{
    const QString five = zip.left(5);
    LabelFinding finding{LabelItem::senderZip, LabelMatch::notFound, zip, {}, {}};
    const QRegularExpression word(u"(?<![\\d-])%1(?!\\d)"_s.arg(QRegularExpression::escape(five)));
    QList<qsizetype> recipients;
    for (const LabelRow &row : recipient)
        recipients += row.elements;
    for (const LabelText &text : label.texts) {
        if (recipients.contains(text.element))
            continue;
        if (word.match(text.text).hasMatch())
            return {LabelItem::senderZip, LabelMatch::same, zip, five, {text.element}};
        const auto place = placeOf(text.text);
        if (place && finding.match == LabelMatch::notFound)
            finding = {LabelItem::senderZip, LabelMatch::different, zip, place->zip, {text.element}};
    }
    return finding;
}

/// True for a text that says nothing but that the label is not to be mailed.
bool isMark(const QString &text)
{
    static const QStringList signs = {u"SAMPLE"_s, u"VOID"_s, u"SPECIMEN"_s, u"PRACTICE"_s, u"TEST"_s};
    static const QStringList fillers = {u"LABEL"_s, u"DO"_s,   u"NOT"_s,     u"MAIL"_s, u"MAILING"_s, u"FOR"_s,
                                        u"NO"_s,    u"USE"_s,  u"POSTAGE"_s, u"ONLY"_s, u"SHIP"_s,    u"SHIPPING"_s,
                                        u"PAID"_s,  u"THIS"_s, u"IS"_s,      u"A"_s};
    static const QStringList sentences = {u"DO NOT MAIL"_s, u"NOT FOR MAILING"_s, u"DO NOT SHIP"_s, u"DO NOT USE"_s,
                                          u"NO POSTAGE"_s};
    const QStringList words = LabelWords::folded(text);
    const bool isOnlyMark = !words.isEmpty() && std::ranges::all_of(words, [](const QString &word) {
        return signs.contains(word) || fillers.contains(word);
    });
    const QString joined = words.join(u' ');
    return isOnlyMark &&
           (std::ranges::any_of(words, [](const QString &word) { return signs.contains(word); }) ||
            std::ranges::any_of(sentences, [&](const QString &sentence) { return joined.contains(sentence); }));
}

LabelFinding mark(const LabelContents &label, const LabelBlock &recipient, const PrintedParcel &parcel)
{
    const QString expected = parcel.isLive ? u"live"_s : u"test"_s;
    QList<qsizetype> recipients;
    for (const LabelRow &row : recipient)
        recipients += row.elements;
    for (const LabelText &text : label.texts) {
        if (recipients.contains(text.element) || !isMark(text.text) ||
            std::ranges::any_of(parcel.ownTexts, [&](const QString &own) { return own.simplified() == text.text; }))
            continue;
        return {LabelItem::mark,
                parcel.isLive ? LabelMatch::different : LabelMatch::same,
                expected,
                text.text,
                {text.element}};
    }
    return {LabelItem::mark, parcel.isLive ? LabelMatch::same : LabelMatch::notFound, expected, {}, {}};
}

/// The verdict on a label that has no text, only pictures.
LabelVerdict unchecked(const PrintedParcel &parcel)
{
    LabelVerdict verdict;
    const auto add = [&](LabelItem item, const QString &text) {
        if (!text.isEmpty())
            verdict.findings.append({item, LabelMatch::unchecked, text, {}, {}});
    };
    const LabelWords::Street street = LabelWords::streetOf(parcel.to.street1 + u' ' + parcel.to.street2);
    add(LabelItem::name, parcel.to.name);
    add(LabelItem::houseNumber, street.numbers.join(u' '));
    add(LabelItem::unit, street.unitText);
    add(LabelItem::city, parcel.to.city);
    add(LabelItem::state, parcel.to.state);
    add(LabelItem::zip, parcel.to.zip);
    if (isInternationalCountry(parcel.to.country))
        add(LabelItem::country, parcel.to.country);
    add(LabelItem::trackingText, parcel.tracking);
    add(LabelItem::trackingCode, parcel.tracking);
    add(LabelItem::senderZip, parcel.senderZip);
    add(LabelItem::mark, parcel.isLive ? u"live"_s : u"test"_s);
    return verdict;
}

/// The ZIP in the postal bar code differs from the parcel's: 420, ZIP, tracking number.
void checkRoutingCode(LabelFinding &zip, const LabelContents &label, const PrintedParcel &parcel)
{
    static const QRegularExpression routing(u"^420(\\d{5})(?:\\d{4})?\\x1D?9\\d{19,25}$"_s);
    for (const LabelCode &code : label.codes) {
        const QRegularExpressionMatch match = routing.match(code.data);
        if (match.hasMatch() && match.captured(1) != parcel.to.zip.left(5) && zip.match != LabelMatch::different)
            zip = {LabelItem::zip, LabelMatch::different, parcel.to.zip, match.captured(1), {code.element}};
    }
}

} // namespace

const LabelFinding *LabelVerdict::find(LabelItem item) const
{
    const auto found = std::ranges::find(findings, item, &LabelFinding::item);
    return found == findings.end() ? nullptr : &*found;
}

QList<LabelFinding> LabelVerdict::faults() const
{
    QList<LabelFinding> faults = findings;
    faults.removeIf([](const LabelFinding &finding) {
        const bool mayDiffer = finding.item == LabelItem::city || finding.item == LabelItem::state ||
                               finding.item == LabelItem::country || finding.item == LabelItem::senderZip;
        return finding.match != LabelMatch::different || mayDiffer;
    });
    return faults;
}

LabelVerdict readBack(const LabelContents &label, const PrintedParcel &parcel)
{
    if (label.texts.isEmpty())
        return unchecked(parcel);
    const LabelBlock block = recipientBlock(blocksOf(label.texts), parcel);
    LabelVerdict verdict{.findings = compareRecipient(block, parcel.to), .addressOnLabel = {}};
    for (const LabelRow &row : block)
        verdict.addressOnLabel += row.text;
    if (!isInternationalCountry(parcel.to.country)) {
        for (LabelFinding &finding : verdict.findings) {
            if (finding.item == LabelItem::zip)
                checkRoutingCode(finding, label, parcel);
        }
    }
    if (isTrackingNumber(parcel.tracking))
        verdict.findings += {trackingText(label, parcel.tracking), trackingCode(label, parcel.tracking)};
    if (!parcel.senderZip.isEmpty())
        verdict.findings += senderZip(label, block, parcel.senderZip);
    verdict.findings += mark(label, block, parcel);
    return verdict;
}

QList<ShippoAddress> addressesOf(const QString &oneLine, const QString &zip, bool isAbroad)
{
    QStringList parts;
    for (const QString &part : oneLine.split(u',')) {
        if (!part.trimmed().isEmpty())
            parts += part.trimmed();
    }
    ShippoAddress address{.zip = zip.trimmed()};
    if (!parts.isEmpty())
        address.name = parts.takeFirst();
    if (isAbroad && !parts.isEmpty())
        address.country = parts.takeLast();
    if (!parts.isEmpty()) {
        address.city = parts.takeLast();
        const auto place = placeOf(address.city);
        if (place && !isAbroad) {
            address.city = place->city;
            address.state = place->state;
            if (address.zip.isEmpty())
                address.zip = place->zip;
        } else if (!address.zip.isEmpty()) {
            address.city = address.city.remove(address.zip).trimmed();
        }
    }
    QList<ShippoAddress> addresses;
    for (qsizetype companies = 0; companies <= parts.size(); ++companies) { // a name may have a comma, too
        address.company = parts.first(companies).join(u", "_s);
        address.street1 = parts.sliced(companies).join(u' ');
        if (companies == 0 || !LabelWords::streetOf(address.street1).numbers.isEmpty())
            addresses += address;
    }
    return addresses;
}

} // namespace parcelory
