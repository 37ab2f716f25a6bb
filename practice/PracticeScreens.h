#pragma once

#include <QString>

namespace parcelory {

/// Draws every screen of the program, in all its states, as PNG files in `folder`, on temporary practice desks with
/// fixed drafts. Returns the process's exit status.
int drawScreens(const QString &folder);

} // namespace parcelory
