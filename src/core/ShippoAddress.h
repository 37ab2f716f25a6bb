#pragma once

#include "core/RecordField.h"

#include <QString>

#include <tuple>
#include <utility>

namespace parcelory {

/// An address as the program holds, stores and sends it. A missing part is an empty text.
struct ShippoAddress {
    QString name;
    QString company;
    QString street1;
    QString street2;
    QString city;
    QString state;
    QString zip;
    QString country;
    QString phone;
    QString email;

    /// The two street lines in at most 50 characters each, split between words if possible.
    static std::pair<QString, QString> splitStreet(const QString &street1, const QString &street2);
    /// Street and place in one line, without name, country and telephone.
    QString oneLine() const;
    /// True if nothing is filled in; a country alone is not an address.
    bool isEmpty() const;

    static constexpr auto fields()
    {
        using A = ShippoAddress;
        return std::tuple{field("name", &A::name),       field("company", &A::company), field("street1", &A::street1),
                          field("street2", &A::street2), field("city", &A::city),       field("state", &A::state),
                          field("zip", &A::zip),         field("country", &A::country), field("phone", &A::phone),
                          field("email", &A::email)};
    }
    bool operator==(const ShippoAddress &) const = default;
};

} // namespace parcelory
