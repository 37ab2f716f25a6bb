#include "Compare.h"
#include "carrier/ShippoRecords.h"
#include "core/CompanySanitizer.h"
#include "core/Json.h"
#include "devices/Zpl.h"

#include <QFile>
#include <QRegularExpression>

namespace parcelory::bench {
using namespace Qt::StringLiterals;

namespace {

/// A label of 2 MB: mostly a picture in hexadecimal digits, as carriers send them.
QByteArray largeLabel()
{
    return "^XA^PW812^LL1400^POI^FO0,0^GFA,1000000,1000000,101," + QByteArray(1024 * 1024, 'F') + "^FS^LL1400^XZ" +
           "^XA^LL1300" + QByteArray(1024 * 1024, '0') + "^XZ";
}

void clampA2MbLabel(benchmark::State &state)
{
    const QByteArray label = largeLabel();
    const QRegularExpression length(u"\\^LL\\d{3,5}"_s);
    compare(
        state, [&] { benchmark::DoNotOptimize(Zpl::clamped(label)); },
        [&] { benchmark::DoNotOptimize(QString::fromUtf8(label).replace(length, u"^LL1218"_s).toUtf8()); });
}

void rotateA2MbLabel(benchmark::State &state)
{
    const QByteArray label = largeLabel();
    compare(
        state, [&] { benchmark::DoNotOptimize(Zpl::rotated(label)); },
        [&] {
            QString text = QString::fromUtf8(label);
            text.replace(u"^POI"_s, u"\x01"_s).replace(u"^PON"_s, u"^POI"_s).replace(u"\x01"_s, u"^PON"_s);
            benchmark::DoNotOptimize(text.toUtf8());
        });
}

void sanitizeACompany(benchmark::State &state)
{
    const CompanySanitizer sanitizer({{u"harborlightcoins"_s, u"HLC"_s}, {u"oldmintbullion"_s, u"OMB"_s}});
    const QString company = u"Smith Rare Coins & Bullion, LLC c/o Goldstein Numismatics"_s;
    const QString absent = u"wholesalers"_s, initial = u"W"_s;
    compare(
        state, [&] { benchmark::DoNotOptimize(sanitizer.sanitize(company)); },
        [&] {
            QString text = company;
            for (int word = 0; word < 69; ++word) // as many as the sanitizer knows
                text.replace(absent, initial, Qt::CaseInsensitive);
            benchmark::DoNotOptimize(text);
        });
}

void decodeAPageOf100Transactions(benchmark::State &state)
{
    QFile file(QStringLiteral(PARCELORY_TEST_DATA "/carrier/transaction-success.json"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no sample");
    const QByteArray one = file.readAll();
    const QByteArray page = R"({"next": null, "results": [)" + QByteArray(one + ',').repeated(99) + one + "]}";
    compare(
        state, [&] { benchmark::DoNotOptimize(decodeJson<ShippoList<ShippoTransaction>>(page, Keys::snake)); },
        [&] { benchmark::DoNotOptimize(nlohmann::json::parse(page.begin(), page.end())); });
}

BENCHMARK(clampA2MbLabel)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(rotateA2MbLabel)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(sanitizeACompany)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(decodeAPageOf100Transactions)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
} // namespace parcelory::bench
