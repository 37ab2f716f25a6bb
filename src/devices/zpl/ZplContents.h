#pragma once

#include "compose/LabelReadBack.h"
#include "devices/zpl/ZplLabel.h"

namespace parcelory {

/// What a reader of the label sees: its texts line by line, and the data of its bar codes. `LabelText::element` and
/// `LabelCode::element` count the elements of all labels in turn. Needs no fonts, so widths are estimates.
LabelContents contentsOf(const ZplDocument &document);

} // namespace parcelory
