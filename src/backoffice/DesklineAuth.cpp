#include "backoffice/DesklineAuth.h"

#include "backoffice/Script.h"
#include "core/AppError.h"
#include "core/Json.h"
#include "core/Platform.h"
#include "core/Task.h"
#include "core/ports/HttpTransport.h"

#include <QProperty>

#include <chrono>
#include <coroutine>
#include <exception>

namespace parcelory {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

const QString DesklineAuth::loginFormProbe = u"!!document.querySelector('input[type=password]')"_s;
const QString DesklineAuth::signedInProbe = u"location.pathname.indexOf('dashboard.php') !== -1 || "
                                            "/sign-out|log ?out/i.test(document.body ? document.body.innerText : '')"_s;
const QString DesklineAuth::signOutProbe =
    u"[document.body ? document.body.innerText : '', ...[...document.links]"
    ".filter(link => link.getClientRects().length).map(link => link.getAttribute('href'))]"
    ".some(text => /\\b(sign|log)[-_\\s]?out/i.test(text))"_s;

namespace {

constexpr auto pageLimit = 60s;

/// A JavaScript array with one string, so that any quotes in the text are escaped.
QString scriptArray(const QString &text)
{
    try {
        return QString::fromUtf8(dumpJson(Json::array({text.toStdString()})));
    } catch (const std::exception &) {
        return u"[\"\"]"_s;
    }
}

/// Ends after `interval`, or as soon as another page has loaded.
class NextLook {
public:
    NextLook(Clock &clock, Observed<QString> &page, std::chrono::milliseconds interval)
        : m_clock(clock), m_page(page), m_interval(interval)
    {
    }

    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> waiting)
    {
        wakeAfter(m_interval, waiting);
        m_loaded = m_page.addNotifier([this, waiting] {
            m_clock.cancel(m_timer);
            wakeAfter(0ms, waiting); // not inside the page's own callback
        });
    }
    void await_resume() const noexcept {}

private:
    void wakeAfter(std::chrono::milliseconds delay, std::coroutine_handle<> waiting)
    {
        m_timer = m_clock.after(delay, [waiting] { waiting.resume(); });
    }

    Clock &m_clock;
    Observed<QString> &m_page;
    const std::chrono::milliseconds m_interval;
    quint64 m_timer = 0;
    QPropertyNotifier m_loaded;
};

} // namespace

DesklineAuth::DesklineAuth(Platform &platform)
    : m_http(platform.http), m_clock(platform.clock), m_web(platform.web), m_base(platform.deployment.backOffice)
{
    m_web.setDelegate({.allows = [this](const QUrl &url) { return allows(url); },
                       .onFinished = [this](const QUrl &url) { currentURL = url.toString(); }});
}

DesklineAuth::~DesklineAuth()
{
    m_web.setDelegate({});
}

QUrl DesklineAuth::loginURL() const
{
    return address(u"/staff/login.php"_s);
}

QUrl DesklineAuth::address(const QString &path) const
{
    return m_base.resolved(QUrl(path));
}

Task<bool> DesklineAuth::isReachable(std::chrono::milliseconds timeout)
{
    try {
        co_await m_http.send(
            {.url = loginURL(), .method = "HEAD", .timeout = timeout, .redirects = HttpRequest::Redirects::answer});
        co_return true;
    } catch (const AppError &) {
        co_return false;
    }
}

void DesklineAuth::load(const QUrl &url)
{
    ++m_visit;
    m_web.load(url, pageLimit);
}

Task<bool> DesklineAuth::waitFor(QString expression, std::chrono::milliseconds timeout,
                                 std::chrono::milliseconds interval)
{
    const int visit = m_visit;
    const QDateTime deadline = m_clock.steadyNow().addMSecs(timeout.count());
    while (m_clock.steadyNow() < deadline) {
        const bool holds = co_await evalBool(expression);
        if (m_visit != visit || m_web.hasCrashed())
            co_return false;
        if (holds)
            co_return true;
        co_await NextLook(m_clock, currentURL, interval);
    }
    co_return false;
}

Task<bool> DesklineAuth::waitInSession(QString expression, std::chrono::milliseconds timeout)
{
    constexpr std::chrono::milliseconds look = 3s;
    const int visit = m_visit;
    const QDateTime deadline = m_clock.steadyNow().addMSecs(timeout.count());
    bool hadForm = false;
    for (auto left = timeout; left > 0ms; left = std::chrono::milliseconds(m_clock.steadyNow().msecsTo(deadline))) {
        const bool holds = co_await waitFor(expression, std::min(left, look));
        if (holds || m_visit != visit || m_web.hasCrashed())
            co_return holds;
        const bool hasForm = co_await asksForSignIn();
        if (hasForm && hadForm)
            co_return false;
        hadForm = hasForm;
    }
    co_return false;
}

Task<QString> DesklineAuth::fillLogin(QString user, QString pass)
{
    const QString base = m_base.toString(QUrl::FullyEncoded | QUrl::RemoveUserInfo);
    const QString script = scriptText(u"fill-login.js"_s) + u'(' + scriptArray(user) + u"[0], "_s + scriptArray(pass) +
                           u"[0], "_s + scriptArray(base) + u"[0])"_s;
    co_return co_await evalString(script);
}

Task<QString> DesklineAuth::evalString(QString expression)
{
    const QVariant value = co_await m_web.evaluate(expression);
    co_return value.typeId() == QMetaType::QString ? value.toString() : QString();
}

Task<bool> DesklineAuth::evalBool(QString expression)
{
    const QVariant value = co_await m_web.evaluate(expression);
    co_return value.typeId() == QMetaType::Bool &&value.toBool();
}

Task<bool> DesklineAuth::asksForSignIn()
{
    const bool signInForm = co_await evalBool(loginFormProbe);
    if (!signInForm)
        co_return false;
    const bool signOut = co_await evalBool(signOutProbe);
    co_return !signOut;
}

void DesklineAuth::clear()
{
    ++m_visit;
    currentURL = QString();
    m_web.clear();
}

bool DesklineAuth::allows(const QUrl &url) const
{
    return url.host().isEmpty() || url.host() == m_base.host();
}

} // namespace parcelory
