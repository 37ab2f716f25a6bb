#pragma once

#include "carrier/ShippoRecords.h"
#include "compose/Services.h"

#include <optional>

namespace parcelory {

/// The text sent along with a purchase, by which the account's history tells this program's labels from others:
/// "KX|GB|Harriet Ashcombe|FedEx International Priority|97301". Where the history no longer holds the shipment of a
/// label, it tells what its address would have told.
///
/// The order keeps the whole text under the carrier's 100 characters, where a cut would fall into the last field and
/// change the number.
struct PurchaseTag {
    QString country;   ///< of the recipient, a two-letter code
    QString recipient; ///< name, at most 22 characters
    QString service;   ///< carrier and service
    QString office;    ///< the sender's five-digit ZIP, so that an office is recognised by its number

    static PurchaseTag of(const ShippoAddress &from, const ShippoAddress &to, Carrier carrier, const QString &service);
    QString text() const;
    /// Nothing for a text that is no tag.
    static std::optional<PurchaseTag> read(const QString &text);

    bool operator==(const PurchaseTag &) const = default;
};

} // namespace parcelory
