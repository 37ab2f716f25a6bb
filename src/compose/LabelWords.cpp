#include "compose/LabelWords.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace parcelory::LabelWords {
using namespace Qt::StringLiterals;

namespace {

struct Letter {
    char16_t letter;
    const char16_t *latin;
};

/// Letters that have no accent to remove, and the alphabets that carriers romanize, in capitals.
constexpr Letter letters[] = {
    {u'ẞ', u"SS"}, {u'Æ', u"AE"}, {u'Œ', u"OE"}, {u'Ø', u"O"},  {u'Ł', u"L"},    {u'Đ', u"D"},  {u'Ð', u"D"},
    {u'Þ', u"TH"}, {u'Ħ', u"H"},  {u'ı', u"I"},  {u'Ŋ', u"N"},  {u'А', u"A"},    {u'Б', u"B"},  {u'В', u"V"},
    {u'Г', u"G"},  {u'Ґ', u"G"},  {u'Д', u"D"},  {u'Е', u"E"},  {u'Є', u"YE"},   {u'Ж', u"ZH"}, {u'З', u"Z"},
    {u'И', u"I"},  {u'І', u"I"},  {u'Й', u"Y"},  {u'К', u"K"},  {u'Л', u"L"},    {u'М', u"M"},  {u'Н', u"N"},
    {u'О', u"O"},  {u'П', u"P"},  {u'Р', u"R"},  {u'С', u"S"},  {u'Т', u"T"},    {u'У', u"U"},  {u'Ф', u"F"},
    {u'Х', u"KH"}, {u'Ц', u"TS"}, {u'Ч', u"CH"}, {u'Ш', u"SH"}, {u'Щ', u"SHCH"}, {u'Ъ', u""},   {u'Ы', u"Y"},
    {u'Ь', u""},   {u'Э', u"E"},  {u'Ю', u"YU"}, {u'Я', u"YA"}, {u'Ђ', u"D"},    {u'Ј', u"J"},  {u'Љ', u"LJ"},
    {u'Њ', u"NJ"}, {u'Ћ', u"C"},  {u'Џ', u"DZ"}, {u'Α', u"A"},  {u'Β', u"V"},    {u'Γ', u"G"},  {u'Δ', u"D"},
    {u'Ε', u"E"},  {u'Ζ', u"Z"},  {u'Η', u"I"},  {u'Θ', u"TH"}, {u'Ι', u"I"},    {u'Κ', u"K"},  {u'Λ', u"L"},
    {u'Μ', u"M"},  {u'Ν', u"N"},  {u'Ξ', u"X"},  {u'Ο', u"O"},  {u'Π', u"P"},    {u'Ρ', u"R"},  {u'Σ', u"S"},
    {u'Τ', u"T"},  {u'Υ', u"Y"},  {u'Φ', u"F"},  {u'Χ', u"CH"}, {u'Ψ', u"PS"},   {u'Ω', u"O"}};

const QStringList designators = {
    u"APT"_s,   u"APARTMENT"_s, u"UNIT"_s,   u"STE"_s,      u"SUITE"_s, u"RM"_s,   u"ROOM"_s,  u"FL"_s,   u"FLR"_s,
    u"FLOOR"_s, u"FLAT"_s,      u"BLDG"_s,   u"BUILDING"_s, u"LOT"_s,   u"SPC"_s,  u"SPACE"_s, u"TRLR"_s, u"DEPT"_s,
    u"PMB"_s,   u"OFC"_s,       u"OFFICE"_s, u"PH"_s,       u"HNGR"_s,  u"SLIP"_s, u"#"_s};

QString latin(const QString &text)
{
    // Marks go first, except those that make another letter: a short I.
    QString result;
    for (const QChar c : text.toUpper().normalized(QString::NormalizationForm_C)) {
        if (c.unicode() <= 0x7f) {
            result += c;
            continue;
        }
        const auto *known = std::ranges::find(letters, c.unicode(), &Letter::letter);
        if (known != std::end(letters)) {
            result += QStringView(known->latin);
            continue;
        }
        for (const QChar part : QString(c).normalized(QString::NormalizationForm_KD)) {
            const auto *base = std::ranges::find(letters, part.unicode(), &Letter::letter);
            if (base != std::end(letters))
                result += QStringView(base->latin);
            else if (!part.isMark())
                result += part;
        }
    }
    return result;
}

bool hasDigit(const QString &word)
{
    return std::ranges::any_of(word, [](QChar c) { return c.isDigit(); });
}

bool isOrdinal(const QString &word)
{
    const QString end = word.right(2);
    return word.size() > 2 && (end == u"ST" || end == u"ND" || end == u"RD" || end == u"TH") &&
           std::all_of(word.begin(), word.end() - 2, [](QChar c) { return c.isDigit(); });
}

/// The sound of a word that several rules romanize: its consonants, alike ones as one. "CH" is a sound of its own or
/// the H of the Greek and German rules.
QString skeleton(QString word, bool isChSilent)
{
    constexpr std::pair<QStringView, QStringView> alike[] = {
        {u"SCHTSCH", u"S"}, {u"SHCH", u"S"}, {u"TSCH", u"S"}, {u"SCH", u"S"}, {u"TCH", u"S"},
        {u"KH", u""},       {u"SH", u"S"},   {u"ZH", u"S"},   {u"CH", u"9"},  {u"TZ", u"S"},
        {u"TS", u"S"},      {u"PH", u"F"},   {u"TH", u"T"},   {u"CK", u"K"},  {u"X", u"KS"},
        {u"Z", u"S"},       {u"C", u"S"},    {u"W", u"V"},    {u"B", u"V"},   {u"Q", u"K"}};
    for (const auto &[from, to] : alike)
        word.replace(from.toString(), to.toString());
    word.replace(u"9"_s, isChSilent ? QString() : u"S"_s);
    QString sound;
    for (const QChar c : word) {
        if (!u"AEIOUYJH"_s.contains(c) && !sound.endsWith(c))
            sound += c;
    }
    return sound;
}

bool soundsAlike(const QString &a, const QString &b)
{
    for (const bool silentA : {false, true}) {
        for (const bool silentB : {false, true}) {
            if (skeleton(a, silentA) == skeleton(b, silentB))
                return true;
        }
    }
    return false;
}

QString oneSpelling(QString word)
{
    return word.replace(u"AE"_s, u"A"_s).replace(u"OE"_s, u"O"_s).replace(u"UE"_s, u"U"_s).replace(u"AA"_s, u"A"_s);
}

/// A designator with its id in one word: APT3B.
bool splitsDesignator(const QString &word, QString &designator)
{
    constexpr qsizetype shortest = 3;
    for (const QString &known : designators) {
        if (known.size() >= shortest && word.size() > known.size() && word.startsWith(known) &&
            word[known.size()].isDigit()) {
            designator = known;
            return true;
        }
    }
    return false;
}

} // namespace

