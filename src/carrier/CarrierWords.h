#pragma once

// The status words of the carrier API. Upper and lower case are equal; a word that is not in the tables is `unknown`.

#include "carrier/ShippoRecords.h"

#include <QAnyStringView>

namespace parcelory {

/// The status of a label purchase. Once the label is sold, it also tells about its refund.
enum class TransactionStatus { unknown, queued, waiting, success, error, refunded, refundPending, refundRejected };

TransactionStatus transactionStatusFrom(QAnyStringView word);
TransactionStatus transactionStatus(const ShippoTransaction &transaction);

/// The response to a refund request. A response without a status is `unknown`.
enum class RefundAnswer { unknown, queued, pending, success, error };

RefundAnswer refundAnswer(const ShippoRefund &refund);

/// The status of a SCAN form.
enum class ManifestStatus { unknown, queued, waiting, success, error };

ManifestStatus manifestStatus(const ShippoManifest &manifest);

/// True while the carrier still works on the record.
bool isPending(const ShippoTransaction &transaction);
bool isPending(const ShippoManifest &manifest);

} // namespace parcelory
