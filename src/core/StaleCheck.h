#pragma once

#include <tuple>

namespace parcelory {

/// A late response belongs to a draft, a session or a key that may be gone. Each of these has a counter. The result
/// tells, whenever it is called, whether one of the counters has moved since now. The counters outlive it.
template <class... Counters>
auto staleCheck(const Counters &...counters)
{
    return [&counters..., before = std::tuple(int(counters)...)] { return before != std::tuple(int(counters)...); };
}

} // namespace parcelory
