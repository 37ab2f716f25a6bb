// What the devices send: labels on their way to the printer, the print system's state, a scale's reports.

#include "OneOf.h"
#include "devices/ParcelDetector.h"
#include "devices/PrinterState.h"
#include "devices/ScaleReport.h"
#include "devices/Zpl.h"

namespace parcelory {
namespace {

void label(const QByteArray &bytes)
{
    const LabelFile file = parseLabel(bytes);
    fuzz::require(file.isWhole == isWhole(bytes) && file.kind == labelKind(bytes));
    const QByteArray clamped = Zpl::clamped(bytes), rotated = Zpl::rotated(bytes), upright = Zpl::upright(bytes);
    fuzz::require(labelKind(clamped) == file.kind && labelKind(rotated) == file.kind &&
                  labelKind(upright) == file.kind);
    if (Zpl::isCutFrom300Dpi(bytes))
        fuzz::require(clamped != bytes);
    const bool setsOrientation = bytes.contains("^POI") || bytes.contains("^PON");
    if (setsOrientation)
        fuzz::require(upright == bytes && (bytes.contains('\x01') || Zpl::rotated(rotated) == bytes));
    if (upright != bytes)
        fuzz::require(!Zpl::leavesTurned(upright) && Zpl::rotated(upright) == rotated);
}

/// Two outputs, separated by a zero byte.
void printerState(const QByteArray &bytes)
{
    const qsizetype middle = bytes.indexOf('\0');
    const PrinterReport report =
        readPrinterReport(bytes.left(middle), middle < 0 ? QByteArray() : bytes.mid(middle + 1));
    fuzz::require(report.waiting >= 0 && (report.waiting > 0 || report.oldestJob.isEmpty()));
    for (const Paper paper : {Paper::label, Paper::document})
        fuzz::require(!report.isIdle() ||
                      report.words.isEmpty() == printerSentence(QStringLiteral("Q"), report, paper).isEmpty());
}

/// Reports of eight bytes.
void scaleReports(const QByteArray &bytes)
{
    ParcelDetector parcels;
    for (qsizetype at = 0; at < bytes.size(); at += 8) {
        const std::optional<ScaleReport> report = parseScaleReport(bytes.mid(at, 8));
        if (!report)
            continue;
        scaleDisplay(true, report->ounces);
        scaleFault(*report);
        if (parcels.take(*report))
            fuzz::require(parcels.settled() && *parcels.settled() > 0);
    }
}

} // namespace
} // namespace parcelory

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    using namespace parcelory;
    static constexpr void (*readers[])(const QByteArray &) = {label, printerState, scaleReports};
    fuzz::oneOf(readers, data, size);
    return 0;
}
