#pragma once

#include "core/Platform.h"
#include "core/Task.h"

#include <QProperty>
#include <QUrl>

namespace parcelory {

/// The clerk's session in the back office: an invisible web page that is signed in by filling its form, because there
/// is no other way in. Decides where that page may go: nowhere but to the back office.
class DesklineAuth {
public:
    explicit DesklineAuth(Platform &platform);
    ~DesklineAuth();

    /// True while the sign-in form stands on the page.
    static const QString loginFormProbe;
    static const QString signedInProbe;

    QProperty<QString> currentURL; ///< of the last page that finished loading

    QUrl loginURL() const;
    /// An address of the back office; `path` begins with a slash and may hold a query.
    QUrl address(const QString &path) const;

    /// The back office gives any answer at all within `timeout`.
    Task<bool> isReachable(std::chrono::milliseconds timeout);
    /// Loads a page. Throws AppError when this machine cannot show web pages.
    void load(const QUrl &url);
    /// Counts pages: whoever waits for one can tell that another has taken its place.
    int visit() const { return m_visit; }
    /// Asks the page every `interval` until `expression` is true. False when the time is up, when the page has crashed
    /// and when another one was loaded.
    Task<bool> waitFor(QString expression, std::chrono::milliseconds timeout,
                       std::chrono::milliseconds interval = std::chrono::milliseconds(300));
    /// Fills in and submits the sign-in form. "submitted", or what was missing: "no-password-field", "no-user-field",
    /// "no-form".
    Task<QString> fillLogin(QString user, QString pass);
    /// Empty when the value is no text or the evaluation fails; never throws.
    Task<QString> evalString(QString expression);
    /// False when the value is no boolean or the evaluation fails; never throws.
    Task<bool> evalBool(QString expression);

    bool hasCrashed() const { return m_web.hasCrashed(); }
    /// Forgets the session with its cookies: the next clerk begins at the sign-in form.
    void clear();

private:
    bool allows(const QUrl &url) const;

    HttpTransport &m_http;
    Clock &m_clock;
    WebSession &m_web;
    QUrl m_base;
    int m_visit = 0;
};

} // namespace parcelory
