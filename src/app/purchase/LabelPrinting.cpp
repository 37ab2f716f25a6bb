#include "app/purchase/LabelPrinting.h"

#include "app/AppState.h"
#include "app/purchase/KeptLabel.h"
#include "app/purchase/LabelDoubts.h"
#include "carrier/ShippoError.h"
#include "core/AppError.h"
#include "core/SettingsKeys.h"
#include "core/Task.h"
#include "core/Text.h"
#include "core/ports/Clock.h"
#include "core/ports/Preferences.h"
#include "devices/HandoverFile.h"
#include "devices/LabelPrinter.h"
#include "devices/PrinterState.h"
#include "devices/Zpl.h"
#include "records/ShipmentLog.h"
#include "records/ShipmentRecord.h"
#include "shell/ErrorLog.h"

#include <QPointer>
#include <QScopeGuard>

#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// A truncated label would print as a label that no carrier can read.
void requireWholeLabel(const LabelFile &label)
{
    if (label.kind == LabelKind::notALabel)
        throw AppError(u"The carrier's file is not a label."_s);
    if (!label.isWhole)
        throw AppError(u"The label arrived incomplete — press Reprint again."_s);
}

/// Keeps the label, so that the next reprint needs no network and the label can be shown.
Task<QByteArray> downloadAgain(AppState &app, ShipmentRecord record)
{
    if (record.labelURL.isEmpty()) // an imported shipment: not a failure that support could fix
        throw ShippoError::validation(u"No copy of this label is stored, so it can't be reprinted."_s);
    QByteArray label = co_await app.shippo.downloadLabel(record.labelURL);
    requireWholeLabel(parseLabel(label));
    const bool isKept = co_await onPool([&log = app.log, record, label] { return keepFetched(log, record, label); });
    if (!isKept)
        app.errors.record(u"Reprint"_s,
                          AppError(u"The mailing log could not be written — %1."_s.arg(app.log.lastError())),
                          Popup::no);
    co_return label;
}

/// Closes what was noted about a parcel's missing papers, if anything was.
PrintNote noteOfPapers(AppState &app, const QString &transactionId)
{
    const PrintNote printed = noteOf(app, {transactionId}, LabelEvent::papersPrinted);
    return [&log = app.log, transactionId, printed](const QDateTime &at) {
        const auto missing = LabelEvents::find(log, transactionId, LabelEvent::papersFailed);
        return missing.valueOr(std::nullopt) ? printed(at) : QString();
    };
}

/// The result of `print`, and what `note` returns. Both in one job.
template <class Print>
auto printAndNote(AppState &app, Print print, PrintNote note)
{
    return onPool([print = std::move(print), note = std::move(note), at = app.platform.clock.now()] {
        const auto printed = print();
        return std::pair(printed, note ? note(at) : QString());
    });
}

} // namespace

PrintNote noteOf(AppState &app, QStringList ids, LabelEvent event)
{
    ids.removeAll(QString());
    return [&log = app.log, ids, event](const QDateTime &at) {
        return ids.isEmpty() || LabelEvents::put(log, ids, event, at) ? QString() : log.lastError();
    };
}

void recordUnnoted(AppState &app, const QString &reason)
{
    if (!reason.isEmpty())
        app.errors.record(u"Mailing Log"_s,
                          AppError(u"The mailing log can't note whether a label was printed — %1."_s.arg(reason)),
                          Popup::no);
}

Task<> noteEvent(AppState &app, QStringList ids, LabelEvent event)
{
    const QPointer<AppState> alive(&app);
    const QString failure =
        co_await onPool([note = noteOf(app, ids, event), now = app.platform.clock.now()] { return note(now); });
    if (!alive)
        co_return;
    recordUnnoted(app, failure);
    emit app.labelsNoted();
}

Task<PrintedLabel> printLabel(AppState &app, QByteArray label, QString transactionId, PrintNote note)
{
    const QString zebraQueue = read(app.platform.preferences, settings::zebraQueue);
    const QString documentQueue = read(app.platform.preferences, settings::documentQueue);
    const LabelFile file = parseLabel(label);
    // Watch a refused job, too: the queue's state tells why it was refused and when a retry makes sense.
    bool isAccepted = false;
    const auto sent = qScopeGuard([&] {
        const QString accepted = isAccepted ? transactionId : QString();
        if (file.kind == LabelKind::zpl)
            app.printWatch.follow(zebraQueue, Paper::label, accepted);
        else if (file.kind == LabelKind::pdf)
            app.printWatch.follow(documentQueue, Paper::document, accepted);
    });
    const auto [printed, unnoted] = co_await printAndNote(
        app, [&app, file, zebraQueue, documentQueue] { return app.printer.print(file, zebraQueue, documentQueue); },
        note);
    isAccepted = true;
    co_return PrintedLabel{joinPresent({printed, app.printWatch.caution(label)}, u" "_s), unnoted};
}

