#pragma once

#include <QString>
#include <QStringList>

namespace parcelory {

/// The program itself, as something that is installed and runs.
class Application {
public:
    virtual ~Application() = default;

    virtual QString version() const = 0;
    /// The folder Parcelory.app that the running program stands in; empty when it stands in none, because a package
    /// manager or a build has put it where it is.
    virtual QString installedPath() const = 0;
    virtual qint64 processId() const = 0;

    /// Starts a program that outlives this one; throws AppError when it cannot be started.
    virtual void startDetached(const QString &program, const QStringList &arguments) = 0;
    /// Asks the program to end, which windows may hold up.
    virtual void quit() = 0;
    /// Ends the process at once.
    virtual void endNow() = 0;
};

} // namespace parcelory
