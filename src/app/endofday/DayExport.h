#pragma once

#include "app/endofday/DayReport.h"
#include "app/purchase/Purchases.h"
#include "devices/DayPage.h"

namespace parcelory {

/// The day's labels as a comma-separated text with a header line: a row each, and then the labels that only the account
/// knows.
QString dayCSV(const DayReport &report);

/// What the window shows, for one printed page. `unresolved`: the day's purchases whose outcome is unknown; `compared`:
/// the window's line about the account.
DayPage::Data_ dayPage(const DayReport &report, KeyView key, const QList<UnresolvedPurchase> &unresolved,
                       const QString &compared);

} // namespace parcelory
