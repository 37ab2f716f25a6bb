#pragma once

#include <QByteArray>

#include <optional>

namespace parcelory {

/// What a label's bytes are. Anything that is neither a picture, a PDF nor a ZPL program (an error page that a server
/// sent in a label's place, an empty file) is not a label.
enum class LabelKind { zpl, pdf, png, notALabel };

LabelKind labelKind(const QByteArray &label);

/// True when a label has its end: a connection that breaks may leave the beginning of a label behind.
bool isWhole(const QByteArray &label);

/// Labels in Zebra's printer language, as bytes. Dots are 1/203 inch.
namespace Zpl {

/// Length in dots that the first ^LL command (three to five digits) declares.
std::optional<int> declaredLength(const QByteArray &zpl);

/// A label that declares 1231 dots or more comes back with every ^LL set to 1218, the six inches of the paper; any
/// other label, and bytes that are not UTF-8, come back as they are.
QByteArray clamped(const QByteArray &zpl);

/// True for a label drawn for four by six inches at 300 dpi that `clamped` shortens: a third of it is lost.
bool isCutFrom300Dpi(const QByteArray &zpl);

/// The label turned by 180°, by its print orientation; bytes that are not UTF-8 come back as they are.
QByteArray rotated(const QByteArray &zpl);

/// The label with the normal orientation said outright; one that sets its own, and bytes that are not UTF-8, come back
/// as they are.
QByteArray upright(const QByteArray &zpl);

/// True when the printer's orientation is turned once this label is printed.
bool leavesTurned(const QByteArray &zpl);

/// Three lines on 4×2 inches that tell that printing works.
extern const QByteArray testLabel;

} // namespace Zpl
} // namespace parcelory
