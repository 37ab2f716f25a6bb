#include "app/purchase/LabelPrinting.h"

#include "core/SettingsKeys.h"
#include "core/Text.h"

#include <QScopeGuard>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// A label's beginning alone would come out of the printer as a parcel's label that no carrier can read.
void requireWholeLabel(const QByteArray &label)
{
    if (labelKind(label) == LabelKind::notALabel)
        throw AppError(u"What the carrier sent is not a label."_s);
    if (!isWhole(label))
        throw AppError(u"The label arrived incomplete — press Reprint again."_s);
}

Task<QByteArray> downloadAgain(AppState &app, QString url)
{
    if (url.isEmpty()) // an imported shipment; nothing that support could help with
        throw ShippoError::validation(
            u"The mailing log holds neither this label nor the address to download it from."_s);
    QByteArray label = co_await app.shippo.downloadLabel(url);
    requireWholeLabel(label);
    co_return label;
}

} // namespace

Task<QString> printLabel(AppState &app, QByteArray label)
{
    const QString zebraQueue = read(app.platform.preferences, settings::zebraQueue);
    const QString documentQueue = read(app.platform.preferences, settings::documentQueue);
    const LabelKind kind = labelKind(label);
    // A job that was refused is followed as well: the queue's state says why, and when it is worth another try.
    const auto sent = qScopeGuard([&] {
        if (kind == LabelKind::zpl)
            app.printWatch.follow(zebraQueue, Paper::label);
        else if (kind == LabelKind::pdf)
            app.printWatch.follow(documentQueue, Paper::document);
    });
    auto printing = onPool([&printer = app.printer, label, zebraQueue, documentQueue] {
        return printer.print(label, zebraQueue, documentQueue);
    });
    const QString printed = co_await printing;
    co_return joinPresent({printed, app.printWatch.caution(label)}, u" "_s);
}

Task<QString> stillWaiting(AppState &app)
{
    const QString queue = read(app.platform.preferences, settings::zebraQueue);
    auto asking = onPool([&printer = app.printer, queue] { return printer.queueReport(queue); });
    const PrinterReport report = co_await asking;
    co_return report.waiting > 0 ? printerSentence(queue, report, Paper::label) : QString();
}

Task<QString> reprintLabel(AppState &app, ShipmentRecord record)
{
    std::optional<QByteArray> label = record.zpl;
    if (!label && record.id > 0) {
        auto reading = onPool([&app, id = record.id] { return app.log.zpl(id); });
        label = co_await reading;
    }
    if (!label)
        label = co_await downloadAgain(app, record.labelURL);
    QString printed = co_await printLabel(app, *label);
    co_return printed;
}

Task<QByteArray> downloadCustoms(AppState &app, ShipmentRecord record)
{
    if (record.customsDocURL.isEmpty())
        throw ShippoError::validation(
            u"the mailing log holds neither the papers nor the address to download them from."_s);
    const QByteArray document = co_await app.shippo.downloadLabel(record.customsDocURL);
    if (labelKind(document) != LabelKind::pdf || !isWhole(document))
        throw AppError(u"what the carrier sent is not a complete PDF document"_s);
    auto storing = onPool([&log = app.log, id = record.id, document] { return log.storeCustomsPDF(id, document); });
    co_await storing;
    co_return document;
}

Task<bool> printDocument(AppState &app, QByteArray pdf)
{
    const QString queue = read(app.platform.preferences, settings::documentQueue);
    auto printing = onPool([&printer = app.printer, pdf, queue] { return printer.printPDF(pdf, queue); });
    const auto sent = qScopeGuard([&app, queue] { app.printWatch.follow(queue, Paper::document); });
    const bool sentToQueue = co_await printing;
    co_return sentToQueue;
}

void recordReprintFailure(AppState &app, const AppError &error)
{
    const bool device = dynamic_cast<const SystemError *>(&error) != nullptr;
    app.errors.record(u"Reprint"_s, error, device ? Popup::no : Popup::yes);
}

} // namespace parcelory
