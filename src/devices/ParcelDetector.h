#pragma once

#include "devices/ScaleReport.h"

namespace parcelory {

/// Tells the next parcel on a scale from the one before, so that none is sold on another's weight. In doubt it is still
/// the same parcel: lifting it off for a moment settles that, while a wrong weight would be paid for.
class ParcelDetector {
public:
    /// True when the report shows a settled weight of something that was not on the plate before.
    bool take(const ScaleReport &report);

    /// The settled weight in ounces; none while the plate is empty or moving, or the scale cannot weigh.
    std::optional<double> settled() const { return m_settled; }
    /// Forgets what the scale said last, but not what lay on it: it may still lie there when the scale comes back.
    void disconnect() { m_settled.reset(); }

private:
    bool showsLifting(const ScaleReport &report) const;

    std::optional<double> m_settled;
    double m_weight = 0;  ///< of what was last taken for something new
    bool m_lifted = true; ///< the plate has been empty, or nearly so, since then
};

} // namespace parcelory
