#pragma once

#include "core/Task.h"

#include <QString>
#include <QUrl>
#include <QVariant>

#include <chrono>
#include <functional>

namespace parcelory {

/// One web page that nobody sees, with cookies that last from page to page. Main thread only.
class WebSession {
public:
    /// Who decides about navigations and hears of finished pages.
    struct Delegate {
        std::function<bool(const QUrl &)> allows;     ///< asked before every navigation, the page's own included
        std::function<void(const QUrl &)> onFinished; ///< a page has finished loading; its address
    };

    virtual ~WebSession() = default;

    /// From now on nothing goes to the former delegate, nor to whoever still waits for an evaluation.
    virtual void setDelegate(Delegate delegate) = 0;
    /// Begins to load a page in the place of the present one and gives up after `timeout`. From now on scripts see only
    /// the new page. Throws AppError when this machine cannot show web pages.
    virtual void load(const QUrl &url, std::chrono::milliseconds timeout) = 0;
    /// The value of a JavaScript expression in the page; invalid when it throws, when no page is there yet, and when
    /// the page does not answer in time.
    virtual Task<QVariant> evaluate(QString expression) = 0;
    /// The page has crashed since it was loaded; the next load() begins afresh.
    virtual bool hasCrashed() const = 0;
    /// Forgets cookies, stored data and the page itself.
    virtual void clear() = 0;
};

} // namespace parcelory
