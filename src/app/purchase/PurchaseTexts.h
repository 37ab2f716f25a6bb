#pragma once

#include "app/purchase/PurchaseFlow.h"
#include "core/AppError.h"

#include <QString>

/// What the clerk reads about a purchase. Outcomes are values; their sentences are made here and nowhere else.
namespace parcelory::PurchaseTexts {

/// "USPS Priority Mail to Eleanor Whitfield, $9.85"
QString title(const ShipmentRecord &record);
/// The status strip's line: "USPS Priority Mail · Eleanor Whitfield, Asheville NC · $9.85 · 9405…"
QString summary(const OpenPurchase &purchase);
/// The banner after a purchase: "Success! …", then what the clerk has to know about label, papers and log.
QString successLine(const PurchaseResult &result);
/// The banner after Print Invoice.
QString papersLine(const PapersResult &papers);
/// What the clerk has to write on the printed papers; empty if they are complete.
QString writeByHand(const PapersResult &papers);
/// A purchase that was found later, for the bar above the form.
QString foundLater(const PurchaseResult &result);
/// The banner while the outcome of a purchase is unknown; begins with the reason.
QString stillUnknown(const QString &reason);
/// What support needs to find the purchase, for the error log.
QString identifiers(const OpenPurchase &purchase);
/// Text for a bought label that is in the journal but not in the mailing log.
QString notLogged(const ShipmentRecord &record);
/// Text for a further label that the carrier sold for the same request.
QString boughtTwice(const ShipmentRecord &record);
AppError secondError(const ShipmentRecord &record);
AppError notLoggedError(const ShipmentRecord &record, const QString &reason);

} // namespace parcelory::PurchaseTexts
