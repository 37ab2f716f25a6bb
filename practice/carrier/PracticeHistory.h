#pragma once

#include <QDateTime>
#include <QString>

#include <chrono>
#include <string>

namespace parcelory {

struct PracticeLedger;

/// Adds labels that another desk bought to an account: the newest at `newest`, each further label `step` earlier.
void addHistory(PracticeLedger &ledger, int labels, const QDateTime &newest, std::chrono::seconds step);

/// A label that is to be in an account, as if it had been bought at some time.
struct PracticeSale {
    std::string name, street, city, state, zip, country;
    std::string carrier, service, amount;
    QDateTime at;
    std::string status = "SUCCESS";
    bool isOnForm = false;     ///< a SCAN form lists it
    std::string tag = {};      ///< the text that was sent with the purchase
    std::string id = {};       ///< of the transaction; empty: a new id
    std::string tracking = {}; ///< empty: a new number
    std::string way = {};      ///< tracking status; empty: depends on the key and the scenario
    std::string place = {};    ///< where the carrier saw the parcel last: "Nashua NH"
    std::string placeZip = {};
    QDateTime movedAt = {};
};

/// The carrier's answer to such a purchase.
struct PracticeSold {
    QString transactionId, tracking, trackingUrl, labelUrl;
};

/// Adds the label unless the account knows its id.
PracticeSold addSale(PracticeLedger &ledger, const PracticeSale &sale);

} // namespace parcelory
