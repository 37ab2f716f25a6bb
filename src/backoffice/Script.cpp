#include "backoffice/Script.h"

#include <QFile>

static void loadResources()
{
    Q_INIT_RESOURCE(backoffice); // a static library's resources are linked only when asked for
}

namespace parcelory {

QString scriptText(const QString &name)
{
    loadResources();
    QFile file(QStringLiteral(":/backoffice/") + name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("the script %s is not in this build", qUtf8Printable(name));
    return QString::fromUtf8(file.readAll()).trimmed();
}

} // namespace parcelory
