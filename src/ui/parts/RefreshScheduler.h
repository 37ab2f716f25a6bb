#pragma once

#include "core/Observable.h"

#include <QObject>

#include <functional>

namespace parcelory {

/// Calls `refresh` once per turn of the event loop, however often the followed models change in it: by then a screen
/// model has updated all its fields, so a view never shows half of a change.
///
/// A refresh runs after every change of a model, also of a field that the view does not show. It must therefore leave
/// alone what it shows already: a row that is built again, a list that is filled again or a focus that moves disturbs
/// the clerk.
class RefreshScheduler {
public:
    explicit RefreshScheduler(std::function<void()> refresh) : m_refresh(std::move(refresh)) {}

    template <class... Models>
    void follow(const Models &...models)
    {
        (QObject::connect(&models, &Observable::changed, &m_context, [this] { touch(); }), ...);
    }

    /// Schedules a refresh as a changed model does.
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
};

} // namespace parcelory
