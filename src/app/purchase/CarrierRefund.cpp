#include "app/purchase/CarrierRefund.h"

#include "carrier/CarrierWords.h"
#include "records/ShipmentStatus.h"

#include <optional>

namespace parcelory {

std::optional<RefundState> refundStateOf(TransactionStatus status)
{
    switch (status) {
    case TransactionStatus::success:
        return RefundState::none;
    case TransactionStatus::refundPending:
        return RefundState::pending;
    case TransactionStatus::refunded:
        return RefundState::granted;
    case TransactionStatus::refundRejected:
        return RefundState::failed;
    case TransactionStatus::unknown:
    case TransactionStatus::queued:
    case TransactionStatus::waiting:
    case TransactionStatus::error:
        break;
    }
    return std::nullopt;
}

RefundState refundStateOf(RefundAnswer answer)
{
    if (answer == RefundAnswer::success)
        return RefundState::granted;
    return answer == RefundAnswer::error ? RefundState::failed : RefundState::pending;
}

} // namespace parcelory
