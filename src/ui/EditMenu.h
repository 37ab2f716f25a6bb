#pragma once

#include <functional>

class QMenuBar;

namespace parcelory {

/// What Undo takes back if the focused widget has nothing to undo.
struct UndoElsewhere {
    std::function<bool()> isOffered;
    std::function<void()> run;
};

/// Adds the Edit menu: Undo, Redo, Cut, Copy, Paste and Select All for the focused widget.
void addEditMenu(QMenuBar *bar, UndoElsewhere elsewhere);

} // namespace parcelory
