// Labels: read, drawn and compared with a parcel.

#include "OneOf.h"
#include "compose/LabelReadBack.h"
#include "devices/zpl/BarcodeModules.h"
#include "devices/zpl/ZplContents.h"
#include "devices/zpl/ZplPainter.h"
#include "devices/zpl/ZplReader.h"
#include "support/SampleParcel.h"

#include <QGuiApplication>

#include <numeric>
#include <variant>

namespace parcelory {
namespace {

void checkBarcodes(const ZplLabel &label)
{
    for (const ZplElement &element : label.elements) {
        const auto *code = std::get_if<ZplBarcode>(&element.shape);
        const auto dots = code ? barcodeDots(*code) : std::nullopt;
        if (!dots)
            continue;
        for (const BarcodeDots::Row &row : dots->rows)
            fuzz::require(std::accumulate(row.widths.begin(), row.widths.end(), 0) <= dots->width);
    }
}

void label(const QByteArray &bytes)
{
    constexpr int mostLabels = 50, oneIn = 16;
    PrintedParcel parcel = fedexParcel();
    parcel.isLive = true;
    const ZplDocument document = readZpl(bytes);
    fuzz::require(document.labels.size() <= mostLabels);
    const LabelVerdict verdict = readBack(contentsOf(document), parcel);
    fuzz::require(!verdict.findings.isEmpty() && readBack(contentsOf(document), parcel).findings == verdict.findings);
    for (const ZplLabel &one : document.labels) {
        checkBarcodes(one);
        if (qChecksum(bytes) % oneIn != 0) // drawing is slow
            continue;
        const ZplPicture picture = paintZpl(one);
        fuzz::require(picture.places.size() == one.elements.size() && !picture.image.isNull());
    }
}

} // namespace
} // namespace parcelory

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const QGuiApplication fonts(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    parcelory::label(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    return 0;
}
