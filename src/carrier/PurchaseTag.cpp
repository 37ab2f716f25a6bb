#include "carrier/PurchaseTag.h"

#include "core/CountryCode.h"
#include "core/Text.h"

namespace parcelory {
using namespace Qt::StringLiterals;

QString purchaseTag(const ShippoAddress &from, const ShippoAddress &to, Carrier carrier, const QString &service)
{
    const QString country = to.country.trimmed().isEmpty() ? u"US"_s : CountryCode::alpha2(to.country);
    QStringList fields = {u"KX"_s, firstCharacters(country, 28), firstCharacters(to.name, 22),
                          carrierInfo(carrier).displayName + u' ' + service,
                          firstCharacters(from.zip.section(u'-', 0, 0).trimmed(), 32)};
    for (QString &field : fields)
        field.replace(u'|', u'/');
    return fields.join(u'|');
}

} // namespace parcelory
