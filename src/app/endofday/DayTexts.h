#pragma once

#include "app/endofday/DayReport.h"
#include "records/DayOfLabels.h"

#include <QDateTime>
#include <QString>

/// What the clerk reads of a day, in the window, on the printed page and in the exported file.
namespace parcelory::DayTexts {

/// "6 labels"
QString counted(qsizetype labels);
/// "$208.94"
QString dollars(double amount);
/// "4:12 PM"
QString time(const QDateTime &when);
/// "Friday · 6 labels bought at this desk"
QString headline(const DayReport &report);
/// "5 labels • $208.94 postage"
QString summary(const DayReport &report);
/// "Eleanor Whitfield, Theodore Eng, Ruth Abernathy, +4"
QString names(const QList<DayLabel> &labels);
/// "asked at 3:50 PM"
QString askedAt(const AskedRefund &refund);
/// "made at 11:32 AM"
QString formTime(const DayOfLabels &labels);
/// "refund asked, TEST"
QString exemptions(const QList<ExemptLabel> &labels, KeyView key);
/// The service without the carrier's name: "Ground Advantage".
QString service(const QString &service);
/// "London GB", "Tacoma WA"
QString place(const ShipmentRecord &record);
/// "Never printed" or "Print not confirmed"
QString printState(const DayLabel &label);
/// What goes along with a FedEx parcel; empty if nothing does.
QString papers(const DayLabel &label);
/// "Bought elsewhere"
QString difference(DifferenceKind kind);
/// "Bought at another desk or in the browser. This log doesn't have it."
QString explanation(DifferenceKind kind);
/// "$7.12"; "—" for a side that does not have the label.
QString amount(const std::optional<double> &dollars);

} // namespace parcelory::DayTexts
