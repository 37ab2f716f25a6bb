#pragma once

#include <QString>
#include <QStringList>

#include <chrono>

namespace parcelory {

/// The running program and its installation.
class Application {
public:
    virtual ~Application() = default;

    virtual QString version() const = 0;
    /// The Parcelory.app folder that contains the running program; empty if there is no such folder, because a package
    /// manager or a build put the program in place.
    virtual QString installedPath() const = 0;
    virtual qint64 processId() const = 0;

    /// Starts a program that outlives this one; throws AppError when it cannot be started.
    virtual void startDetached(const QString &program, const QStringList &arguments) = 0;
    /// Asks the program to quit, and ends the process after `patience` in any case.
    virtual void quitWithin(std::chrono::milliseconds patience) = 0;
};

} // namespace parcelory
