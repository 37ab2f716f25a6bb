#pragma once

namespace parcelory {

class MainWindow;

/// The Help menu: keyboard shortcuts, updates, about. Call when the other menus are filled. Whenever there is an update
/// to offer, its prompt comes up over the window.
void addHelpMenu(MainWindow &window);

} // namespace parcelory
