#include "records/OpenItems.h"
#include "ui/log/OpenItemsTable.h"
#include "ui/theme/Theme.h"

#include <QApplication>
#include <benchmark/benchmark.h>

namespace parcelory::bench {
using namespace Qt::StringLiterals;

namespace {

constexpr int itemCount = 20000;

QList<OpenFacts> manyLabels(const QDateTime &now)
{
    QList<OpenFacts> labels;
    for (int number = 1; number <= itemCount; ++number) {
        const QDateTime bought = now.addSecs(-29 * 86400 + number);
        labels.append({.label = {.id = number,
                                 .createdAt = bought,
                                 .recipient = u"Ruth Abernathy, %1 Quarry Ln, Bend OR 97702"_s.arg(number),
                                 .tracking = u"94055118995604%1"_s.arg(number, 8, 10, QChar(u'0'))},
                       .journey = Journey{.askedAt = now}});
    }
    return labels;
}

/// The main thread's share of a new list: 16 ms are one frame.
void openItemsAreShown(benchmark::State &state)
{
    const QDateTime now = QDateTime::currentDateTime();
    const QList<OpenItem> items = OpenItems::itemsOf(manyLabels(now), now);
    Theme::install(false);
    OpenItemsTable table;
    table.resize(1280, 600);
    table.show();
    for ([[maybe_unused]] auto _ : state) {
        table.setItems(items);
        QCoreApplication::processEvents();
    }
    state.counters["items"] = double(items.size());
}

/// The pool's share, without the disk.
void openItemsAreJudged(benchmark::State &state)
{
    const QDateTime now = QDateTime::currentDateTime();
    const QList<OpenFacts> labels = manyLabels(now);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(OpenItems::itemsOf(labels, now));
}

BENCHMARK(openItemsAreShown)->Unit(benchmark::kMillisecond);
BENCHMARK(openItemsAreJudged)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace parcelory::bench
