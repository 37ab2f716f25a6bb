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

void recordReprintFailure(AppState &app, const AppError &error)
{
    const bool device = dynamic_cast<const SystemError *>(&error) != nullptr;
    app.errors.record(u"Reprint"_s, error, device ? Popup::no : Popup::yes);
}

} // namespace parcelory
