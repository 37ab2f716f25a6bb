#pragma once

#include "ui/parts/Dialog.h"

class QMenuBar;

namespace parcelory {

/// Every shortcut that a menu of the bar names, under the menu's name.
Dialog *makeShortcutOverview(Clock &clock, const QMenuBar &bar, QWidget *parent);

} // namespace parcelory
