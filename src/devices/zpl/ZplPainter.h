#pragma once

#include "devices/zpl/ZplLabel.h"

#include <QImage>
#include <QRect>

namespace parcelory {

/// The printer's resolution in dots per millimeter: 203 and 300 dpi.
enum class ZplDensity { dots8 = 8, dots12 = 12 };

enum class ZplView {
    upright,  ///< as the label is read
    asPrinted ///< turned as the label turns itself
};

/// The picture of a label.
struct ZplPicture {
    /// One pixel for each dot, black on white, 8-bit gray. 4 by 6 inches where the label declares no width or length;
    /// at most 2400 by 4800 pixels, the rest is cut off.
    QImage image;
    QList<QRect> places;  ///< of each element of the label, in pixels; may reach beyond the picture, or be empty
    QStringList notDrawn; ///< commands of elements that are not drawn: "^BD"
};

/// Draws a label as the printer would print it. May be called on any thread. Throws AppError in a program without a
/// QGuiApplication, which the fonts need; nothing else is an error.
ZplPicture paintZpl(const ZplLabel &label, ZplDensity density = ZplDensity::dots8, ZplView view = ZplView::upright);

} // namespace parcelory
