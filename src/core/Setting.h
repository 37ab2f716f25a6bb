#pragma once

#include <QString>

namespace parcelory {

/// A preference: its key and its default value.
template <class T>
struct Setting {
    QString key;
    T fallback;
};

} // namespace parcelory
