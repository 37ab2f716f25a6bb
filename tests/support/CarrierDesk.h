#pragma once

#include "core/Json.h"
#include "practice/carrier/PracticeCarrier.h"
#include "support/FakePlatform.h"
#include "support/RunTask.h"

namespace parcelory::test {

/// A fake platform whose carrier is the practice carrier, with a test key.
struct CarrierDesk : FakePlatform {
    PracticeCarrier carrier;

    CarrierDesk()
    {
        platform.deployment.carrierApi = carrier.baseUrl();
        useToken(PracticeCarrier::testToken);
    }

    /// The bodies of the POST requests to a path so far.
    QList<Json> sent(const QByteArray &target) const
    {
        QList<Json> bodies;
        for (const PracticeCarrier::Request &request : carrier.requests()) {
            if (request.target == target && request.method == "POST")
                bodies.append(parseJson(request.body));
        }
        return bodies;
    }
};

inline ShippoAddress deskAddress()
{
    using namespace Qt::StringLiterals;
    return {u"Shipping Desk"_s,
            u"Corvallon Rare Coins"_s,
            u"1180 Harbor View Rd"_s,
            u"Suite 300"_s,
            u"Salem"_s,
            u"OR"_s,
            u"97301"_s,
            u"US"_s,
            u"503-555-0142"_s,
            u"desk@example.com"_s};
}

inline ShippoAddress homeAddress()
{
    using namespace Qt::StringLiterals;
    return {u"Eleanor Whitfield"_s,
            {},
            u"418 Montford Ave"_s,
            u"Apt 3B"_s,
            u"Asheville"_s,
            u"NC"_s,
            u"28801"_s,
            u"US"_s,
            {},
            {}};
}

inline ShippoAddress londonAddress()
{
    using namespace Qt::StringLiterals;
    return {u"Harriet Ashcombe"_s, {}, u"14 Chandos Place"_s, {}, u"London"_s, {}, u"WC2N 4HS"_s, u"United Kingdom"_s,
            u"+44 20 7946 0123"_s, {}};
}

} // namespace parcelory::test
