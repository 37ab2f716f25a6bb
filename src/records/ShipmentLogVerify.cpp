#include "records/LogChain.h"
#include "records/LogExport.h"
#include "records/RefundNotes.h"
#include "records/ShipmentLog.h"

#include <optional>

namespace parcelory {

namespace {

/// Entries that are read or written at once; a purchase waits for them.
constexpr int portion = 200;

} // namespace

bool ShipmentLog::sealOlder(const QList<LogChain::Head> &known, const CancelToken &cancel)
{
    std::optional<qint64> last = 0;
    do {
        const bool stored = change([&](Database &db) {
            const std::optional<bool> isKnownChain = LogChain::hasPassed(db, known);
            if (isKnownChain)
                last = *isKnownChain ? LogChain::sealOlder(db, *last, portion) : 0;
            return isKnownChain && last;
        });
        if (!stored || cancel.isCanceled())
            return false;
    } while (*last);
    return true;
}

bool ShipmentLog::addIndexes()
{
    return change(LogExport::addIndex) && change(RefundNotes::addIndex);
}

LogRead<LogChain::Report> ShipmentLog::verify(const QList<LogChain::Head> &known, const Progress &progress) const
{
    const auto end = read<LogChain::Head>([](const Database &db) { return LogChain::head(db); });
    if (!end.isRead())
        return LogRead<LogChain::Report>::failed(end.failure());
    LogChain::Walk walk(known);
    for (bool isMore = true; isMore;) {
        const auto step = read<bool>([&](const Database &db) -> std::optional<bool> {
            const bool hasNext = walk.next(db, portion);
            return walk.isFailed() ? std::nullopt : std::optional(hasNext);
        });
        if (!step.isRead())
            return LogRead<LogChain::Report>::failed(step.failure());
        isMore = *step;
        if (!progress.report(walk.entries(), std::max(walk.entries(), end->position)))
            return LogChain::Report{.isCanceled = true, .findings = {}};
    }
    return LogChain::Report{.labels = walk.labels(), .findings = walk.findings()};
}

} // namespace parcelory
