#include "carrier/ArrivalWatch.h"

#include "carrier/ShippoClient.h"

namespace parcelory {

bool ArrivalWatch::mayStillArrive(const QString &request, const QDateTime &askedAt)
{
    const QDateTime steady = m_clock.steadyNow();
    const QDateTime seen = m_firstSeen.try_emplace({request, askedAt}, steady).first->second;
    const QDateTime countedOn = m_start.addMSecs(m_steadyStart.msecsTo(steady));
    const bool isRecent =
        ShippoClient::mayStillArrive(askedAt, m_clock.now()) || ShippoClient::mayStillArrive(askedAt, countedOn);
    return isRecent && ShippoClient::mayStillArrive(seen, steady);
}

} // namespace parcelory
