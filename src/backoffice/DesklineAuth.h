#pragma once

#include "core/Observable.h"
#include "core/Platform.h"
#include "core/Task.h"

#include <QUrl>

namespace parcelory {

/// The clerk's back office session: an invisible web page, signed in by filling the sign-in form because there is no
/// other way in. The page may navigate within the back office only.
class DesklineAuth : public Observable {
public:
    explicit DesklineAuth(Platform &platform);
    ~DesklineAuth();

    /// True while the page shows the sign-in form.
    static const QString loginFormProbe;
    static const QString signedInProbe;
    /// True if the page shows a way to sign out, in any of its spellings, or by a link with another text or a picture.
    static const QString signOutProbe;

    Observed<QString> currentURL{this}; ///< of the last page that finished loading

    QUrl loginURL() const;
    /// An address of the back office; `path` begins with a slash and may hold a query.
    QUrl address(const QString &path) const;

    /// True if the back office responds at all within `timeout`.
    Task<bool> isReachable(std::chrono::milliseconds timeout);
    /// Loads a page. Throws AppError when this machine cannot show web pages.
    void load(const QUrl &url);
    /// Counts page loads, so that a caller that waits for a page can tell that another page has replaced it.
    int visit() const { return m_visit; }
    /// Ends every wait for the current page, as if another page had replaced it. The session stays.
    void leavePage() { ++m_visit; }
    /// Evaluates `expression` in the page every `interval` until it is true. False on timeout, if the page crashed, or
    /// if another page was loaded.
    Task<bool> waitFor(QString expression, std::chrono::milliseconds timeout,
                       std::chrono::milliseconds interval = std::chrono::milliseconds(300));
    /// The same for a page of a session, which does not come after a redirect to the sign-in form: the wait ends when
    /// the form is still there at a second look. A page that signs in by itself shows the form for a moment only.
    Task<bool> waitInSession(QString expression, std::chrono::milliseconds timeout);
    /// Fills in and submits the sign-in form. Returns "submitted", or what is missing: "no-password-field",
    /// "no-user-field", "no-form", "wrong-address" (the page is not the back office's).
    Task<QString> fillLogin(QString user, QString pass);
    /// Empty if the value is not a text or the evaluation fails; never throws.
    Task<QString> evalString(QString expression);
    /// False if the value is not a boolean or the evaluation fails; never throws.
    Task<bool> evalBool(QString expression);

    /// True if the page asks for a sign-in. A page with a password field that also offers to sign out does not.
    Task<bool> asksForSignIn();

    bool hasCrashed() const { return m_web.hasCrashed(); }
    /// Discards the session and its cookies: the next clerk starts at the sign-in form.
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
