#include "practice/PracticeScale.h"

#include "devices/ScaleReport.h"

#include <QtGlobal>

#include <algorithm>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

void PracticeScale::start(Listener listener)
{
    m_listener = std::move(listener);
    if (m_plugged)
        attach();
}

void PracticeScale::stop()
{
    cancelSettling();
    m_listener = {};
}

void PracticeScale::put(double ounces)
{
    m_ounces = std::max(0.0, ounces);
    cancelSettling();
    send(ScaleStatus::zero, 0); // an empty plate separates two parcels
    send(ScaleStatus::moving, std::min(m_ounces, capacity) / 2);
    m_settling = m_clock.after(settling, [this] {
        m_settling.reset();
        sendSettled();
    });
}

void PracticeScale::plug()
{
    if (std::exchange(m_plugged, true))
        return;
    attach();
}

void PracticeScale::unplug()
{
    if (!std::exchange(m_plugged, false))
        return;
    cancelSettling();
    if (m_listener.removed)
        m_listener.removed(m_device);
}

void PracticeScale::attach()
{
    ++m_device;
    if (m_listener.attached)
        m_listener.attached(m_device, u"Practice Scale"_s);
    sendSettled();
}

void PracticeScale::sendSettled()
{
    if (m_ounces > capacity)
        send(ScaleStatus::overLimit, 0);
    else
        send(m_ounces > 0 ? ScaleStatus::stable : ScaleStatus::zero, m_ounces);
}

void PracticeScale::send(ScaleStatus status, double ounces)
{
    if (!m_plugged || !m_listener.report)
        return;
    const int tenths = qRound(ounces * 10);
    const char bytes[] = {3,      static_cast<char>(status),        11,
                          '\xFF', static_cast<char>(tenths & 0xFF), static_cast<char>(tenths >> 8)};
    m_listener.report(m_device, QByteArray(bytes, sizeof bytes));
}

void PracticeScale::cancelSettling()
{
    if (m_settling)
        m_clock.cancel(*m_settling);
    m_settling.reset();
}

} // namespace parcelory
