#pragma once

#include "practice/carrier/CarrierScenario.h" // IWYU pragma: export
#include "practice/carrier/PracticeCarrier.h" // IWYU pragma: export
#include "support/FakePlatform.h"             // IWYU pragma: export

namespace parcelory::test {

/// A fake platform whose carrier is the practice carrier, with a test key.
struct CarrierDesk : FakePlatform {
    PracticeCarrier carrier;

    CarrierDesk()
    {
        platform.deployment.carrierApi = carrier.baseUrl();
        useToken(PracticeCarrier::testToken);
    }

    /// Ends what was asked in the background. Call while the program exists: a request that outlives it never ends.
    void endRequests()
    {
        carrier.setScenario({}); // releases held answers
        runUntil([this] {
            networkClock.advance(std::chrono::minutes(2)); // the time of an answer without an end is over
            return http.underWay == 0;
        });
        settlePool(5);
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

/// The carrier's answer to the next `count` requests below `path`.
inline CarrierScenario answering(const QByteArray &path, int status, const QByteArray &body = {},
                                 const QByteArray &method = {}, int count = 1)
{
    return {.failNext = CarrierFailure{path, status, "application/json", body, count, method}};
}

/// A sender or recipient of tests/data.
inline ShippoAddress sampleAddress(const char *name)
{
    return changed(ShippoAddress(), table(QStringLiteral("addresses"), "samples")[0][name]);
}
inline ShippoAddress deskAddress()
{
    return sampleAddress("desk");
}
inline ShippoAddress homeAddress()
{
    return sampleAddress("home");
}
inline ShippoAddress londonAddress()
{
    return sampleAddress("London");
}

} // namespace parcelory::test
