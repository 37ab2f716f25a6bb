#pragma once

#include "practice/carrier/PracticeLedger.h"

#include <QByteArray>

namespace parcelory {

/// What the carrier keeps over a restart, as JSON: sold labels with their shipments and files, refunds, forms, and the
/// last tracking number, so that none is given out twice.
QByteArray archived(const PracticeLedger &test, const PracticeLedger &live);
/// Takes it over; links lead to the carrier's new address. An archive that cannot be read changes nothing.
void restoreArchive(const QByteArray &archive, PracticeLedger &test, PracticeLedger &live);

} // namespace parcelory
