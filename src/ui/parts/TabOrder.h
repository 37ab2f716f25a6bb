#pragma once

class QWidget;

namespace parcelory {

/// Sets the Tab order of the widgets in `root` to the order of its layouts instead of the order of construction.
void orderTabsByLayout(QWidget *root);

} // namespace parcelory
