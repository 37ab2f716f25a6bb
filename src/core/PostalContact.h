#pragma once

#include "core/RecordField.h"
#include "core/ShippoAddress.h"

#include <QString>
#include <QUuid>

#include <tuple>

namespace parcelory {

/// An address book entry, as entered or imported.
struct PostalContact {
    QUuid id = QUuid::createUuid();
    QString name;
    QString company;
    QString street1;
    QString street2;
    QString city;
    QString state;
    QString zip;
    QString country; ///< in any form; CountryCode converts it to a code
    QString label;   ///< a free tag such as "home"
    QString phone;
    QString email;

    /// One line for lists: street and place.
    QString addressSummary() const;
    /// A new entry for a recipient; the inverse of asShippoAddress().
    static PostalContact of(const ShippoAddress &who);
    /// The same address in the form that the carrier client takes; nothing is normalized here.
    ShippoAddress asShippoAddress() const;

    static constexpr auto fields()
    {
        using C = PostalContact;
        return std::tuple{field("id", &C::id),           field("name", &C::name),       field("company", &C::company),
                          field("street1", &C::street1), field("street2", &C::street2), field("city", &C::city),
                          field("state", &C::state),     field("zip", &C::zip),         field("country", &C::country),
                          field("label", &C::label),     field("phone", &C::phone),     field("email", &C::email)};
    }
    bool operator==(const PostalContact &) const = default;
};

} // namespace parcelory
