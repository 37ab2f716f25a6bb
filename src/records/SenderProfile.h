#pragma once

#include "core/ShippoAddress.h"

#include <QUuid>

namespace parcelory {

/// A named return address.
struct SenderProfile {
    QUuid id = QUuid::createUuid();
    QString name;
    ShippoAddress address;

    static constexpr auto fields()
    {
        using P = SenderProfile;
        return std::tuple{field("id", &P::id), field("name", &P::name), field("address", &P::address)};
    }
    bool operator==(const SenderProfile &) const = default;
};

} // namespace parcelory
