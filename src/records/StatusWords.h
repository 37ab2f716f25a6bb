#pragma once

// The words in which the mailing log stores statuses. The records keep the stored text, because an imported row may
// hold any other word.

#include <QAnyStringView>
#include <QString>

#include <optional>

namespace parcelory {

/// The status of a label in the mailing log.
enum class LogStatus { printed, delivered, refundPending, refundRequested, refunded, refundError };

/// Absent for any other word; upper and lower case differ.
std::optional<LogStatus> logStatusFrom(QAnyStringView word);
QString wordOf(LogStatus status);

/// The status of a parcel on its way, in the carrier's words.
enum class TrackingStatus { unknown, preTransit, transit, delivered, returned, failure };

/// `unknown` for any other word; upper and lower case are equal.
TrackingStatus trackingStatusFrom(QAnyStringView word);
QString wordOf(TrackingStatus status);

} // namespace parcelory
