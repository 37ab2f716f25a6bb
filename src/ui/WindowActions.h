#pragma once

namespace parcelory {

class MainWindow;

/// Fills the menu bar. Every shortcut of the program stands there and nowhere else.
void addWindowActions(MainWindow &window);

} // namespace parcelory
