#pragma once

#include <QString>

namespace parcelory {

/// A preference: its key and the value that a missing one reads as.
template <class T>
struct Setting {
    QString key;
    T fallback;
};

} // namespace parcelory
