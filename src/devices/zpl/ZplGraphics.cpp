#include "devices/zpl/ZplGraphics.h"

#include <algorithm>

namespace parcelory {

namespace {

constexpr int mostBytes = 4 * 1024 * 1024;
/// A compressed picture may grow a thousandfold.
constexpr qsizetype mostCompressed = 256 * 1024;

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = char(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// Reads hexadecimal digits with the repetitions of Zebra's own compression.
class HexRows {
public:
    HexRows(int total, int bytesPerRow) : m_digits(qsizetype(total) * 2), m_rowDigits(bytesPerRow * 2)
    {
        m_nibbles.reserve(m_digits);
    }

    QByteArray read(const QByteArray &data)
    {
        for (qsizetype at = 0; at < data.size() && m_nibbles.size() < m_digits; ++at)
            take(data[at]);
        m_nibbles.truncate(m_digits);
        QByteArray bits(m_digits / 2, '\0');
        for (qsizetype at = 0; at < m_nibbles.size(); ++at)
            bits[at / 2] = char(uchar(bits[at / 2]) | m_nibbles[at] << (at % 2 ? 0 : 4));
        return bits;
    }

private:
    void take(char c)
    {
        const qsizetype inRow = m_nibbles.size() % m_rowDigits, toRowEnd = m_rowDigits - inRow;
        if (c >= 'G' && c <= 'Y') {
            m_count += c - 'G' + 1;
        } else if (c >= 'g' && c <= 'z') {
            m_count += (c - 'g' + 1) * 20;
        } else if (c == ',' || c == '!') {
            add(toRowEnd, c == '!' ? 15 : 0);
        } else if (c == ':') {
            add(inRow > 0 ? toRowEnd : 0, 0);
            const qsizetype before = m_nibbles.size() - m_rowDigits;
            m_nibbles += before >= 0 ? m_nibbles.sliced(before) : QByteArray(m_rowDigits, '\0');
        } else if (const int digit = hexDigit(c); digit >= 0) {
            add(std::max(m_count, 1), digit);
        }
        m_count = std::min(m_count, mostBytes);
    }

    void add(qsizetype count, int digit)
    {
        m_nibbles += QByteArray(std::min(count, m_digits - m_nibbles.size()), char(digit));
        m_count = 0;
    }

    QByteArray m_nibbles; ///< one digit a byte
    qsizetype m_digits, m_rowDigits;
    int m_count = 0;
};

/// The bytes behind ":B64:" or ":Z64:"; a check sum follows them, which a broken connection does not survive anyway.
std::optional<QByteArray> encoded(const QByteArray &data)
{
    const QByteArray text =
        data.sliced(5, std::max<qsizetype>(data.indexOf(':', 5), 5) - 5).simplified().replace(' ', "");
    const QByteArray bytes = QByteArray::fromBase64(text);
    if (data.startsWith(":B64:"))
        return bytes;
    if (bytes.size() > mostCompressed)
        return std::nullopt;
    // qUncompress expects a length, which it only takes as a hint.
    const QByteArray picture = qUncompress(QByteArray("\0\0\x10\0", 4) + bytes);
    return picture.isEmpty() ? std::nullopt : std::optional(picture);
}

} // namespace

std::optional<ZplGraphic> graphicFromBytes(const QByteArray &bytes, int total, int bytesPerRow)
{
    if (total <= 0 || total > mostBytes || bytesPerRow <= 0 || bytesPerRow > total)
        return std::nullopt;
    QByteArray bits = bytes.first(std::min<qsizetype>(bytes.size(), total));
    bits.append(total - bits.size(), '\0');
    bits.truncate(total / bytesPerRow * bytesPerRow);
    return ZplGraphic{.bits = bits, .bytesPerRow = bytesPerRow};
}

std::optional<ZplGraphic> graphicFromText(const QByteArray &data, int total, int bytesPerRow)
{
    if (total <= 0 || total > mostBytes || bytesPerRow <= 0 || bytesPerRow > total)
        return std::nullopt;
    const QByteArray text = data.trimmed();
    if (!text.startsWith(":B64:") && !text.startsWith(":Z64:"))
        return graphicFromBytes(HexRows(total, bytesPerRow).read(text), total, bytesPerRow);
    const std::optional<QByteArray> bytes = encoded(text);
    return bytes ? graphicFromBytes(*bytes, total, bytesPerRow) : std::nullopt;
}

} // namespace parcelory
