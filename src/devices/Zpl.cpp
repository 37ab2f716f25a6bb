#include "devices/Zpl.h"

#include <QUtf8StringView>

#include <string_view>

namespace parcelory {

namespace {

constexpr int longestPassed = 1230; ///< dots; a little over six inches passes, so that carriers' roundings do not count
constexpr qsizetype fewestDigits = 3, mostDigits = 5;

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

} // namespace

LabelKind labelKind(const QByteArray &label)
{
    if (label.startsWith("%PDF"))
        return LabelKind::pdf;
    if (label.startsWith("\x89PNG"))
        return LabelKind::png;
    // Printers take commands in either case.
    return label.contains("^XA") || label.contains("^xa") ? LabelKind::zpl : LabelKind::notALabel;
}

bool isWhole(const QByteArray &label)
{
    constexpr qsizetype tail = 1024; // a PDF's end mark may have some bytes after it
    switch (labelKind(label)) {
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

} // namespace Zpl
} // namespace parcelory
