#include "compose/Customs.h"

#include <algorithm>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

QString CustomsItem::summary() const
{
    return description + u" - HS Code "_s + hsCode;
}

const QList<CustomsItem> &customsItems()
{
    using enum CustomsItemType;
    static const QString studyItem = u"Numismatic Study Item"_s;
    static const QString investment = u"Investment Gold Coin. ex-legal tender. 0% Duty, 0% VAT (VAT Notice 702/21A)"_s;
    static const QList<CustomsItem> table = {
        {gold, u"gold"_s, u"Numismatic Study Item - HS Code 71189000  (Gold)"_s, studyItem, u"71189000"_s, {}},
        {silver, u"silver"_s, u"Numismatic Study Item - HS Code 71181000  (Silver)"_s, studyItem, u"71181000"_s, {}},
        {currency,
         u"currency"_s,
         u"Numismatic Study Item - HS Code 49070030  (Currency)"_s,
         studyItem,
         u"49070030"_s,
         {}},
        {readingMaterial,
         u"readingMaterial"_s,
         u"Reading Material HS Code 4901.10.0040"_s,
         u"Reading Material"_s,
         u"4901.10.0040"_s,
         {}},
        {investmentGold, u"investmentGold"_s, investment, studyItem, u"71189000"_s, investment},
    };
    return table;
}

const CustomsItem &customsItem(CustomsItemType type)
{
    return customsItems()[qsizetype(type)];
}

std::optional<CustomsItemType> customsItemTypeFrom(const QString &rawValue)
{
    const auto found = std::ranges::find(customsItems(), rawValue, &CustomsItem::rawValue);
    return found == customsItems().end() ? std::nullopt : std::optional(found->type);
}

} // namespace parcelory
