#include "Compare.h"
#include "compose/LabelReadBack.h"
#include "devices/zpl/ZplContents.h"
#include "devices/zpl/ZplPainter.h"
#include "devices/zpl/ZplReader.h"
#include "support/SampleParcel.h"

#include <QFile>

namespace parcelory::bench {

namespace {

/// A label of 200 kB: a FedEx label with a picture in hexadecimal digits behind its texts, as carriers send them.
QByteArray label()
{
    QFile file(QStringLiteral(PARCELORY_TEST_DATA "/labels/fedex.zpl"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no sample");
    constexpr int bytesPerRow = 100, rows = 980;
    const QByteArray picture = "^FO0,0^GFA,98000,98000,100," + QByteArray("80").repeated(bytesPerRow * rows) + "^FS^XZ";
    return file.readAll().replace("^XZ", picture);
}

void drawA200KbLabel(benchmark::State &state)
{
    const QByteArray bytes = label();
    compare(
        state, [&] { benchmark::DoNotOptimize(paintZpl(readZpl(bytes).labels.value(0))); },
        [&] { benchmark::DoNotOptimize(QByteArray::fromHex(bytes)); });
}

void compareALabelWithItsParcel(benchmark::State &state)
{
    const QByteArray bytes = label();
    const PrintedParcel parcel = fedexParcel();
    compare(
        state, [&] { benchmark::DoNotOptimize(readBack(contentsOf(readZpl(bytes)), parcel)); },
        [&] { benchmark::DoNotOptimize(readZpl(bytes)); });
}

BENCHMARK(drawA200KbLabel)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(compareALabelWithItsParcel)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
} // namespace parcelory::bench
