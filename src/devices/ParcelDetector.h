#pragma once

#include "devices/ScaleReport.h"

namespace parcelory {

/// Distinguishes the next parcel on a scale from the previous parcel, so that no label is bought with another parcel's
/// weight. In doubt, assumes the same parcel: the clerk can lift it off for a moment, while a wrong weight costs money.
class ParcelDetector {
public:
    /// True if the report shows the settled weight of a new parcel.
    bool take(const ScaleReport &report);

    /// The settled weight in ounces; absent while the plate is empty or moving, or the scale cannot weigh.
    std::optional<double> settled() const { return m_settled; }
    /// Clears the settled weight, but not the last parcel, which may still be on the plate when the scale reconnects.
    void disconnect() { m_settled.reset(); }

private:
    bool showsLifting(const ScaleReport &report) const;

    std::optional<double> m_settled;
    double m_weight = 0;  ///< of the last new parcel
    bool m_lifted = true; ///< the plate has been empty, or nearly so, since then
};

} // namespace parcelory
