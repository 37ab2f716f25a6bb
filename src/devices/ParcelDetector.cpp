#include "devices/ParcelDetector.h"

#include "devices/ScaleReport.h"

#include <algorithm>
#include <cmath>

namespace parcelory {

namespace {

/// How far the weight of one parcel may vary: it drifts slowly, and a coarse scale flickers between two of its steps.
double drift(double ounces)
{
    return std::max(1.0, ounces / 20);
}

} // namespace

bool ParcelDetector::showsLifting(const ScaleReport &report) const
{
    switch (report.status) {
    case ScaleStatus::zero:
    case ScaleStatus::underZero:
        return true;
    case ScaleStatus::moving: // zero may only mean that the scale sends no weight while moving
        return report.ounces.value_or(0) > 0 && *report.ounces <= m_weight / 4;
    case ScaleStatus::stable:
        return report.ounces && *report.ounces <= m_weight / 4;
    default:
        return false;
    }
}

bool ParcelDetector::take(const ScaleReport &report)
{
    m_lifted = m_lifted || showsLifting(report);
    m_settled.reset();
    if (report.status != ScaleStatus::stable || report.ounces.value_or(0) <= 0)
        return false;
    m_settled = report.ounces;
    if (!m_lifted && std::abs(*m_settled - m_weight) <= drift(m_weight))
        return false;
    m_weight = *m_settled;
    m_lifted = false;
    return true;
}

} // namespace parcelory
