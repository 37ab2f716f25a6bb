#pragma once

class QWidget;

namespace parcelory {

/// Makes Tab walk the widgets of `root` in the order of its layouts, whatever the order in which they were made.
void orderTabsByLayout(QWidget *root);

} // namespace parcelory
