#pragma once

#include <QString>
#include <QStringList>

#include <chrono>

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
    /// Asks the program to end, and ends the process outright once `patience` has passed, whatever holds it up.
    virtual void quitWithin(std::chrono::milliseconds patience) = 0;
};

} // namespace parcelory
