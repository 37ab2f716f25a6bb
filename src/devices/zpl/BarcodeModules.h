#pragma once

#include "devices/zpl/ZplLabel.h"

namespace parcelory {

/// The black and white dots of a bar code, not turned and without quiet zone.
struct BarcodeDots {
    int width = 0, height = 0; ///< dots of the printer, at most 8192
    /// The code's cells row by row: the height of the row in dots, and the widths of its bars and gaps in dots, in
    /// turn; the first is a bar, and may be 0 wide.
    struct Row {
        int height;
        QList<int> widths;
    };
    QList<Row> rows;
    QString line; ///< the data as people read it, for the line above or below
};

/// The bar code that a label asks for. Nothing for a code that is not drawn (MaxiCode, codes of other carriers), and
/// for data that the code cannot hold.
std::optional<BarcodeDots> barcodeDots(const ZplBarcode &code);

/// What a reader reads from the bar code, as far as it is known without drawing it; FNC1 between two parts is the byte
/// 0x1D. Empty for a code that cannot be drawn.
QByteArray barcodeText(const ZplBarcode &code);

} // namespace parcelory
