#include "devices/ScaleReport.h"

#include "compose/Weight.h"

#include <cmath>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr char dataReport = 3;
constexpr double gramsInAnOunce = 28.349523125;

std::optional<double> inOunces(double value, quint8 unit)
{
    switch (unit) {
    case 2:
        return value / gramsInAnOunce;
    case 3:
        return value * 1000 / gramsInAnOunce;
    case 11:
        return value;
    case 12:
        return value * 16;
    default: // carats, grains, troy ounces …
        return std::nullopt;
    }
}

} // namespace

std::optional<ScaleReport> parseScaleReport(const QByteArray &bytes)
{
    const bool numbered = bytes.size() >= 6 && bytes[0] == dataReport;
    const QByteArrayView data = QByteArrayView(bytes).sliced(numbered ? 1 : 0);
    if (data.size() < 5)
        return std::nullopt;
    const auto byte = [&data](int at) { return static_cast<quint8>(data[at]); };
    const auto exponent = static_cast<qint8>(byte(2));
    const double value = (byte(3) + 256 * byte(4)) * std::pow(10.0, exponent);
    return ScaleReport{ScaleStatus{byte(0)}, inOunces(value, byte(1))};
}

QString scaleDisplay(bool connected, std::optional<double> ounces)
{
    if (ounces)
        return weightText(*ounces);
    return connected ? u"—"_s : u"No scale"_s;
}

QString scaleFault(const ScaleReport &report)
{
    switch (report.status) {
    case ScaleStatus::fault:
        return u"The scale reports a fault — unplug it and plug it in again"_s;
    case ScaleStatus::overLimit:
        return u"Too heavy for this scale — type the weight."_s;
    case ScaleStatus::needsCalibration:
        return u"The scale needs calibration"_s;
    case ScaleStatus::needsZeroing:
        return u"The scale needs zeroing — empty it and press its zero key"_s;
    case ScaleStatus::stable:
        return report.ounces ? QString() : u"The scale uses the wrong unit — set it to ounces."_s;
    default:
        return {};
    }
}

} // namespace parcelory
