#include "carrier/ShippoRecords.h"

#include "core/Text.h"

namespace parcelory {
using namespace Qt::StringLiterals;

QString joinedTexts(const std::optional<QList<ShippoMessage>> &messages)
{
    QStringList texts;
    for (const ShippoMessage &message : messages.value_or(QList<ShippoMessage>()))
        texts += message.text.value_or(QString());
    return joinPresent(texts, u" • "_s);
}

} // namespace parcelory
