#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace parcelory {

/// The contents of an international parcel, in customs terms.
enum class CustomsItemType { gold, silver, currency, readingMaterial, investmentGold };

struct CustomsItem {
    CustomsItemType type;
    QString rawValue;
    QString pickerText;
    QString description;
    QString hsCode;
    QString invoiceExtraLine; ///< an extra line of the commercial invoice; usually empty

    /// "Numismatic Study Item - HS Code 71189000"
    QString summary() const;
};

const QList<CustomsItem> &customsItems();
const CustomsItem &customsItem(CustomsItemType type);
std::optional<CustomsItemType> customsItemTypeFrom(const QString &rawValue);

/// The customs declaration of a draft.
struct CustomsInfo {
    CustomsItemType itemType = CustomsItemType::gold;
    QString quantity; ///< a whole number as typed
    QString value;    ///< declared value in US dollars as typed
    QString signer;   ///< who certifies the declaration

    bool operator==(const CustomsInfo &) const = default;
};

} // namespace parcelory
