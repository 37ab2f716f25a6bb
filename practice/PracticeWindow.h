#pragma once

#include <QString>

namespace parcelory {

/// Opens the program's window on the practice desk; returns the process's exit status when it is closed.
int runPracticeWindow(const QString &folder);

} // namespace parcelory
