#pragma once

#include <QObject>
#include <QProperty>

#include <functional>
#include <vector>

namespace parcelory {

/// Calls `refresh` once for all the changes that the followed properties go through in one turn of the event loop: by
/// then a screen model has drawn its own conclusions, so a view never shows half of a change.
class RefreshScheduler {
public:
    explicit RefreshScheduler(std::function<void()> refresh) : m_refresh(std::move(refresh)) {}

    template <class... Properties>
    void follow(Properties &...properties)
    {
        (m_notifiers.push_back(properties.addNotifier([this] { touch(); })), ...);
    }

    /// As if a property had changed; for signals of lists.
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
    QObject m_context; ///< a call that is still queued dies with it
    std::vector<QPropertyNotifier> m_notifiers;
};

} // namespace parcelory
