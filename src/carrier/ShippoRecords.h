#pragma once

// The records in the carrier API's responses, with keys in snake case. Fields without std::optional are required, or
// the whole response fails to decode. Amounts of money stay the carrier's decimal text.

#include "core/RecordField.h"
#include "core/ShippoAddress.h"

#include <QList>
#include <QString>

#include <optional>
#include <tuple>

namespace parcelory {

/// A remark on a shipment, a purchase or a validation. Successful responses may have messages, too.
struct ShippoMessage {
    std::optional<QString> source;
    std::optional<QString> code;
    std::optional<QString> text;

    static constexpr auto fields()
    {
        using M = ShippoMessage;
        return std::tuple{field("source", &M::source), field("code", &M::code), field("text", &M::text)};
    }
};

/// The non-empty texts of the messages, separated by bullets.
QString joinedTexts(const std::optional<QList<ShippoMessage>> &messages);

struct ShippoServiceLevel {
    std::optional<QString> name;  ///< for display
    std::optional<QString> token; ///< as in ServiceClass

    static constexpr auto fields()
    {
        using S = ShippoServiceLevel;
        return std::tuple{field("name", &S::name), field("token", &S::token)};
    }
    bool operator==(const ShippoServiceLevel &) const = default;
};

/// The name for display, or the token if the carrier gives no name.
QString serviceName(const ShippoServiceLevel &level);

/// One price quote of a shipment.
struct ShippoRate {
    QString objectId;
    QString amount; ///< decimal text
    QString currency;
    QString provider; ///< the carrier's name, "USPS", "FedEx", "UPS" …
    ShippoServiceLevel servicelevel;
    std::optional<int> estimatedDays;
    std::optional<QString> durationTerms;
    std::optional<QList<QString>> attributes; ///< "CHEAPEST", "FASTEST" …
    std::optional<QString> objectCreated;     ///< ISO 8601, by the carrier's clock
    std::optional<QString> carrierAccount;    ///< id of the contract that the price belongs to

    static constexpr auto fields()
    {
        using R = ShippoRate;
        return std::tuple{field("objectId", &R::objectId),           field("amount", &R::amount),
                          field("currency", &R::currency),           field("provider", &R::provider),
                          field("servicelevel", &R::servicelevel),   field("estimatedDays", &R::estimatedDays),
                          field("durationTerms", &R::durationTerms), field("attributes", &R::attributes),
                          field("objectCreated", &R::objectCreated), field("carrierAccount", &R::carrierAccount)};
    }
    bool operator==(const ShippoRate &) const = default;
};

/// A shipment as it appears in the account's list.
struct ShippoShipmentListed {
    /// The short address in shipment responses.
    struct Address {
        std::optional<QString> name;
        std::optional<QString> company;
        std::optional<QString> street1;
        std::optional<QString> street2;
        std::optional<QString> city;
        std::optional<QString> state;
        std::optional<QString> zip;
        std::optional<QString> country;

        static constexpr auto fields()
        {
            using A = Address;
            return std::tuple{field("name", &A::name),       field("company", &A::company),
                              field("street1", &A::street1), field("street2", &A::street2),
                              field("city", &A::city),       field("state", &A::state),
                              field("zip", &A::zip),         field("country", &A::country)};
        }
    };

    QString objectId;
    std::optional<QString> objectCreated; ///< ISO 8601
    std::optional<Address> addressTo;
    std::optional<QList<ShippoRate>> rates;

    static constexpr auto fields()
    {
        using S = ShippoShipmentListed;
        return std::tuple{field("objectId", &S::objectId), field("objectCreated", &S::objectCreated),
                          field("addressTo", &S::addressTo), field("rates", &S::rates)};
    }
};

/// The response to a rating request.
struct ShippoShipment {
    QString objectId;
    std::optional<QString> status; ///< may still be "QUEUED" while the rates are already there
    QList<ShippoRate> rates;
    std::optional<QList<ShippoMessage>> messages;
    std::optional<ShippoShipmentListed::Address> addressTo; ///< the recipient as the carrier will print it
    std::optional<QString> objectCreated;

    static constexpr auto fields()
    {
        using S = ShippoShipment;
        return std::tuple{field("objectId", &S::objectId),   field("status", &S::status),
                          field("rates", &S::rates),         field("messages", &S::messages),
                          field("addressTo", &S::addressTo), field("objectCreated", &S::objectCreated)};
    }
};

/// What a list tells of the rate of a label that another program bought in a single call.
struct ShippoKnownRate {
    std::optional<QString> amount;
    std::optional<QString> provider;
    std::optional<QString> service; ///< for display

    static constexpr auto fields()
    {
        using K = ShippoKnownRate;
        return std::tuple{field("amount", &K::amount), field("provider", &K::provider), field("service", &K::service)};
    }
};

/// A label purchase. Number and links are empty texts, not absent, until the label exists.
struct ShippoTransaction {
    QString objectId;
    QString status; ///< see transactionStatus()
    std::optional<QString> trackingNumber;
    std::optional<QString> trackingUrlProvider; ///< the carrier's tracking page
    std::optional<QString> labelUrl;
    std::optional<QString> commercialInvoiceUrl;
    std::optional<QList<ShippoMessage>> messages;
    std::optional<QString> rate;               ///< id of the rate bought
    std::optional<ShippoKnownRate> rateObject; ///< see withRateIds()
    std::optional<QString> objectCreated;
    std::optional<bool> test;
    std::optional<QString> metadata;

