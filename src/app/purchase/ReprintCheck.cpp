#include "app/purchase/ReprintCheck.h"

#include "app/AppState.h"
#include "app/purchase/KeptLabel.h"
#include "app/purchase/LabelPrinting.h"
#include "app/purchase/LabelVerdictTexts.h"
#include "app/purchase/QuestionPictures.h"
#include "core/AppError.h"
#include "core/Task.h"
#include "core/Text.h"
#include "core/ports/Prompts.h"
#include "records/LabelChecks.h"
#include "records/LabelEvents.h"
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

/// With the label's picture and what was found when it was compared with its parcel. Waits for the disk.
Question reprintQuestion(const ShipmentLog &log, const ShipmentRecord &record, const QStringList &warnings)
{
    const KeptLabel kept = keptLabel(log, record).valueOr({});
    const QString label =
        u"%1 %2 to %3\nTracking %4"_s.arg(record.carrier, record.service, record.recipientName(), record.tracking);
    const QString verdict = kept.verdict ? LabelVerdictTexts::lineOf(kept.verdict) : QString();
    return {.title = u"Reprint This Label?"_s,
            .text = joinPresent({label, verdict}, u"\n"_s) + warningLines(warnings),
            .choices = {u"Cancel"_s, u"Reprint"_s},
            .safeChoice = 0,
            .pictures = thumbnailOf(kept.bytes.value_or(QByteArray()), record.recipientName())};
}

/// That a label of the log was reprinted, and once more.
PrintNote noteOfReprint(AppState &app, const ShipmentRecord &row)
{
    return [&app, row, sent = noteOf(app, {row.transactionID}, LabelEvent::sent)](const QDateTime &at) {
        return app.labelHistory.addReprint(row, at) ? sent(at) : app.log.lastError();
    };
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
    ShipmentRecord pictured = now;
    pictured.zpl = record.zpl; // the list's row comes without its label
    QStringList warnings = {u"The mailing log can't be read, so Parcelory can't check whether this label was refunded, "
                            "used or reprinted."_s};
    if (found.isRead()) {
        LabelFacts facts = co_await loadLabelFacts(app, now);
        facts.waiting = co_await stillWaiting(app);
        warnings = labelWarnings(LabelUse::reprint, now, facts);
    }
    if (!warnings.isEmpty()) {
        Question question =
            co_await onPool([&log = app.log, pictured, warnings] { return reprintQuestion(log, pictured, warnings); });
        question.enlarge = [&app, pictured] { emit app.labelToShow(pictured, {}); };
        const int answer = co_await app.platform.prompts.choose(question);
        if (answer != 1)
            co_return QString();
    }
    const ReprintResult result = co_await reprintLabel(app, pictured, row ? noteOfReprint(app, *row) : PrintNote());
    const auto [printed, unnoted] = result.printed;
    QString reason = unnoted;
    if (row && reason.isEmpty() && !result.firstVerdict.findings.isEmpty())
        reason = co_await onPool([&app, now, verdict = result.firstVerdict] {
            return keepVerdict(app.log, now, verdict) ? QString() : app.log.lastError();
        });
    emit app.labelsNoted();
    if (reason.isEmpty())
        co_return printed;
    const QString note = u"The mailing log can't keep %1 — %2."_s.arg(
        unnoted.isEmpty() ? u"the result of the label check"_s : u"the reprint"_s, reason);
    app.errors.record(u"Reprint"_s, AppError(note), Popup::no);
    co_return printed.isEmpty() ? QString() : printed + u' ' + note;
}

} // namespace parcelory
