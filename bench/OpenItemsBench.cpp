#include "Compare.h"
#include "core/Task.h"
#include "records/OpenItems.h"
#include "ui/log/OpenItemCells.h"
#include "ui/log/OpenItemsTable.h"
#include "ui/theme/Theme.h"

#include <QApplication>
#include <QHeaderView>
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

/// The main thread's share of a new list, sorted by a column: 16 ms are one frame.
void openItemsAreShown(benchmark::State &state)
{
    const QDateTime now = QDateTime::currentDateTime();
    const QList<OpenItem> items = OpenItems::itemsOf(manyLabels(now), now);
    Theme::install(false);
    OpenItemsTable table;
    table.resize(1280, 600);
    table.show();
    table.horizontalHeader()->setSortIndicator(int(state.range(0)), Qt::DescendingOrder);
    for ([[maybe_unused]] auto _ : state) {
        double seconds = secondsFor([&] { table.setItems(items); });
        for (int turn = 0; turn < 2; ++turn) {
            workPool().waitForDone();
            seconds += secondsFor([] { QCoreApplication::processEvents(); });
        }
        state.SetIterationTime(seconds);
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

BENCHMARK(openItemsAreShown)
    ->ArgName("column")
    ->Arg(OpenItemCells::age)
    ->Arg(OpenItemCells::what)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(openItemsAreJudged)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace parcelory::bench
