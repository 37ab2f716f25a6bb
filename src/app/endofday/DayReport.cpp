#include "app/endofday/DayReport.h"

#include "app/AppState.h"
#include "core/AppError.h"
#include "devices/zpl/ZplContents.h"
#include "devices/zpl/ZplReader.h"
#include "records/LabelEvents.h"
#include "records/LogRead.h"
#include "records/ShipmentStatus.h"

#include <algorithm>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr int formLimit = 100;  ///< how many forms back the day's forms are looked for
constexpr int refundDays = 120; ///< a label whose refund is asked is rarely older
constexpr int clockDays = 2;    ///< the clocks of desk and carrier differ by less

/// True if the label says that its customs papers travel electronically.
bool isElectronic(AppState &app, const ShipmentRecord &record)
{
    if (!record.isIntl || record.carrier != u"FedEx")
        return false;
    const std::optional<QByteArray> label = app.log.zpl(record.id).orThrow();
    const LabelContents contents = contentsOf(readZpl(label.value_or(QByteArray())));
    return std::ranges::any_of(contents.texts, [](const LabelText &text) {
        return text.text.split(u' ', Qt::SkipEmptyParts).contains(u"ETD"_s);
    });
}

QList<DayLabel> labelsOf(AppState &app, QDate day)
{
    QList<DayLabel> labels;
    for (const ShipmentRecord &record : app.log.labelsOf(day).orThrow())
        labels += {.record = record,
                   .onForm = app.scanForms.formWith(record.transactionID).orThrow(),
                   .print = LabelEvents::printState(app.log, record.transactionID).orThrow(),
                   .isElectronic = isElectronic(app, record)};
    return labels;
}

QList<DayForm> formsOf(AppState &app, const QList<DayLabel> &labels)
{
    QList<DayForm> forms;
    if (labels.isEmpty())
        return forms;
    for (const ScanForm &form : app.scanForms.finished(formLimit).orThrow()) {
        const bool isOfDay = std::ranges::any_of(
            labels, [&form](const DayLabel &label) { return form.transactions.contains(label.record.transactionID); });
        if (isOfDay)
            forms += {form, LabelEvents::find(app.log, form.manifestId, LabelEvent::formPrinted).orThrow().has_value()};
    }
    return forms;
}

/// The rows of these transactions, by transaction. Rows before `since` are not looked at.
QHash<QString, ShipmentRecord> rowsWith(AppState &app, const QStringList &ids, const QDateTime &since)
{
    QHash<QString, ShipmentRecord> rows;
    if (ids.isEmpty())
        return rows;
    for (const ShipmentRecord &row : app.log.withTransactions(ids, since).orThrow())
        rows.insert(row.transactionID, row);
    return rows;
}

QList<AskedRefund> refundsOf(AppState &app, QDate day)
{
    QStringList ids;
    const QList<LabelEvents::Dated> all = LabelEvents::ofDay(app.log, LabelEvent::refundAsked, day).orThrow();
    for (const LabelEvents::Dated &asked : all)
        ids += asked.id;
    QHash<QString, ShipmentRecord> rows = rowsWith(app, ids, day.startOfDay().addDays(-refundDays));
    ids.removeIf([&rows](const QString &id) { return rows.contains(id); });
    rows.insert(rowsWith(app, ids, QDateTime::fromMSecsSinceEpoch(0))); // of an old label: the whole log is read
    QList<AskedRefund> refunds;
    for (const LabelEvents::Dated &asked : all) {
        const ShipmentRecord row = rows.value(asked.id);
        if (refundState(row) != RefundState::none) // otherwise the request did not reach the carrier
            refunds += {row, asked.at};
    }
    return refunds;
}

/// What the desk knows about the account's labels.
DeskListing deskListing(AppState &app, const QList<DayLabel> &labels, KeyView key, const AccountListing &account)
{
    DeskListing desk;
    for (const DayLabel &label : labels) {
        const ShipmentRecord &row = label.record;
        if (row.testMode != key.test)
            continue;
        desk.rows += row;
        if (refundState(row) == RefundState::none)
            continue;
        const auto asked = LabelEvents::find(app.log, row.transactionID, LabelEvent::refundAsked).orThrow();
        if (asked)
            desk.refundsAsked.insert(row.transactionID, *asked);
    }
    QStringList ids;
    QDateTime oldest = account.askedAt;
    for (const MasterEntry &entry : account.entries) {
        ids += entry.id;
        oldest = std::min(oldest, entry.date.value_or(oldest));
    }
    const QHash<QString, ShipmentRecord> rows = rowsWith(app, ids, oldest.addDays(-clockDays));
    desk.known = QSet<QString>(rows.keyBegin(), rows.keyEnd());
    return desk;
}

} // namespace

DayReport readDay(AppState &app, QDate day, KeyView key, const std::optional<AccountListing> &account)
{
    try {
        const QList<DayLabel> labels = labelsOf(app, day);
        DayReport report{.day = day, .labels = sortDay(labels, key), .refunds = refundsOf(app, day)};
        report.forms = formsOf(app, report.labels.onForm);
        if (account)
            report.differences = differencesOf(day, deskListing(app, labels, key, *account), *account);
        return report;
    } catch (const AppError &error) {
        return {.day = day, .failure = error.description()};
    }
}

} // namespace parcelory
