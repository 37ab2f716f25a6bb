#include "app/logs/CarrierJourney.h"

#include "core/IsoDate.h"
#include "core/Text.h"
#include "records/StatusWords.h"

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

QString carrierToken(const ShipmentRecord &record)
{
    return record.carrier.compare(u"FedEx"_s, Qt::CaseInsensitive) == 0 ? u"fedex"_s : u"usps"_s;
}

Journey journeyOf(const ShippoTrackStatus &answer, const std::optional<Journey> &former, const QDateTime &now)
{
    const auto told = answer.trackingStatus.value_or(ShippoTrackStatus::TrackingStatus());
    const auto place = told.location.value_or(ShippoTrackStatus::Location());
    Journey journey = former.value_or(Journey());
    journey.askedAt = now;
    const TrackingStatus status = trackingStatusFrom(told.status.value_or(QString()));
    if (status == TrackingStatus::unknown)
        return journey;
    const std::optional<QDateTime> moved = parseIso(told.statusDate.value_or(QString()));
    if (moved || status != journey.status)
        journey.movedAt = moved.value_or(now);
    journey.status = status;
    journey.isScanned = journey.isScanned || status != TrackingStatus::preTransit;
    journey.zip = place.zip.value_or(QString());
    journey.place = joinPresent({place.city.value_or(QString()), place.state.value_or(QString())}, u" "_s);
    return journey;
}

bool storeJourney(AppState &app, const ShipmentRecord &label, const ShippoTrackStatus &answer, const QDateTime &now)
{
    const QString told = answer.trackingStatus.value_or(ShippoTrackStatus::TrackingStatus()).status.value_or(QString());
    const QString word = told.isEmpty() ? wordOf(TrackingStatus::unknown) : told;
    return Journeys::learn(app.log, label, word,
                           [&](const std::optional<Journey> &former) { return journeyOf(answer, former, now); });
}

} // namespace parcelory
