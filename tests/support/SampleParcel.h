#pragma once

#include "compose/LabelReadBack.h"

namespace parcelory {

/// The parcel of tests/data/labels/fedex.zpl.
inline PrintedParcel fedexParcel()
{
    return {.to = {.name = QStringLiteral("Ruth Abernathy"),
                   .street1 = QStringLiteral("88 Quarry Ln"),
                   .street2 = QStringLiteral("Apt 4"),
                   .city = QStringLiteral("Bend"),
                   .state = QStringLiteral("OR"),
                   .zip = QStringLiteral("97702")},
            .senderZip = QStringLiteral("97301"),
            .tracking = QStringLiteral("794600000001")};
}

} // namespace parcelory
