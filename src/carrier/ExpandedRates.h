#pragma once

#include <QByteArray>

namespace parcelory {

/// Labels that another program bought in a single call hold the whole rate instead of its id. Returns the page with the
/// id as "rate", and what is known of the rate as "rate_object" (see ShippoTransaction). Any other text is unchanged.
QByteArray withRateIds(const QByteArray &page);

} // namespace parcelory
