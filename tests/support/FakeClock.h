#pragma once

#include "core/ports/Clock.h"

#include <algorithm>
#include <map>

namespace parcelory::test {

/// Time that advances only when the test says so.
class FakeClock : public Clock {
public:
    QDateTime start{QDate(2026, 11, 20), QTime(14, 41)}; ///< changed by a test that sets the clock

    QDateTime now() const override { return start.addMSecs(m_elapsed.count()); }
    QDateTime steadyNow() const override { return m_steadyStart.addMSecs(m_elapsed.count()); }
    quint64 after(Duration delay, std::function<void()> action) override
    {
        m_due.emplace(m_elapsed + delay, std::pair{++m_timers, std::move(action)});
        return m_timers;
    }
    void cancel(quint64 timer) override
    {
        std::erase_if(m_due, [timer](const auto &entry) { return entry.second.first == timer; });
    }

    /// Advances to the next timer and runs it; false if there is no timer. A test that waits for an answer does not
    /// reach midnight or the timers of the next day, which would start again and again.
    bool fireNext()
    {
        const auto next = std::ranges::find_if(
            m_due, [this](const auto &entry) { return start.addMSecs(entry.first.count()).time() != QTime(0, 0); });
        if (next == m_due.end() || next->first - m_elapsed > std::chrono::hours(12))
            return false;
        fire(next);
        return true;
    }
    /// Runs the next timer early: the time stands still.
    void runNext()
    {
        if (!m_due.empty())
            m_due.extract(m_due.begin()).mapped().second();
    }
    void advance(Duration by)
    {
        const Duration end = m_elapsed + by;
        while (!m_due.empty() && m_due.begin()->first <= end)
            fire(m_due.begin());
        m_elapsed = end;
    }
    Duration elapsed() const { return m_elapsed; }

private:
    using Timers = std::multimap<Duration, std::pair<quint64, std::function<void()>>>;

    void fire(Timers::iterator timer)
    {
        const auto due = m_due.extract(timer);
        m_elapsed = std::max(m_elapsed, due.key());
        due.mapped().second();
    }

    const QDateTime m_steadyStart = start;
    Duration m_elapsed{0};
    quint64 m_timers = 0;
    Timers m_due;
};

} // namespace parcelory::test
