#pragma once

#include <QDateTime>

#include <chrono>

namespace parcelory {

struct PracticeLedger;

/// Puts labels that another desk bought into an account: the newest at `newest`, every further one `step` earlier.
void addHistory(PracticeLedger &ledger, int labels, const QDateTime &newest, std::chrono::seconds step);

} // namespace parcelory
