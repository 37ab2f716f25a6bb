#pragma once

#include "core/AppError.h"
#include "platform/SystemApplication.h"

namespace parcelory {

/// The practice desk's program: it is nowhere installed and replaces nothing.
class PracticeApplication : public SystemApplication {
public:
    QString installedPath() const override { return {}; }
    void startDetached(const QString &program, const QStringList &) override
    {
        throw AppError(QStringLiteral("The practice desk does not start %1.").arg(program));
    }
};

} // namespace parcelory
