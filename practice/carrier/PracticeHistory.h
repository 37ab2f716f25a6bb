#pragma once

#include <QDateTime>
#include <QString>

#include <chrono>

namespace parcelory {

struct PracticeLedger;

/// Adds labels that another desk bought to an account: the newest at `newest`, each further label `step` earlier.
void addHistory(PracticeLedger &ledger, int labels, const QDateTime &newest, std::chrono::seconds step);

/// A label that is to be in an account, as if it had been bought at some time of the day.
struct PracticeSale {
    const char *name, *street, *city, *state, *zip, *country;
    const char *carrier, *service, *amount;
    QDateTime at;
    const char *status = "SUCCESS";
    bool isOnForm = false; ///< a SCAN form lists it
};

/// The carrier's answer to such a purchase.
struct PracticeSold {
    QString transactionId, tracking, trackingUrl, labelUrl;
};

PracticeSold addSale(PracticeLedger &ledger, const PracticeSale &sale);

} // namespace parcelory
