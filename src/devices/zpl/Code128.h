#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

namespace parcelory {

/// A bar code of ISO/IEC 15417, drawn exactly as a ^BC command spells it: the label chooses the subsets and the places
/// of FNC1, which encoding libraries decide on their own.
namespace Code128 {

/// How the data of a ^BC command is to be read.
enum class Mode {
    plain,     ///< N: subset B until the data names another
    shipping,  ///< U: 19 digits, of which the last is added
    automatic, ///< A: the shortest choice of subsets
    gs1        ///< D: the same after FNC1, without blanks and brackets
};

/// The values of the start character, the data, the check sum and the stop character. Nothing if the data is
/// empty or has a character that the code does not have.
std::optional<QList<int>> values(const QByteArray &data, Mode mode);

/// The widths of bars and gaps in modules, in turn, of these values.
QList<int> widths(const QList<int> &values);

/// What a reader reads from these values; FNC1 between two parts is the byte 0x1D.
QByteArray text(const QList<int> &values);

} // namespace Code128
} // namespace parcelory
