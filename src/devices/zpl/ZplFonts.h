#pragma once

#include "devices/zpl/ZplLabel.h"

namespace parcelory {

/// The cell in which a font draws a character. Lengths are dots.
struct ZplCell {
    double height = 0;
    double advance = 0;   ///< of a digit, with the gap after it
    double baseline = 0;  ///< below the cell's top
    bool isFixed = false; ///< all characters are as wide as a digit
};

/// The cell of a font of the size that a label asks for. Bitmap fonts are magnified by whole numbers only. In the
/// scalable font a digit is half as wide as the width that the label gives, which follows the height if the label gives
/// no width.
ZplCell cellOf(const ZplFont &font);

} // namespace parcelory
