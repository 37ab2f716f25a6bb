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
        m_due.emplace(m_elapsed + delay, Timer{++m_timers, delay, std::move(action)});
        return m_timers;
    }
    void cancel(quint64 timer) override
    {
        std::erase_if(m_due, [timer](const auto &entry) { return entry.second.id == timer; });
    }

    /// Advances to the next timer and runs it; false if there is no timer. A test that waits for an answer does not
    /// reach the timers for midnight or for the next day, which would start again and again.
    bool fireNext()
    {
        const auto next = std::ranges::find_if(m_due, [this](const auto &entry) { return !isForMidnight(entry); });
        if (next == m_due.end() || next->first - m_elapsed > std::chrono::hours(12))
            return false;
        fire(next);
        return true;
    }
    /// Runs the next timer early: the time stands still.
    void runNext()
    {
        if (!m_due.empty())
            m_due.extract(m_due.begin()).mapped().action();
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
    struct Timer {
        quint64 id;
        Duration delay;
        std::function<void()> action;
    };
    using Timers = std::multimap<Duration, Timer>;

    /// A timer of a short interval may be due at midnight, too: it only happens to be.
    bool isForMidnight(const Timers::value_type &entry) const
    {
        return start.addMSecs(entry.first.count()).time() == QTime(0, 0) &&
               entry.second.delay > std::chrono::minutes(1);
    }
    void fire(Timers::iterator timer)
    {
        const auto due = m_due.extract(timer);
        m_elapsed = std::max(m_elapsed, due.key());
        due.mapped().action();
    }

    const QDateTime m_steadyStart = start;
    Duration m_elapsed{0};
    quint64 m_timers = 0;
    Timers m_due;
};

} // namespace parcelory::test
