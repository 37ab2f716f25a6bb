#include "records/BoxProfile.h"

namespace parcelory {
using namespace Qt::StringLiterals;

QString BoxProfile::dimsDisplay() const
{
    if (length.isEmpty() && width.isEmpty() && height.isEmpty())
        return u"no dims"_s;
    return length + u"×"_s + width + u"×"_s + height + u'"';
}

QString BoxProfile::title() const
{
    const QString given = name.trimmed();
    return given.isEmpty() ? QStringLiteral("Box ") + dimsDisplay() : given;
}

} // namespace parcelory
