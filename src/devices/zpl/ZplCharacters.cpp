#include "devices/zpl/ZplCharacters.h"

#include "core/Text.h"

#include <cctype>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// The upper half of two character sets.
constexpr QStringView page850 =
    u"ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜø£Ø×ƒáíóúñÑªº¿®¬½¼¡«»░▒▓│┤ÁÂÀ©╣║╗╝¢¥┐└┴┬├─┼ãÃ╚╔╩╦╠═╬¤ðÐÊËÈıÍÎÏ┘┌█▄¦Ì▀"
    u"ÓßÔÒõÕµþÞÚÛÙýÝ¯´\u00AD±‗¾¶§÷¸°¨·¹³²■\u00A0";
constexpr QStringView windowsLatin = u"€\u0081‚ƒ„…†‡ˆ‰Š‹Œ\u008DŽ\u008F\u0090‘’“”•–—˜™š›œ\u009DžŸ";
static_assert(page850.size() == 128 && windowsLatin.size() == 32);

QString byTable(const QByteArray &bytes, QStringView upperHalf)
{
    QString text = QString::fromLatin1(bytes);
    for (QChar &c : text) {
        const qsizetype at = c.unicode() - 0x80;
        if (at >= 0 && at < upperHalf.size())
            c = upperHalf[at];
    }
    return text;
}

} // namespace

QByteArray withoutHexEscapes(const QByteArray &data, char sign)
{
    QByteArray bytes;
    bytes.reserve(data.size());
    for (qsizetype at = 0; at < data.size(); ++at) {
        bool isHex = false;
        const uint value = data[at] == sign && at + 2 < data.size() ? data.sliced(at + 1, 2).toUInt(&isHex, 16) : 0;
        // toUInt also takes blanks and signs.
        isHex = isHex && std::isxdigit(uchar(data[at + 1])) && std::isxdigit(uchar(data[at + 2]));
        bytes += isHex ? char(value) : data[at];
        at += isHex ? 2 : 0;
    }
    return bytes;
}

QString fieldText(const QByteArray &bytes, int characterSet)
{
    constexpr int lastOf850 = 13, latin = 27, utf8 = 28;
    if (characterSet == latin)
        return byTable(bytes, windowsLatin);
    const QString text = characterSet > lastOf850 || characterSet == utf8 ? utf8OrEmpty(bytes) : QString();
    return text.isEmpty() ? byTable(bytes, page850) : text;
}

QString blockText(const QString &text)
{
    QString result;
    result.reserve(text.size());
    for (qsizetype at = 0; at < text.size(); ++at) {
        const QChar following = at + 1 < text.size() ? text[at + 1] : QChar();
        const bool isEscape = text[at] == u'\\' && (following == u'&' || following == u'\\' || following == u'-');
        if (!isEscape)
            result += text[at];
        else
            result += following == u'&' ? u'\n' : following == u'-' ? u'\u00AD' : u'\\';
        at += isEscape ? 1 : 0;
    }
    return result;
}

} // namespace parcelory
