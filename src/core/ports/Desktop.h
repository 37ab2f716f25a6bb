#pragma once

#include <QString>
#include <QUrl>

namespace parcelory {

/// What the desktop does for the program outside its windows.
class Desktop {
public:
    virtual ~Desktop() = default;

    /// Opens a file with the program that the user has chosen for its kind; throws AppError when none takes it. May be
    /// called from any thread.
    virtual void openFile(const QString &path) = 0;
    /// Opens a web page in the browser; throws AppError when there is none. May be called from any thread.
    virtual void openUrl(const QUrl &url) = 0;
    /// Puts a text on the clipboard. Main thread only.
    virtual void copyText(const QString &text) = 0;
};

} // namespace parcelory