QStringList folded(const QString &text)
{
    QStringList words;
    QString word;
    const auto endWord = [&] {
        QString designator;
        if (splitsDesignator(word, designator)) {
            words += designator;
            word = word.sliced(designator.size());
        }
        if (!word.isEmpty())
            words += word;
        word.clear();
    };
    for (const QChar c : latin(text)) {
        if (c.isLetterOrNumber() || c == u'?' || c.isSurrogate()) {
            word += c;
        } else if (c == u'#') {
            endWord();
            words += u"#"_s;
        } else if (c != u'\'' && c != u'.' && c != u'’' && c != u'`') {
            endWord(); // within a word these four are dropped: O'Brien, P.O.
        }
    }
    endWord();
    return words;
}

bool isForeignScript(const QString &text)
{
    return std::ranges::any_of(latin(text),
                               [](QChar c) { return c.isSurrogate() || (c.isLetter() && c.unicode() > 0x7f); });
}

bool isSameWord(const QString &label, const QString &parcel, bool isRomanized)
{
    if (label == parcel || oneSpelling(label) == oneSpelling(parcel))
        return true;
    if (label.contains(u'?') && label.size() == parcel.size() && label != QString(label.size(), u'?')) {
        const auto isLost = [](QChar a, QChar b) { return a == b || a == u'?'; };
        return std::equal(label.begin(), label.end(), parcel.begin(), parcel.end(), isLost);
    }
    return isRomanized && soundsAlike(label, parcel);
}

bool isShortForm(const QString &label, const QString &parcel)
{
    if (label.isEmpty() || parcel.isEmpty() || label[0] != parcel[0])
        return false;
    qsizetype at = 0;
    for (const QChar c : parcel)
        at += at < label.size() && label[at] == c ? 1 : 0;
    return at == label.size();
}

Street streetOf(const QString &lines)
{
    constexpr qsizetype longestId = 6;
    Street street;
    const QStringList words = folded(lines);
    QList<bool> isUsed(words.size(), false);
    QStringList unitWords;
    for (qsizetype at = 0; at < words.size(); ++at) {
        if (!designators.contains(words[at]))
            continue;
        qsizetype id = at + 1;
        while (id < words.size() && words[id] == u"#")
            ++id;
        const bool isFloor = words[at].startsWith(u"FL") && words[at] != u"FLAT";
        if (isFloor && at > 0 && isOrdinal(words[at - 1]) && !isUsed[at - 1]) { // 2nd Floor
            street.units += words[at - 1].chopped(2);
            isUsed[at - 1] = true;
            unitWords += {words[at - 1], words[at]};
        } else if (id < words.size() && !isUsed[id] &&
                   (hasDigit(words[id]) ? words[id].size() <= longestId : words[id].size() == 1) &&
                   !isOrdinal(words[id])) {
            street.units += words[id];
            isUsed[id] = true;
            unitWords += {words[at], words[id]};
            at = id;
        }
    }
    for (qsizetype at = 0; at < words.size(); ++at) {
        if (!isUsed[at] && hasDigit(words[at]) && !isOrdinal(words[at]))
            street.numbers += words[at];
    }
    street.unitText = unitWords.join(u' ');
    return street;
}

bool isOnlyUnit(const QString &line)
{
    const Street street = streetOf(line);
    return !street.units.isEmpty() && street.numbers.isEmpty() &&
           folded(line).size() <= street.unitText.count(u' ') + 1;
}

} // namespace parcelory::LabelWords
