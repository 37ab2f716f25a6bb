#pragma once

#include "practice/carrier/PracticeAnswers.h"

namespace parcelory {

struct PracticeLedger;
struct CarrierScenario;

// Address validation. These words in the street line of a US address choose the result:
//
//   1 Main St, Apt 3B       valid: capitals, ZIP+4, the unit stays
//   123 Main St #4          valid: the unit is written out as APT 4
//   PO Box 239 #12          valid, but the text after the # of a box is dropped, as is "# Box 12"
//   9 Warning Ave           valid with the message "Default Match"
//   9 Nowhere Ln            refused with a message
//   9 Silent Way            refused without a message
//   9 Unchecked Rd          accepted without validation
//   any street, ZIP 90000   valid; a ZIP that ends in 0000 is silently corrected
//
// A US address without street, city or ZIP is refused with a message.

/// POST addresses/
CarrierAnswer createAddress(PracticeLedger &ledger, const Json &body);

/// Errors in the fields of an address; empty if it can be used.
Json addressErrors(const Json &address);

/// An address as a shipment shows it: as typed, plus the service's own keys.
Json shipmentAddress(PracticeLedger &ledger, const Json &address);

/// A shipment's recipient after a rewrite that drops the unit or box number.
Json rewrittenAddress(const Json &address);

} // namespace parcelory
