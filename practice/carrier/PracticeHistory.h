#pragma once

#include <QDateTime>

#include <chrono>

namespace parcelory {

struct PracticeLedger;

/// Adds labels that another desk bought to an account: the newest at `newest`, each further label `step` earlier.
void addHistory(PracticeLedger &ledger, int labels, const QDateTime &newest, std::chrono::seconds step);

} // namespace parcelory
