#include "carrier/PurchaseTag.h"

#include "core/CountryCode.h"
#include "core/Text.h"

#include "compose/Services.h"
#include "core/ShippoAddress.h"
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString mark = u"KX"_s;

/// A separator within a field would split the field.
QString fieldText(QString text)
{
    return text.replace(u'|', u'/');
}

} // namespace

PurchaseTag PurchaseTag::of(const ShippoAddress &from, const ShippoAddress &to, Carrier carrier, const QString &service)
{
    const QString country = to.country.trimmed().isEmpty() ? u"US"_s : CountryCode::alpha2(to.country);
    return {.country = fieldText(firstCharacters(country, 28)),
            .recipient = fieldText(firstCharacters(to.name, 22)),
            .service = fieldText(carrierInfo(carrier).displayName + u' ' + service),
            .office = fieldText(firstCharacters(from.zip.section(u'-', 0, 0).trimmed(), 32))};
}

QString PurchaseTag::text() const
{
    return QStringList{mark, country, recipient, service, office}.join(u'|');
}

std::optional<PurchaseTag> PurchaseTag::read(const QString &text)
{
    const QStringList fields = text.split(u'|');
    if (fields.size() != 5 || fields[0] != mark)
        return std::nullopt;
    return PurchaseTag{fields[1].toUpper(), fields[2], fields[3], fields[4]};
}

} // namespace parcelory
