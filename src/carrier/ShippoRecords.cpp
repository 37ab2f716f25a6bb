#include "carrier/ShippoRecords.h"

#include "core/Text.h"

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

QString serviceName(const ShippoServiceLevel &level)
{
    return level.name.value_or(level.token.value_or(QString()));
}

QString joinedTexts(const std::optional<QList<ShippoMessage>> &messages)
{
    QStringList texts;
    for (const ShippoMessage &message : messages.value_or(QList<ShippoMessage>()))
        texts += message.text.value_or(QString());
    return joinPresent(texts, u" • "_s);
}

} // namespace parcelory
