#pragma once

#include "carrier/ShippoRecords.h"

#include <QList>
#include <QString>

namespace parcelory {

class Preferences;

/// Asks once more before a dear label. Below its limit it asks nothing.
struct SpendGuard {
    bool isOn = false;
    double above = 0; ///< US dollars
    bool namesCheaper = true;
    bool wantsReference = false;

    static SpendGuard of(const Preferences &preferences);

    /// Why the label cannot be bought without a reference; empty if it can.
    QString lackOf(const QString &reference, const ShippoRate &rate) const;
    /// The question before the label is bought; empty if no question is needed. `offered`: all rates of the parcel.
    QString question(const ShippoRate &rate, const QList<ShippoRate> &offered) const;

private:
    bool covers(const ShippoRate &rate) const;
};

} // namespace parcelory
