#pragma once

#include "carrier/ShippoRecords.h"
#include "compose/Customs.h"

#include <nlohmann/json_fwd.hpp>

#include <QDateTime>

#include <optional>

namespace parcelory {

using Json = nlohmann::ordered_json;

/// Everything that a rate depends on.
struct RatingRequest {
    ShippoAddress from;
    ShippoAddress to;
    ShippoParcel parcel;
    QString parcelTemplate; ///< the carrier's packaging; replaces the dimensions when not empty
    QDateTime shipDate;
    QString signatureConfirmation; ///< the carrier API's value for the kind of signature; empty: no signature
    QString insuranceAmount;       ///< US dollars as typed; anything but a positive number adds no insurance
    QString insuranceProvider;     ///< empty: the carrier API's third-party insurance
    std::optional<bool> isResidential;
    std::optional<CustomsInfo> customs;
};

/// The address as the carrier gets it: street lines split and without "#" before a box number, name cut to 50
/// characters, country as its code ("US" if empty).
ShippoAddress addressAsSent(const ShippoAddress &address);
/// The address object of every request.
Json addressObject(const ShippoAddress &address);

/// The body of a rating request.
Json shipmentBody(const RatingRequest &request);

} // namespace parcelory
