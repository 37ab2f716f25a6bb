#pragma once

#include "core/AppError.h"
#include "core/Progress.h"

namespace parcelory {

/// The import was canceled.
class ImportCanceled : public AppError {
public:
    ImportCanceled();
};

/// Throws ImportCanceled if the import was canceled.
void requireNotCanceled(const CancelToken &cancel);

/// Counts addresses while they are read, and stops the reading if there are too many or the import is canceled.
class ImportProgress {
public:
    /// The limit for memory and for a list that a person can use.
    static constexpr qsizetype mostAddresses = 250000;

    explicit ImportProgress(Progress progress = {});

    /// Call for every record that was read. Throws ImportCanceled, and AppError beyond mostAddresses.
    void reached(qsizetype addresses);

private:
    Progress m_progress;
    int m_calls = 0;
};

} // namespace parcelory
