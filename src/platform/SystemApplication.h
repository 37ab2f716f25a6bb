#pragma once

#include "core/ports/Application.h"

namespace parcelory {

class SystemApplication : public Application {
public:
    /// The bundle that holds `programFolder`; empty if the folder is not in a bundle.
    static QString bundleAround(const QString &programFolder);

    QString version() const override;
    QString installedPath() const override;
    qint64 processId() const override;
    void startDetached(const QString &program, const QStringList &arguments) override;
    void quitWithin(std::chrono::milliseconds patience) override;
};

} // namespace parcelory
