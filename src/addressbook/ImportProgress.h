#pragma once

#include "core/AppError.h"

#include <functional>

namespace parcelory {

/// Whoever watches the import does not want it any more.
class ImportCancelled : public AppError {
public:
    ImportCancelled();
};

/// Follows the reading of addresses and ends it when they are too many or nobody wants them any more.
class ImportProgress {
public:
    /// So many fit into memory and into a list that a person still reads.
    static constexpr qsizetype mostAddresses = 250000;

    /// Called on the reading thread, now and then, with the number of addresses so far; false cancels.
    using Report = std::function<bool(qsizetype addresses)>;

    explicit ImportProgress(Report report = {});

    /// To be called for every record that was read. Throws ImportCancelled, and AppError beyond mostAddresses.
    void reached(qsizetype addresses);

private:
    Report m_report;
    int m_calls = 0;
};

} // namespace parcelory
