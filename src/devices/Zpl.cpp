#include "devices/Zpl.h"

#include <QUtf8StringView>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <string_view>

namespace parcelory {

namespace {

constexpr int longestPassed = 1230; ///< dots; a little over six inches passes, to allow for carriers' rounding
constexpr qsizetype fewestDigits = 3, mostDigits = 5;

// Dots of four by six inches, with what carriers and printers add at the edges.
constexpr int widest203Dpi = 832, widest300Dpi = 1248;
constexpr int shortest300Dpi = 1750, longest300Dpi = 1850;

bool isUtf8(const QByteArray &bytes)
{
    return QUtf8StringView(bytes).isValidUtf8();
}

/// A ^LL command with three to five digits. `begin` is where the digits start.
struct LengthCommand {
    qsizetype begin;
    qsizetype end;
};

std::optional<LengthCommand> nextLength(const QByteArray &zpl, qsizetype from)
{
    const std::string_view text(zpl.constData(), size_t(zpl.size())); // searches ten times as fast as QByteArray
    for (size_t at = text.find("^LL", size_t(from)); at != text.npos; at = text.find("^LL", at + 3)) {
        const qsizetype begin = qsizetype(at) + 3;
        qsizetype end = begin;
        while (end < zpl.size() && end - begin < mostDigits && zpl[end] >= '0' && zpl[end] <= '9')
            ++end;
        if (end - begin >= fewestDigits)
            return LengthCommand{begin, end};
    }
    return std::nullopt;
}

/// The label's width in dots that the first ^PW declares.
std::optional<int> declaredWidth(const QByteArray &zpl)
{
    const qsizetype command = zpl.indexOf("^PW");
    if (command < 0)
        return std::nullopt;
    qsizetype end = command + 3;
    while (end < zpl.size() && end - command < 3 + mostDigits && zpl[end] >= '0' && zpl[end] <= '9')
        ++end;
    return zpl.mid(command + 3, end - command - 3).toInt();
}

/// True for the start of a file that a server sends instead of a label, even if the file quotes a label further on.
bool beginsAsAnotherFile(const QByteArray &bytes)
{
    constexpr std::string_view beginnings[] = {"<", "{", "[", "\"", "\x1F\x8B", "PK\x03\x04"};
    std::string_view text(bytes.constData(), size_t(bytes.size()));
    if (text.starts_with("\xEF\xBB\xBF"))
        text.remove_prefix(3);
    text.remove_prefix(std::min(text.find_first_not_of(std::string_view(" \t\r\n\f\v\0", 7)), text.size()));
    return std::ranges::any_of(beginnings, [text](std::string_view beginning) { return text.starts_with(beginning); });
}

/// True if a label of this kind has its end.
bool hasEnd(const QByteArray &label, LabelKind kind)
{
    constexpr qsizetype tail = 1024; // a PDF's end mark may have some bytes after it
    switch (kind) {
    case LabelKind::pdf:
        return label.right(tail).contains("%%EOF");
    case LabelKind::png:
        return label.right(tail).contains("IEND");
    case LabelKind::zpl: {
        const QByteArray upper = label.toUpper();
        return upper.lastIndexOf("^XZ") > upper.lastIndexOf("^XA");
    }
    case LabelKind::notALabel:
        break;
    }
    return false;
}

} // namespace

LabelKind labelKind(const QByteArray &label)
{
    if (label.startsWith("%PDF"))
        return LabelKind::pdf;
    if (label.startsWith("\x89PNG"))
        return LabelKind::png;
    if (beginsAsAnotherFile(label))
        return LabelKind::notALabel;
    // Printers accept commands in either case.
    return label.contains("^XA") || label.contains("^xa") ? LabelKind::zpl : LabelKind::notALabel;
}

bool isWhole(const QByteArray &label)
{
    return hasEnd(label, labelKind(label));
}

LabelFile parseLabel(const QByteArray &bytes)
{
    const LabelKind kind = labelKind(bytes);
    return {bytes, kind, hasEnd(bytes, kind)};
}

namespace Zpl {

const QByteArray testLabel = "^XA^PW812^LL406^FO60,60^A0N,60,60^FDParcelory^FS^FO60,150^A0N,40,40^FDZebra test print "
                             "OK^FS^FO60,220^A0N,30,30^FDIf you can read this, ZPL printing works.^FS^XZ";

std::optional<int> declaredLength(const QByteArray &zpl)
{
    const auto command = nextLength(zpl, 0);
    if (!command)
        return std::nullopt;
    return zpl.mid(command->begin, command->end - command->begin).toInt();
}

QByteArray clamped(const QByteArray &zpl)
{
    if (!isUtf8(zpl) || declaredLength(zpl).value_or(0) <= longestPassed)
        return zpl;
    QByteArray result;
    result.reserve(zpl.size());
    qsizetype copied = 0;
    for (auto command = nextLength(zpl, 0); command; command = nextLength(zpl, copied)) {
        result.append(zpl.constData() + copied, command->begin - copied).append("1218");
        copied = command->end;
    }
    return result.append(zpl.constData() + copied, zpl.size() - copied);
}

bool isCutFrom300Dpi(const QByteArray &zpl)
{
    const int length = declaredLength(zpl).value_or(0);
    if (!isUtf8(zpl) || length <= longestPassed || length > longest300Dpi)
        return false;
    const std::optional<int> width = declaredWidth(zpl);
    return width ? *width > widest203Dpi && *width <= widest300Dpi : length >= shortest300Dpi;
}

QByteArray rotated(const QByteArray &zpl)
{
    if (!isUtf8(zpl))
        return zpl;
    QByteArray result = zpl;
    if (!zpl.contains("^POI") && !zpl.contains("^PON"))
        return result.replace("^XA", "^XA^POI");
    const QByteArray placeholder = "\x01SWAP\x01"; // cannot occur in a label
    return result.replace("^POI", placeholder).replace("^PON", "^POI").replace(placeholder, "^PON");
}

QByteArray upright(const QByteArray &zpl)
{
    if (!isUtf8(zpl) || zpl.contains("^POI") || zpl.contains("^PON"))
        return zpl;
    return QByteArray(zpl).replace("^XA", "^XA^PON");
}

bool leavesTurned(const QByteArray &zpl)
{
    return zpl.lastIndexOf("^POI") > zpl.lastIndexOf("^PON");
}

} // namespace Zpl
} // namespace parcelory
