#include "app/purchase/ReprintCheck.h"

#include "app/purchase/LabelPrinting.h"

#include "app/AppState.h"
#include "core/AppError.h"
#include "core/Task.h"
#include "core/ports/Prompts.h"
#include "records/LabelChecks.h"
#include "records/LabelHistory.h"
#include "records/LogRead.h"
#include "records/ShipmentRecord.h"
#include "shell/ErrorLog.h"

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

LabelFacts recordedFacts(AppState &app, const ShipmentRecord &record, const QDateTime &now)
{
    const LabelHistory::Past past = app.labelHistory.of(record.id).orThrow();
    const std::optional<QString> token = app.keys.activeToken();
    const bool hasKey = token && !token->isEmpty();
    return {.now = now,
            .testKey = hasKey ? std::optional(ShippoKeys::isTest(*token)) : std::nullopt,
            .tracked = past.tracked,
            .reprints = past.reprints,
            .lastReprint = past.lastReprint,
            .onScanForm = app.scanForms.formWith(record.transactionID).orThrow(),
            .waiting = {}};
}

Question reprintQuestion(const ShipmentRecord &record, const QStringList &warnings)
{
    return {.title = u"Reprint This Label?"_s,
            .text = u"%1 %2 to %3\nTracking %4"_s.arg(record.carrier, record.service, record.recipientName(),
                                                      record.tracking) +
                    warningLines(warnings),
            .choices = {u"Cancel"_s, u"Reprint"_s},
            .safeChoice = 0};
}

} // namespace

Task<LabelFacts> loadLabelFacts(AppState &app, ShipmentRecord record)
{
    LabelFacts facts =
        co_await onPool([&app, record, now = app.platform.clock.now()] { return recordedFacts(app, record, now); });
    co_return facts;
}

QString warningLines(const QStringList &warnings)
{
    return warnings.isEmpty() ? QString() : u"\n\n• "_s + warnings.join(u"\n• "_s);
}

Task<QString> reprintChecked(AppState &app, ShipmentRecord record)
{
    const auto found = co_await onPool([&app, record] { return app.log.find(record); });
    if (!found.isRead() && !record.zpl) // the label itself is in the log
        throw AppError(found.failure());
    const std::optional<ShipmentRecord> row = found.valueOr(std::nullopt);
    const ShipmentRecord now = row.value_or(record); // a refund may have been requested since the row was listed
    QStringList warnings = {u"The mailing log can't be read, so Parcelory can't check whether this label was refunded, "
                            "used or reprinted."_s};
    if (found.isRead()) {
        LabelFacts facts = co_await loadLabelFacts(app, now);
        facts.waiting = co_await stillWaiting(app);
        warnings = labelWarnings(LabelUse::reprint, now, facts);
    }
    if (!warnings.isEmpty()) {
        const int answer = co_await app.platform.prompts.choose(reprintQuestion(now, warnings));
        if (answer != 1)
            co_return QString();
    }
    const QString printed = co_await reprintLabel(app, record);
    if (printed.isEmpty())
        co_return QString();
    const bool isNoted =
        !row || co_await onPool(app.labelHistory, &LabelHistory::addReprint, row->id, app.platform.clock.now());
    if (isNoted)
        co_return printed;
    const QString note = u"The reprint could not be noted in the mailing log — %1."_s.arg(app.log.lastError());
    app.errors.record(u"Reprint"_s, AppError(note), Popup::no);
    co_return printed + u' ' + note;
}

} // namespace parcelory
