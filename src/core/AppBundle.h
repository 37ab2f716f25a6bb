#pragma once

#include <QString>

namespace parcelory {

/// Where the program is in its application bundle, "Parcelory.app".
#ifdef Q_OS_MACOS
inline const QString programInBundle = QStringLiteral("Contents/MacOS/Parcelory");
#else
inline const QString programInBundle = QStringLiteral("bin/parcelory");
#endif

} // namespace parcelory
