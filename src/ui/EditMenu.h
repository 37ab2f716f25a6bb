#pragma once

class QMenuBar;

namespace parcelory {

/// Adds the Edit menu: Undo, Redo, Cut, Copy, Paste and Select All for the focused widget.
void addEditMenu(QMenuBar *bar);

} // namespace parcelory
