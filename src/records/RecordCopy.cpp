#include "records/RecordCopy.h"

namespace parcelory {
using namespace Qt::StringLiterals;

QString wordOf(CopyReason reason)
{
    switch (reason) {
    case CopyReason::daily:
        return u"daily"_s;
    case CopyReason::beforeImport:
        return u"beforeImport"_s;
    case CopyReason::beforeUpdate:
        return u"beforeUpdate"_s;
    case CopyReason::byHand:
        return u"byHand"_s;
    case CopyReason::beforeRestore:
        return u"beforeRestore"_s;
    }
    return {};
}

double RecordCopy::bytes() const
{
    double sum = 0;
    for (const File &file : files)
        sum += file.bytes;
    return sum;
}

LogChain::Head RecordCopy::head() const
{
    return {.position = qint64(headPosition),
            .hash = QByteArray::fromHex(headHash.toLatin1()),
            .log = QByteArray::fromHex(logId.value_or(QString()).toLatin1())};
}

} // namespace parcelory
