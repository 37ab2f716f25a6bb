#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

namespace parcelory {

/// Guards against a standardized address that lost a number the parcel needs (a box, a unit, a rural route).
namespace AddressGuard {

/// The words with a digit in two street lines, in capitals.
QSet<QString> digitTokens(const QString &street1, const QString &street2);

/// The words with a digit in the original street lines that the final street lines lack, in ascending text order.
QStringList lostTokens(const QString &originalStreet1, const QString &originalStreet2, const QString &finalStreet1,
                       const QString &finalStreet2);

} // namespace AddressGuard
} // namespace parcelory
