#pragma once

namespace parcelory {

class MainWindow;

/// Adds the Help menu: handbook, keyboard shortcuts, support bundle, updates, About. Call after the other menus are
/// filled. Also opens the update prompt whenever there is an update to offer.
void addHelpMenu(MainWindow &window);

} // namespace parcelory
