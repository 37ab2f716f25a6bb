#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace parcelory {

/// What a scale says about its plate, in the numbers of the HID usage tables; devices send others, too.
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
    std::optional<double> ounces; ///< avoirdupois; none when the scale's unit is not one that parcels are weighed in
};

/// Reads a report with or without its leading number; nothing when it is too short to be one.
std::optional<ScaleReport> parseScaleReport(const QByteArray &bytes);

/// "1 lb 14.0 oz"; without a weight, "—" or "No scale".
QString scaleDisplay(bool connected, std::optional<double> ounces);

/// What keeps the scale from weighing, in the clerk's words; empty when nothing does.
QString scaleFault(const ScaleReport &report);

} // namespace parcelory
