#pragma once

#include "core/Task.h"

#include <QString>
#include <QUrl>
#include <QVariant>

#include <chrono>
#include <functional>

namespace parcelory {

/// One invisible web page, with cookies that last from page to page. Main thread only.
class WebSession {
public:
    /// Decides about navigations and is notified of loaded pages.
    struct Delegate {
        std::function<bool(const QUrl &)> allows;     ///< called before every navigation, including the page's own
        std::function<void(const QUrl &)> onFinished; ///< called with a page's address when it has loaded
    };

    virtual ~WebSession() = default;

    /// From now on the former delegate is not called, and evaluations that are still pending never complete.
    virtual void setDelegate(Delegate delegate) = 0;
    /// Starts to load a page in place of the current page and gives up after `timeout`. From now on scripts see only
    /// the new page. Throws AppError if this machine cannot show web pages.
    virtual void load(const QUrl &url, std::chrono::milliseconds timeout) = 0;
    /// The value of a JavaScript expression in the page; invalid if it throws, if no page is loaded yet, or if the page
    /// does not respond in time.
    virtual Task<QVariant> evaluate(QString expression) = 0;
    /// True if the page has crashed since it was loaded; the next load() starts over.
    virtual bool hasCrashed() const = 0;
    /// Forgets cookies, stored data and the page itself.
    virtual void clear() = 0;
};

} // namespace parcelory
