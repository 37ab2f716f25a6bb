#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

namespace parcelory {

/// Guards against a standardised address that lost a number the parcel needs (a box, a unit, a rural route).
namespace AddressGuard {

/// The words of two street lines that hold a digit, in capitals.
QSet<QString> digitTokens(const QString &street1, const QString &street2);

/// The numbers of the original street lines that the final ones no longer hold, in ascending text order.
QStringList lostTokens(const QString &originalStreet1, const QString &originalStreet2, const QString &finalStreet1,
                       const QString &finalStreet2);

} // namespace AddressGuard
} // namespace parcelory