Task<> sweepPrintFiles()
{
    co_await onPool([] { HandoverFile::sweep(); });
}

Task<QString> stillWaiting(AppState &app)
{
    const QString queue = read(app.platform.preferences, settings::zebraQueue);
    const PrinterReport report = co_await onPool(app.printer, &LabelPrinter::queueReport, queue);
    co_return report.waiting > 0 ? printerSentence(queue, report, Paper::label) : QString();
}

Task<ReprintResult> reprintLabel(AppState &app, ShipmentRecord record, PrintNote note)
{
    const auto found = co_await onPool([&log = app.log, record] { return keptLabel(log, record); });
    const KeptLabel kept = found.orThrow();
    QByteArray label = kept.bytes.value_or(QByteArray());
    if (!kept.bytes)
        label = co_await downloadAgain(app, record);
    LabelDoubts doubts = co_await doubtsAbout(label, recordedParcels(record));
    ReprintResult result;
    if (!kept.verdict)
        result.firstVerdict = doubts.verdict;
    else if (kept.bytes)
        doubts.remember(kept.verdict);
    record.zpl = label;
    const bool isAgreed = co_await mayPrint(app, doubts, record);
    if (isAgreed)
        result.printed = co_await printLabel(app, label, record.transactionID, note);
    co_return result;
}

Task<QByteArray> downloadCustoms(AppState &app, ShipmentRecord record)
{
    if (record.customsDocURL.isEmpty())
        throw ShippoError::validation(u"no copy of the papers is stored, so they can't be reprinted."_s);
    const QByteArray document = co_await app.shippo.downloadLabel(record.customsDocURL);
    if (!parseLabel(document).isWholePdf())
        throw AppError(u"the carrier's file is not a complete PDF document"_s);
    const bool stored = co_await onPool(app.log, &ShipmentLog::storeCustomsPDF, record, document);
    if (!stored) // the next reprint downloads it again
        app.errors.record(u"Customs Docs Reprint"_s,
                          AppError(u"The mailing log could not be written — %1."_s.arg(app.log.lastError())),
                          Popup::no);
    co_return document;
}

Task<QString> printCustoms(AppState &app, QByteArray document, QString transactionId)
{
    const bool sentToQueue = co_await printDocument(app, document, noteOfPapers(app, transactionId));
    co_return sentToQueue ? u"Customs docs sent to the printer."_s
                          : u"Customs docs opened in Preview — set a document printer in Settings."_s;
}

Task<QString> reprintCustoms(AppState &app, ShipmentRecord record)
{
    const auto found = co_await onPool([&log = app.log, record] { return log.find(record); });
    const ShipmentRecord row = found.orThrow().value_or(record);
    const auto stored = co_await onPool(app.log, &ShipmentLog::customsPDF, row.id);
    std::optional<QByteArray> document = stored.orThrow();
    if (!document)
        document = co_await downloadCustoms(app, row);
    co_return co_await printCustoms(app, *document, row.transactionID);
}

Task<bool> printDocument(AppState &app, QByteArray pdf, PrintNote note)
{
    const QString queue = read(app.platform.preferences, settings::documentQueue);
    const auto sent = qScopeGuard([&app, queue] { app.printWatch.follow(queue, Paper::document); });
    const auto [sentToQueue, unnoted] =
        co_await printAndNote(app, [&app, pdf, queue] { return app.printer.printPDF(pdf, queue); }, note);
    recordUnnoted(app, unnoted);
    if (note)
        emit app.labelsNoted();
    co_return sentToQueue;
}

Task<bool> printForm(AppState &app, QList<QByteArray> documents, QString manifestId)
{
    bool sentToQueue = true;
    while (!documents.isEmpty()) {
        const QByteArray document = documents.takeFirst();
        const PrintNote note = documents.isEmpty() ? noteOf(app, {manifestId}, LabelEvent::formPrinted) : PrintNote();
        sentToQueue = co_await printDocument(app, document, note);
    }
    co_return sentToQueue;
}

void recordReprintFailure(AppState &app, const AppError &error)
{
    const bool device = dynamic_cast<const SystemError *>(&error) != nullptr;
    app.errors.record(u"Reprint"_s, error, device ? Popup::no : Popup::yes);
}

} // namespace parcelory
