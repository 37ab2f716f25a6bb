#pragma once

#include "devices/zpl/ZplLabel.h"

namespace parcelory {

/// A picture of `total` bytes from the data of a ^GF or ~DG command: hexadecimal digits, with repetitions, or behind
/// ":B64:" or ":Z64:". Data that is too short is filled up with white. Nothing if the sizes are not those of a picture
/// (at most 4 MB) or if the data cannot be read.
std::optional<ZplGraphic> graphicFromText(const QByteArray &data, int total, int bytesPerRow);

/// The same from bytes.
std::optional<ZplGraphic> graphicFromBytes(const QByteArray &bytes, int total, int bytesPerRow);

} // namespace parcelory
