#include "devices/zpl/Code128.h"

#include <algorithm>
#include <utility>

namespace parcelory::Code128 {

namespace {

constexpr const char *patterns[] = {
    "212222", "222122", "222221", "121223", "121322", "131222", "122213", "122312", "132212", "221213", "221312",
    "231212", "112232", "122132", "122231", "113222", "123122", "123221", "223211", "221132", "221231", "213212",
    "223112", "312131", "311222", "321122", "321221", "312212", "322112", "322211", "212123", "212321", "232121",
    "111323", "131123", "131321", "112313", "132113", "132311", "211313", "231113", "231311", "112133", "112331",
    "132131", "113123", "113321", "133121", "313121", "211331", "231131", "213113", "213311", "213131", "311123",
    "311321", "331121", "312113", "312311", "332111", "314111", "221411", "431111", "111224", "111422", "121124",
    "121421", "141122", "141221", "112214", "112412", "122114", "122411", "142112", "142211", "241211", "221114",
    "413111", "241112", "134111", "111242", "121142", "121241", "114212", "124112", "124211", "411212", "421112",
    "421211", "212141", "214121", "412121", "111143", "111341", "131141", "114113", "114311", "411113", "411311",
    "113141", "114131", "311141", "411131", "211412", "211214", "211232", "2331112"};

constexpr int shiftValue = 98, codeC = 99, codeB = 100, codeA = 101, fnc1 = 102, startA = 103, startB = 104,
              startC = 105, stop = 106;

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

/// The value that the sign after ">" stands for; -1 for a sign without a meaning.
int invoked(char sign)
{
    constexpr std::pair<char, int> meanings[] = {
        {'<', 62},    {'0', 30},    {'=', 94},    {'1', 95},   {'2', 96},     {'3', 97},     {'4', shiftValue},
        {'5', codeC}, {'6', codeB}, {'7', codeA}, {'8', fnc1}, {'9', startA}, {':', startB}, {';', startC}};
    const auto *found = std::ranges::find(meanings, sign, &std::pair<char, int>::first);
    return found == std::end(meanings) ? -1 : found->second;
}

/// Collects values, with the subset that holds after each of them.
class Writer {
public:
    enum class Subset { a, b, c };

    void start(Subset subset)
    {
        m_subset = subset;
        m_values = {subset == Subset::a ? startA : subset == Subset::b ? startB : startC};
    }

    /// A value that may choose a subset.
    void function(int value)
    {
        if (value == startA || value == startB || value == startC) { // in the middle it only chooses the subset
            choose(value == startA ? Subset::a : value == startB ? Subset::b : Subset::c);
            return;
        }
        if (value == codeC && m_subset != Subset::c)
            m_subset = Subset::c;
        else if (value == codeB && m_subset != Subset::b)
            m_subset = Subset::b;
        else if (value == codeA && m_subset != Subset::a)
            m_subset = Subset::a;
        m_values += value;
    }

    void choose(Subset subset)
    {
        if (subset != m_subset)
            function(subset == Subset::a ? codeA : subset == Subset::b ? codeB : codeC);
    }

    /// A character of subset B, or by a shift one of subset A; false for any other.
    bool character(char c)
    {
        if (c >= ' ' && uchar(c) <= 127) {
            m_values += c - ' ';
        } else if (c >= 0 && c < ' ') {
            m_values += shiftValue;
            m_values += c + 64;
        } else {
            return false;
        }
        return true;
    }

    void pair(char tens, char ones) { m_values += (tens - '0') * 10 + ones - '0'; }
    Subset subset() const { return m_subset; }

