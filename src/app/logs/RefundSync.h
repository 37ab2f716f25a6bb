#pragma once

#include "app/AppState.h"
#include "carrier/ArrivalWatch.h"
#include "records/ShipmentStatus.h"

#include <optional>

namespace parcelory {

/// Learns from the carrier how requested refunds ended, and whether a refund whose response was lost was requested at
/// all. Writes the outcome into the mailing log.
class RefundSync {
public:
    explicit RefundSync(AppState &app) : m_app(app), m_arrivals(app.platform.clock) {}

    /// Asks the carrier, at most once a minute. False when it did not ask because the last run was less than a minute
    /// ago.
    Task<bool> run();

private:
    Task<QList<ShipmentRecord>> nextRefunds();
    Task<std::optional<RefundState>> askCarrier(QString transactionId);
    Task<bool> settle(ShipmentRecord record);
    Task<bool> settleLost(OpenRefund refund);
    Task<bool> store(ShipmentRecord record, RefundState refund);

    AppState &m_app;
    ArrivalWatch m_arrivals;
};

} // namespace parcelory
