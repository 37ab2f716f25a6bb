#pragma once

#include <QString>

namespace parcelory {

/// What the desktop does for the program outside its windows. May be called from any thread.
class Desktop {
public:
    virtual ~Desktop() = default;

    /// Opens a file with the program that the user has chosen for its kind; throws AppError when none takes it.
    virtual void openFile(const QString &path) = 0;
};

} // namespace parcelory
