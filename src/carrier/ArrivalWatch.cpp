#include "carrier/ArrivalWatch.h"

#include "carrier/ShippoClient.h"

namespace parcelory {

bool ArrivalWatch::mayStillArrive(const QString &request, const QDateTime &askedAt)
{
    const QDateTime steady = m_clock.steadyNow();
    const QDateTime seen = m_firstSeen.try_emplace({request, askedAt}, steady).first->second;
    return ShippoClient::mayStillArrive(askedAt, m_clock.now()) && ShippoClient::mayStillArrive(seen, steady);
}

} // namespace parcelory
