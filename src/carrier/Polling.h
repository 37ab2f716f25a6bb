#pragma once

#include "carrier/CarrierWords.h"
#include "core/Task.h"
#include "core/ports/Clock.h"

namespace parcelory {

/// A record that the carrier is still working on is polled at this interval, at most `maxPolls` times.
constexpr auto pollInterval = std::chrono::milliseconds(1500);
constexpr int maxPolls = 10;

/// Requests a record with `fetch` until the carrier has finished it; after `maxPolls` the record may still be pending.
template <class Record, class Fetch>
Task<Record> pollWhilePending(Clock &clock, Record record, Fetch fetch)
{
    for (int poll = 0; poll < maxPolls && isPending(record); ++poll) {
        co_await clock.sleep(pollInterval);
        record = co_await fetch();
    }
    co_return record;
}

} // namespace parcelory
