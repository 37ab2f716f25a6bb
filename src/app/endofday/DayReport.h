#pragma once

#include "app/AppState.h"
#include "app/endofday/AccountDifferences.h"
#include "records/DayOfLabels.h"
#include "records/ScanForms.h"

#include <optional>

namespace parcelory {

/// A SCAN form that lists labels of the day.
struct DayForm {
    ScanForm form;
    bool isPrinted = false;

    bool operator==(const DayForm &) const = default;
};

/// A label whose refund was asked for on the day.
struct AskedRefund {
    ShipmentRecord record;
    QDateTime askedAt;

    bool operator==(const AskedRefund &) const = default;
};

/// What the desk has to know about a day.
struct DayReport {
    QDate day;
    QString failure; ///< why the mailing log could not be read; the rest is empty then
    DayOfLabels labels;
    QList<DayForm> forms; ///< newest first
    QList<AskedRefund> refunds;
    QList<AccountDifference> differences; ///< empty if the account was not asked

    bool operator==(const DayReport &) const = default;
};

/// Reads the day from the mailing log and compares it with the account. Waits for the disk.
DayReport readDay(AppState &app, QDate day, KeyView key, const std::optional<AccountListing> &account);

} // namespace parcelory
