#include "core/Csv.h"

namespace parcelory {
using namespace Qt::StringLiterals;

QString csvRow(QStringList fields)
{
    for (QString &field : fields)
        field = u'"' + field.replace(u'"', u"\"\""_s) + u'"';
    return fields.join(u',');
}

} // namespace parcelory