    QList<int> finished()
    {
        qint64 sum = m_values[0];
        for (qsizetype at = 1; at < m_values.size(); ++at)
            sum += at % 103 * m_values[at];
        m_values += int(sum % 103);
        m_values += stop;
        return m_values;
    }
    bool isEmpty() const { return m_values.size() < 2; }

private:
    QList<int> m_values;
    Subset m_subset = Subset::b;
};

bool writePlain(Writer &writer, const QByteArray &data)
{
    using Subset = Writer::Subset;
    qsizetype at = 0;
    writer.start(Subset::b);
    if (data.size() > 1 && data[0] == '>' && invoked(data[1]) >= startA) {
        writer.start(data[1] == '9' ? Subset::a : data[1] == ':' ? Subset::b : Subset::c);
        at = 2;
    }
    for (; at < data.size(); ++at) {
        const int function = data[at] == '>' && at + 1 < data.size() ? invoked(data[at + 1]) : -1;
        if (function >= 0) {
            ++at;
            // Two of them are characters; in subset C they are not.
            writer.function(function);
        } else if (writer.subset() == Subset::b) {
            if (!writer.character(data[at]))
                return false;
        } else if (isDigit(data[at]) && at + 1 < data.size() && isDigit(data[at + 1])) {
            writer.pair(data[at], data[at + 1]); // in subset A, too, the label gives values
            ++at;
        } // a digit without a partner is not printed
    }
    return true;
}

bool writeAutomatic(Writer &writer, const QByteArray &data, bool isGs1)
{
    using Subset = Writer::Subset;
    const auto digitsFrom = [&data](qsizetype at) {
        qsizetype end = at;
        while (end < data.size() && isDigit(data[end]))
            ++end;
        return end - at;
    };
    constexpr qsizetype worthASwitch = 4;
    const qsizetype first = digitsFrom(0);
    writer.start(first >= worthASwitch || (first == 2 && data.size() == 2) ? Subset::c : Subset::b);
    if (isGs1)
        writer.function(fnc1);
    for (qsizetype at = 0; at < data.size();) {
        if (data[at] == '>' && at + 1 < data.size() && invoked(data[at + 1]) >= 0) {
            const int function = invoked(data[at + 1]);
            if (function == fnc1)
                writer.function(fnc1);
            else if (function == 62 || function == 30 || function == 94) {
                writer.choose(Subset::b);
                writer.function(function);
            } // the subsets are chosen here
            at += 2;
            continue;
        }
        const qsizetype digits = digitsFrom(at);
        if (writer.subset() == Subset::c && digits >= 2) {
            writer.pair(data[at], data[at + 1]);
            at += 2;
        } else if (writer.subset() == Subset::b && digits >= worthASwitch && digits % 2 == 0) {
            writer.choose(Subset::c);
        } else {
            writer.choose(Subset::b);
            if (!writer.character(data[at]))
                return false;
            ++at;
        }
    }
    return true;
}

/// Nineteen digits and their check digit, in subset C behind FNC1.
bool writeShipping(Writer &writer, const QByteArray &data)
{
    constexpr qsizetype length = 19;
    if (data.isEmpty() || !std::ranges::all_of(data, isDigit))
        return false;
    QByteArray digits = data.first(std::min(length, data.size())).leftJustified(length, '0');
    int sum = 0;
    for (qsizetype at = 0; at < length; ++at)
        sum += (digits[at] - '0') * (at % 2 == 0 ? 3 : 1);
    digits += char('0' + (10 - sum % 10) % 10);
    writer.start(Writer::Subset::c);
    writer.function(fnc1);
    for (qsizetype at = 0; at < digits.size(); at += 2)
        writer.pair(digits[at], digits[at + 1]);
    return true;
}

} // namespace

std::optional<QList<int>> values(const QByteArray &data, Mode mode)
{
    Writer writer;
    bool isWritten = false;
    if (mode == Mode::plain)
        isWritten = writePlain(writer, data);
    else if (mode == Mode::shipping)
        isWritten = writeShipping(writer, data);
    else if (mode == Mode::gs1)
        isWritten = writeAutomatic(writer, QByteArray(data).replace('(', "").replace(')', "").replace(' ', ""), true);
    else
        isWritten = writeAutomatic(writer, data, false);
    return isWritten && !writer.isEmpty() ? std::optional(writer.finished()) : std::nullopt;
}

QList<int> widths(const QList<int> &values)
{
    QList<int> widths;
    widths.reserve(values.size() * 6 + 1);
    for (const int value : values) {
        for (const char *digit = patterns[std::clamp(value, 0, stop)]; *digit; ++digit)
            widths += *digit - '0';
    }
    return widths;
}

QByteArray text(const QList<int> &values)
{
    constexpr char separator = '\x1D';
    if (values.isEmpty())
        return {};
    QByteArray text;
    char subset = values[0] == startA ? 'A' : values[0] == startB ? 'B' : 'C';
    bool isShifted = false;
    for (qsizetype at = 1; at + 2 < values.size(); ++at) {
        const int value = values[at];
        const bool isA = (subset == 'A') != (isShifted && subset != 'C');
        isShifted = false;
        if (value == fnc1) {
            if (at > 1) // the first one only says that the data follows GS1
                text += separator;
        } else if (subset == 'C') {
            if (value < 100)
                text += QByteArray::number(value).rightJustified(2, '0');
            else
                subset = value == codeB ? 'B' : 'A';
        } else if (value < 96) {
            text += isA && value >= 64 ? char(value - 64) : char(value + ' ');
        } else if (value == codeC) {
            subset = 'C';
        } else if (value == codeB && subset == 'A') {
            subset = 'B';
        } else if (value == codeA && subset == 'B') {
            subset = 'A';
        } else if (value == shiftValue) {
            isShifted = true;
        }
    }
    return text;
}

} // namespace parcelory::Code128
