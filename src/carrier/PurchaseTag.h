#pragma once

#include "carrier/ShippoRecords.h"
#include "compose/Services.h"

namespace parcelory {

/// The text sent along with a purchase, by which the account's history tells this desk's labels from others:
/// "KX|GB|Harriet Ashcombe|FedEx International Priority|97301".
///
/// Field 2 is the recipient's country code, field 3 the recipient's name, field 4 carrier and service, field 5 the
/// digits of the sender's five-digit ZIP, so that an office is recognised by its number. The order keeps the whole
/// text under the carrier's 100 characters, where a cut would fall into the last field and change the number.
QString purchaseTag(const ShippoAddress &from, const ShippoAddress &to, Carrier carrier, const QString &service);

} // namespace parcelory
