#pragma once

#include <QString>
#include <QUrl>

namespace parcelory {

/// Services of the desktop outside the program's windows.
class Desktop {
public:
    virtual ~Desktop() = default;

    /// Opens a file with the user's default program for its type; throws AppError if no program opens it. May be called
    /// from any thread.
    virtual void openFile(const QString &path) = 0;
    /// Opens a web page in the browser; throws AppError if no browser opens it. May be called from any thread.
    virtual void openUrl(const QUrl &url) = 0;
    /// Puts a text on the clipboard. Main thread only.
    virtual void copyText(const QString &text) = 0;
};

} // namespace parcelory
