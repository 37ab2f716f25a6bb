#pragma once

#include "carrier/ShippoRecords.h"
#include "compose/Services.h"

#include <optional>

namespace parcelory {

/// The text sent with a purchase, which identifies this program's labels in the account's history:
/// "KX|GB|Harriet Ashcombe|FedEx International Priority|97301". If the history no longer lists a label's shipment, the
/// tag supplies recipient, country and service.
///
/// The limits of the fields keep the text within the carrier's 100 characters: a cut would fall into the last field and
/// change the office's number.
struct PurchaseTag {
    QString country;   ///< of the recipient, a two-letter code
    QString recipient; ///< name, at most 22 characters
    QString service;   ///< carrier and service
    QString office;    ///< the sender's five-digit ZIP, which identifies the office

    static PurchaseTag of(const ShippoAddress &from, const ShippoAddress &to, Carrier carrier, const QString &service);
    QString text() const;
    /// Nothing if the text is not a tag.
    static std::optional<PurchaseTag> read(const QString &text);

    bool operator==(const PurchaseTag &) const = default;
};

} // namespace parcelory
