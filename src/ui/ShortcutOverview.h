#pragma once

#include "ui/parts/Dialog.h"

class QMenuBar;

namespace parcelory {

/// A dialog with every shortcut of the menu bar, grouped by menu.
Dialog *makeShortcutOverview(Clock &clock, const QMenuBar &bar, QWidget *parent);

} // namespace parcelory
