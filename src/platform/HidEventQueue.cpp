#include "platform/HidEventQueue.h"

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

namespace parcelory {

void HidEventQueue::attached(int device, const QString &product)
{
    const std::lock_guard lock(m_access);
    m_last.remove(device);
    m_events.push_back({Event::Kind::attached, device, product, {}});
}

void HidEventQueue::removed(int device)
{
    const std::lock_guard lock(m_access);
    m_events.push_back({Event::Kind::removed, device, {}, {}});
}

void HidEventQueue::report(int device, const QByteArray &bytes)
{
    const std::lock_guard lock(m_access);
    if (m_last.value(device) == bytes)
        return;
    m_last.insert(device, bytes);
    if (m_reports == mostReports)
        m_events.erase(std::ranges::find(m_events, Event::Kind::report, &Event::kind));
    else
        ++m_reports;
    m_events.push_back({Event::Kind::report, device, {}, bytes});
}

bool HidEventQueue::needsFetching()
{
    const std::lock_guard lock(m_access);
    if (m_events.empty() || m_fetching)
        return false;
    m_fetching = true;
    return true;
}

std::vector<HidEventQueue::Event> HidEventQueue::fetch()
{
    const std::lock_guard lock(m_access);
    m_fetching = false;
    m_reports = 0;
    return std::exchange(m_events, {});
}

} // namespace parcelory
