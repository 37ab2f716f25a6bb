#pragma once

#include "carrier/CarrierWords.h"
#include "records/ShipmentStatus.h"

#include <optional>

namespace parcelory {

/// The state of a sold label's refund at the carrier; absent if the status does not tell.
std::optional<RefundState> refundStateOf(TransactionStatus status);

/// The state after the carrier's response to a refund request: only success and error are decisions.
RefundState refundStateOf(RefundAnswer answer);

} // namespace parcelory