    static constexpr auto fields()
    {
        using T = ShippoTransaction;
        return std::tuple{field("objectId", &T::objectId),
                          field("status", &T::status),
                          field("trackingNumber", &T::trackingNumber),
                          field("trackingUrlProvider", &T::trackingUrlProvider),
                          field("labelUrl", &T::labelUrl),
                          field("commercialInvoiceUrl", &T::commercialInvoiceUrl),
                          field("messages", &T::messages),
                          field("rate", &T::rate),
                          field("rateObject", &T::rateObject),
                          field("objectCreated", &T::objectCreated),
                          field("test", &T::test),
                          field("metadata", &T::metadata)};
    }
};

struct ShippoValidationResults {
    std::optional<bool> isValid; ///< absent if nothing was validated
    std::optional<QList<ShippoMessage>> messages;

    static constexpr auto fields()
    {
        using V = ShippoValidationResults;
        return std::tuple{field("isValid", &V::isValid), field("messages", &V::messages)};
    }
};

/// The carrier's version of an address, and the result of its validation.
struct ShippoValidatedAddress {
    std::optional<QString> objectId;
    std::optional<bool> isComplete;
    std::optional<ShippoValidationResults> validationResults;
    std::optional<QString> street1;
    std::optional<QString> street2;
    std::optional<QString> city;
    std::optional<QString> state;
    std::optional<QString> zip;
    std::optional<QString> country;

    static constexpr auto fields()
    {
        using A = ShippoValidatedAddress;
        return std::tuple{field("objectId", &A::objectId),
                          field("isComplete", &A::isComplete),
                          field("validationResults", &A::validationResults),
                          field("street1", &A::street1),
                          field("street2", &A::street2),
                          field("city", &A::city),
                          field("state", &A::state),
                          field("zip", &A::zip),
                          field("country", &A::country)};
    }
};

struct ShippoRefund {
    std::optional<QString> objectId;
    std::optional<QString> status; ///< see refundAnswer()

    static constexpr auto fields()
    {
        return std::tuple{field("objectId", &ShippoRefund::objectId), field("status", &ShippoRefund::status)};
    }
};

/// A parcel's tracking status.
struct ShippoTrackStatus {
    struct Location {
        std::optional<QString> city, state, zip;

        static constexpr auto fields()
        {
            using L = Location;
            return std::tuple{field("city", &L::city), field("state", &L::state), field("zip", &L::zip)};
        }
    };

    struct TrackingStatus {
        std::optional<QString> status;
        std::optional<QString> statusDetails;
        std::optional<QString> statusDate;
        std::optional<Location> location;

        static constexpr auto fields()
        {
            using T = TrackingStatus;
            return std::tuple{field("status", &T::status), field("statusDetails", &T::statusDetails),
                              field("statusDate", &T::statusDate), field("location", &T::location)};
        }
    };

    std::optional<QString> trackingNumber;
    std::optional<TrackingStatus> trackingStatus;
    std::optional<QString> eta;

    static constexpr auto fields()
    {
        using T = ShippoTrackStatus;
        return std::tuple{field("trackingNumber", &T::trackingNumber), field("trackingStatus", &T::trackingStatus),
                          field("eta", &T::eta)};
    }
};

/// A SCAN form: one sheet that the carrier scans for all of the day's labels.
struct ShippoManifest {
    QString objectId;
    std::optional<QString> status;           ///< see manifestStatus()
    std::optional<QList<QString>> documents; ///< addresses of the form's PDF pages
    std::optional<QList<QString>> transactions;
    std::optional<QString> objectCreated;

    static constexpr auto fields()
    {
        using M = ShippoManifest;
        return std::tuple{field("objectId", &M::objectId), field("status", &M::status),
                          field("documents", &M::documents), field("transactions", &M::transactions),
                          field("objectCreated", &M::objectCreated)};
    }
};

struct ShippoCarrierAccount {
    QString objectId;
    QString carrier;
    std::optional<bool> active;

    static constexpr auto fields()
    {
        using C = ShippoCarrierAccount;
        return std::tuple{field("objectId", &C::objectId), field("carrier", &C::carrier), field("active", &C::active)};
    }
};

/// One page of a list.
template <class T>
struct ShippoList {
    std::optional<QString> next; ///< absolute address of the next page
    QList<T> results;

    static constexpr auto fields()
    {
        return std::tuple{field("next", &ShippoList::next), field("results", &ShippoList::results)};
    }
};

using ShippoCarrierAccountList = ShippoList<ShippoCarrierAccount>;

/// A parcel as passed to rating: six decimal or unit texts; sent without dimensions unless it has all three.
struct ShippoParcel {
    QString length;
    QString width;
    QString height;
    QString distanceUnit;
    QString weight;
    QString massUnit;
};

} // namespace parcelory
