#pragma once

#include "app/AppState.h"

namespace parcelory {

/// Learns from the carrier how requested refunds ended, and whether a refund whose response was lost was requested at
/// all. Writes the outcome into the mailing log.
class RefundSync {
public:
    explicit RefundSync(AppState &app) : m_app(app) {}

    /// Asks the carrier, at most once a minute. False when it did not ask because the last run was less than a minute
    /// ago.
    Task<bool> run();

private:
    enum class Refund { unknown, none, pending, granted, rejected };

    Task<Refund> askCarrier(QString transactionId);
    Task<bool> settle(ShipmentRecord record);
    Task<bool> settleLost(OpenRefund refund);
    Task<bool> store(ShipmentRecord record, Refund refund);

    AppState &m_app;
};

} // namespace parcelory
