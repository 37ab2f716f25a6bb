#pragma once

namespace parcelory {

class MainWindow;

/// Fills the menu bar, without the Help menu. All shortcuts of the main window are in its menus.
void addWindowActions(MainWindow &window);

} // namespace parcelory
