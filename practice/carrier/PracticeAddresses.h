#pragma once

#include "practice/carrier/PracticeAnswers.h"

namespace parcelory {

struct PracticeLedger;
struct CarrierScenario;

// Address validation. What becomes of an address follows from words that anybody can type into a US street line:
//
//   1 Main St, Apt 3B       valid: capitals, ZIP+4, the unit stays
//   123 Main St #4          valid: the unit is written out as APT 4
//   PO Box 239 #12          valid, but what follows the # behind a box is dropped, as is a "# Box 12"
//   9 Warning Ave           valid with the message "Default Match"
//   9 Nowhere Ln            refused with a message
//   9 Silent Way            refused without a message
//   9 Unchecked Rd          accepted without having been validated
//   any street, ZIP 90000   valid; a ZIP that ends in 0000 is silently changed into a real one
//
// A US address without city or ZIP is refused with a message.

/// POST addresses/
CarrierAnswer createAddress(PracticeLedger &ledger, const Json &body);

/// Complaints about the fields of an address, empty when it can be used.
Json addressErrors(const Json &address);

/// An address as it stands in a shipment: as typed, with the service's own keys around it.
Json shipmentAddress(PracticeLedger &ledger, const Json &address);

/// A shipment's recipient after a rewrite that costs it the unit or box number.
Json rewrittenAddress(const Json &address);

} // namespace parcelory
