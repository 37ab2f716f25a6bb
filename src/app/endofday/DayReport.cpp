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

constexpr int formLimit = 100; ///< how many forms back the day's forms are looked for

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

QList<AskedRefund> refundsOf(AppState &app, QDate day)
{
    QList<AskedRefund> refunds;
    for (const LabelEvents::Dated &asked : LabelEvents::ofDay(app.log, LabelEvent::refundAsked, day).orThrow()) {
        const ShipmentRecord label{.createdAt = {}, .transactionID = asked.id};
        const std::optional<ShipmentRecord> row = app.log.find(label).orThrow();
        if (row && refundState(*row) != RefundState::none) // otherwise the request did not reach the carrier
            refunds += {*row, asked.at};
    }
    return refunds;
}

QList<ShipmentRecord> rowsOf(const QList<DayLabel> &labels, KeyView key)
{
    QList<ShipmentRecord> rows;
    for (const DayLabel &label : labels) {
        if (label.record.testMode == key.test)
            rows += label.record;
    }
    return rows;
}

} // namespace

DayReport readDay(AppState &app, QDate day, KeyView key, const std::optional<AccountListing> &account)
{
    try {
        const QList<DayLabel> labels = labelsOf(app, day);
        DayReport report{.day = day, .labels = sortDay(labels, key), .refunds = refundsOf(app, day)};
        report.forms = formsOf(app, report.labels.onForm);
        if (account)
            report.differences = differencesOf(day, rowsOf(labels, key), *account, [&app](const QString &id) {
                return app.log.find({.createdAt = {}, .transactionID = id}).orThrow().has_value();
            });
        return report;
    } catch (const AppError &error) {
        return {.day = day, .failure = error.description()};
    }
}

} // namespace parcelory
