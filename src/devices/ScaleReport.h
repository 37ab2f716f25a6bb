#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace parcelory {

/// A scale's status, numbered as in the HID usage tables; devices also send other numbers.
enum class ScaleStatus : quint8 {
    fault = 1,
    zero,
    moving,
    stable,
    underZero,
    overLimit,
    needsCalibration,
    needsZeroing,
};

/// One input report of a HID postal scale.
struct ScaleReport {
    ScaleStatus status{};
    std::optional<double> ounces; ///< avoirdupois; absent if the scale's unit is not used for parcels
};

/// Parses a report with or without its leading number; nothing if it is too short.
std::optional<ScaleReport> parseScaleReport(const QByteArray &bytes);

/// "1 lb 14.0 oz"; without a weight, "—" or "No scale".
QString scaleDisplay(bool connected, std::optional<double> ounces);

/// Why the scale cannot weigh, in the clerk's words; empty if it can.
QString scaleFault(const ScaleReport &report);

} // namespace parcelory
