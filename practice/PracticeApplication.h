#pragma once

#include "core/AppError.h"
#include "platform/SystemApplication.h"

namespace parcelory {

/// The practice desk's application: not installed, so never updated.
class PracticeApplication : public SystemApplication {
public:
    QString installedPath() const override { return {}; }
    void startDetached(const QString &program, const QStringList &) override
    {
        throw AppError(QStringLiteral("The practice desk does not start %1.").arg(program));
    }
};

} // namespace parcelory
