#pragma once

#include <QByteArray>

#include <optional>

namespace parcelory {

/// The file type of a label. Anything that is neither a PNG picture, a PDF nor a ZPL program (an error page that a
/// server sent instead of a label, an empty file) is not a label.
enum class LabelKind { zpl, pdf, png, notALabel };

LabelKind labelKind(const QByteArray &label);

/// True if a label has its end: a broken connection may deliver only the beginning of a label.
bool isWhole(const QByteArray &label);

/// A file of the carrier, parsed once: printer, journal and log take the value.
struct LabelFile {
    QByteArray bytes;
    LabelKind kind = LabelKind::notALabel;
    bool isWhole = false; ///< it has its end

    bool isWholePdf() const { return isWhole && kind == LabelKind::pdf; }
};

LabelFile parseLabel(const QByteArray &bytes);

/// Labels in Zebra's printer language, as bytes. Dots are 1/203 inch.
namespace Zpl {

/// Length in dots that the first ^LL command (three to five digits) declares.
std::optional<int> declaredLength(const QByteArray &zpl);

/// Sets every ^LL to 1218, the six inches of the paper, in a label that declares 1231 dots or more; any other label,
/// and bytes that are not UTF-8, are returned unchanged.
QByteArray clamped(const QByteArray &zpl);

/// True for a label drawn for four by six inches at 300 dpi that `clamped` shortens: a third of it is lost.
bool isCutFrom300Dpi(const QByteArray &zpl);

/// The label rotated by 180° through its print orientation; bytes that are not UTF-8 are returned unchanged.
QByteArray rotated(const QByteArray &zpl);

/// The label with an explicit normal orientation; a label that sets its own orientation, and bytes that are not UTF-8,
/// are returned unchanged.
QByteArray upright(const QByteArray &zpl);

/// True if the printer's orientation is rotated after this label is printed.
bool leavesTurned(const QByteArray &zpl);

/// A test label: three lines on 4×2 inches.
extern const QByteArray testLabel;

} // namespace Zpl
} // namespace parcelory
