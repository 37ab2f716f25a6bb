#include "records/Reprint.h"

#include "shell/SettingsKeys.h"

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

Task<QString> reprintLabel(AppState &app, ShipmentRecord record)
{
    std::optional<QByteArray> label = record.zpl;
    if (!label && record.id > 0) {
        auto reading = onPool([&app, id = record.id] { return app.log.zpl(id); });
        label = co_await reading;
    }
    if (!label)
        label = co_await downloadAgain(app, record.labelURL);
    auto printing = onPool([&app, bytes = *label] {
        const Preferences &preferences = app.platform.preferences;
        return app.printer.print(bytes, read(preferences, settings::zebraQueue),
                                 read(preferences, settings::documentQueue));
    });
    QString printed = co_await printing;
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
    const bool sentToQueue = co_await printing;
    co_return sentToQueue;
}

void recordReprintFailure(AppState &app, const AppError &error)
{
    const bool device = dynamic_cast<const SystemError *>(&error) != nullptr;
    app.errors.record(u"Reprint"_s, error, device ? Popup::no : Popup::yes);
}

} // namespace parcelory
