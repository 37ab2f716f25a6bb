#pragma once

#include "devices/zpl/ZplLabel.h"

namespace parcelory {

/// Reads a file in Zebra's printer language as tolerantly as printers do: lower case, blanks and line breaks inside
/// parameters, missing parameters, fields and labels without an end. Any bytes give a document; what the reader does
/// not know is listed. Reads at most 50 labels and 20,000 elements, and pictures of at most 4 MB. Works on any thread.
ZplDocument readZpl(const QByteArray &bytes);

} // namespace parcelory
