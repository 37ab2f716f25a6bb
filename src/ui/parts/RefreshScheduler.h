#pragma once

#include <QObject>
#include <QProperty>

#include <functional>
#include <vector>

namespace parcelory {

/// Calls `refresh` once per turn of the event loop, however many of the followed properties change in it: by then the
/// screen model has updated all its properties, so a view never shows half of a change.
class RefreshScheduler {
public:
    explicit RefreshScheduler(std::function<void()> refresh) : m_refresh(std::move(refresh)) {}

    template <class... Properties>
    void follow(Properties &...properties)
    {
        (m_notifiers.push_back(properties.addNotifier([this] { touch(); })), ...);
    }

    /// Schedules a refresh as a changed property does; for signals of lists.
    void touch()
    {
        if (m_pending)
            return;
        m_pending = true;
        QMetaObject::invokeMethod(&m_context, [this] { refreshNow(); }, Qt::QueuedConnection);
    }

    void refreshNow()
    {
        m_pending = false;
        m_refresh();
    }

private:
    std::function<void()> m_refresh;
    bool m_pending = false;
    QObject m_context; ///< its destruction discards a queued call
    std::vector<QPropertyNotifier> m_notifiers;
};

} // namespace parcelory
