#pragma once

#include "carrier/CarrierAnswer.h"
#include "carrier/ShippoRecords.h"
#include "core/IsoDate.h"
#include "core/Progress.h"
#include "core/Task.h"

#include <chrono>
#include <exception>
#include <functional>
#include <memory>

namespace parcelory {

/// A listing never reads more pages than this, even if the carrier links to more.
constexpr int maxPages = 40;

/// The state of a listing; shared by the screen that shows it and the code that reads it.
struct Listing {
    std::function<void()> onPage;                     ///< called on the main thread for every page that was read
    std::function<void(std::chrono::seconds)> onWait; ///< called when the carrier wants a pause
    bool isCut = false;                               ///< older records were left out: maxPages, or an empty page
    bool isOver = false;                              ///< the last page of the list was read
    CancelToken cancel;                               ///< canceled when the result is no longer needed
    std::exception_ptr failure;                       ///< the first failure; the other lists of the listing stop
};

/// Reads at most maxPages of a list, until a page reaches back before `cutoff`, is empty or is the last page. The
/// carrier lists the newest records first, so all later pages are older; the page itself is kept completely.
/// `fetch(path)` returns a page's bytes as a Task; `created(record)` returns its time stamp, or nothing.
/// A failed page ends the listing with its error.
template <class T, class Fetch, class Created>
Task<QList<T>> pagedList(Fetch fetch, QString path, QDateTime cutoff, Created created,
                         std::shared_ptr<Listing> state = {})
{
    QList<T> all;
    for (int pages = 1;; ++pages) {
        const QByteArray answer = co_await fetch(path);
        const auto page = co_await readAnswer<ShippoList<T>>(answer);
        all += page.results;
        const bool isLast = page.next.value_or(QString()).isEmpty();
        if (state && isLast)
            state->isOver = true;
        if (page.results.isEmpty() || isLast) {
            if (state && !isLast) // an empty page is no end
                state->isCut = true;
            co_return all;
        }
        for (const T &record : page.results) {
            const std::optional<QString> text = created(record);
            const std::optional<QDateTime> time = text ? parseIso(*text) : std::nullopt;
            if (time && *time < cutoff)
                co_return all;
        }
        if (pages == maxPages) {
            if (state)
                state->isCut = true;
            co_return all;
        }
        path = *page.next;
    }
}

} // namespace parcelory
