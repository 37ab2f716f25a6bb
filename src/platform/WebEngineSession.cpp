#include "platform/WebEngineSession.h"

#include "core/AppError.h"
#include "core/Task.h"

#include <QHostAddress>
#include <QLoggingCategory>
#include <QWebEngineCookieStore>
#include <QWebEngineHttpRequest>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineScript>
#include <QWebEngineSettings>
#include <QWebEngineUrlRequestInterceptor>

#include <chrono>
#include <coroutine>
#include <cstddef>
#include <memory>
#include <utility>

#ifdef Q_OS_LINUX
#include <fcntl.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Our scripts run in a world of their own, so that a page cannot replace the functions that they call.
constexpr quint32 ourWorld = QWebEngineScript::ApplicationWorld;

/// Set in a page that is being left: until the next page responds, scripts would still run in the old page.
const QString leavingMark = u"window.__leaving = true"_s;

class LoopbackGuard : public QWebEngineUrlRequestInterceptor {
public:
    using QWebEngineUrlRequestInterceptor::QWebEngineUrlRequestInterceptor;

    void interceptRequest(QWebEngineUrlRequestInfo &request) override
    {
        const QString host = request.requestUrl().host();
        request.block(!host.isEmpty() && !QHostAddress(host).isLoopback());
    }
};

/// The result of an evaluation: the page's value, or invalid on timeout.
struct Answer {
    QVariant value;
    bool settled = false;
    std::coroutine_handle<> waiting;

    void settle(const QVariant &given)
    {
        if (std::exchange(settled, true))
            return;
        value = given;
        if (waiting)
            waiting.resume();
    }
};

struct Answered {
    std::shared_ptr<Answer> answer;

    bool await_ready() const { return answer->settled; }
    void await_suspend(std::coroutine_handle<> handle) { answer->waiting = handle; }
    QVariant await_resume() const { return answer->value; }
};

#ifdef Q_OS_LINUX
bool writeLine(const char *path, const QByteArray &line)
{
    const int file = ::open(path, O_WRONLY);
    return file >= 0 && ::write(file, line.constData(), size_t(line.size())) == line.size();
}

/// Tries the first steps of the engine's sandbox in this process. Some systems allow the namespace but nothing inside
/// it.
bool canBuildSandbox()
{
    const QByteArray user = QByteArray::number(::geteuid()), group = QByteArray::number(::getegid());
    return ::unshare(CLONE_NEWUSER) == 0 && writeLine("/proc/self/setgroups", "deny") &&
           writeLine("/proc/self/uid_map", "0 " + user + " 1") &&
           writeLine("/proc/self/gid_map", "0 " + group + " 1") && ::unshare(CLONE_NEWPID) == 0;
}
#endif

} // namespace

class WebEngineSession::Page : public QWebEnginePage {
public:
    Page(QWebEngineProfile *profile, const Delegate &delegate) : QWebEnginePage(profile), m_delegate(delegate) {}

protected:
    bool acceptNavigationRequest(const QUrl &url, NavigationType, bool) override
    {
        return m_delegate.allows && m_delegate.allows(url);
    }
    QWebEnginePage *createWindow(WebWindowType) override { return nullptr; }
    // The page is invisible, so its dialogs are dismissed. Its console messages are dropped, because they may contain
    // typed input.
    void javaScriptAlert(const QUrl &, const QString &) override {}
    bool javaScriptConfirm(const QUrl &, const QString &) override { return false; }
    bool javaScriptPrompt(const QUrl &, const QString &, const QString &, QString *) override { return false; }
    void javaScriptConsoleMessage(JavaScriptConsoleMessageLevel, const QString &, int, const QString &) override {}

private:
    const Delegate &m_delegate;
};

WebEngineSession::WebEngineSession(Settings settings) : m_settings(std::move(settings))
{
    m_loadLimit.setSingleShot(true);
    QObject::connect(&m_loadLimit, &QTimer::timeout, &m_loadLimit, [this] {
        if (m_page)
            m_page->triggerAction(QWebEnginePage::Stop);
    });
}

WebEngineSession::~WebEngineSession()
{
    m_listening.reset(); // a page that is destroyed calls all pending callbacks
    m_former.reset();
}

void WebEngineSession::prepareProcess()
{
    QByteArray flags = qgetenv("QTWEBENGINE_CHROMIUM_FLAGS");
    flags += " --disable-background-timer-throttling"; // otherwise the timers of an invisible page run slowly
#ifdef Q_OS_LINUX
    if (::geteuid() == 0)
        flags += " --no-sandbox"; // the engine refuses to run as root with the sandbox
#endif
    qputenv("QTWEBENGINE_CHROMIUM_FLAGS", flags.trimmed());
    QLoggingCategory::setFilterRules(u"qt.webenginecontext*=false"_s);
}

QString WebEngineSession::obstacle()
{
#ifdef Q_OS_LINUX
    if (::geteuid() == 0 || qEnvironmentVariableIsSet("QTWEBENGINE_DISABLE_SANDBOX"))
        return {};
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(canBuildSandbox() ? 0 : 1);
    int status = 1;
    if (child > 0)
        ::waitpid(child, &status, 0);
    if (status != 0)
        return u"The back office cannot be opened: this system keeps the web engine from building its sandbox (user "
               "namespaces are switched off or held back by AppArmor) — ask your administrator."_s;
#endif
    return {};
}

void WebEngineSession::setDelegate(Delegate delegate)
{
    m_delegate = std::move(delegate);
    m_listening = std::make_shared<const int>();
}

QWebEngineProfile &WebEngineSession::profile()
{
    if (m_profile)
        return *m_profile;
    static const QString reason = obstacle();
    if (!reason.isEmpty())
        throw AppError(reason);
    m_profile = std::make_unique<QWebEngineProfile>(u"deskline"_s);
    m_profile->setPersistentStoragePath(m_settings.folder);
    m_profile->setPersistentCookiesPolicy(QWebEngineProfile::NoPersistentCookies); // each run starts signed out
    m_profile->setHttpCacheType(QWebEngineProfile::MemoryHttpCache); // no copy of an invoice stays on the disk
    m_profile->settings()->setAttribute(QWebEngineSettings::AutoLoadImages, false); // only text is read
    m_profile->settings()->setAttribute(QWebEngineSettings::AutoLoadIconsForPage, false);
    if (m_settings.reach == Reach::loopbackOnly)
        m_profile->setUrlRequestInterceptor(new LoopbackGuard(m_profile.get()));
    return *m_profile;
}

WebEngineSession::Page &WebEngineSession::page()
{
    if (m_page)
        return *m_page;
    m_page = std::make_unique<Page>(&profile(), m_delegate);
    QObject::connect(m_page.get(), &QWebEnginePage::loadFinished, m_page.get(), [this] {
        m_loadLimit.stop();
        if (m_delegate.onFinished)
            m_delegate.onFinished(m_page->url());
    });
    QObject::connect(m_page.get(), &QWebEnginePage::renderProcessTerminated, m_page.get(),
                     [this](QWebEnginePage::RenderProcessTerminationStatus status) {
                         m_crashed = m_crashed || status != QWebEnginePage::NormalTerminationStatus;
                     });
    return *m_page;
}

void WebEngineSession::load(const QUrl &url, std::chrono::milliseconds timeout)
{
    if (std::exchange(m_stuck, false))
        m_page.reset(); // a page whose script never returns would block the next page
    Page &target = page();
    m_crashed = false;
    target.runJavaScript(leavingMark, ourWorld);
    QWebEngineHttpRequest request(url);
    request.setHeader("Cache-Control", "no-cache"); // load the current page, not a cached copy
    target.load(request);
    m_loadLimit.start(timeout);
}

Task<QVariant> WebEngineSession::evaluate(QString expression)
{
    if (!m_page || m_crashed)
        co_return QVariant();
    const auto answer = std::make_shared<Answer>();
    m_page->runJavaScript(u"window.__leaving ? null : ("_s + expression + u"\n)"_s, ourWorld,
                          [answer, listening = std::weak_ptr(m_listening)](const QVariant &value) {
                              if (!listening.expired())
                                  answer->settle(value);
                          });
    const auto giveUp = [this, answer, asked = m_page.get(), listening = std::weak_ptr(m_listening)] {
        if (answer->settled || listening.expired())
            return;
        m_stuck = m_stuck || asked == m_page.get();
        answer->settle({});
    };
    QTimer::singleShot(m_settings.answerLimit, m_page.get(), giveUp);
    co_return co_await Answered{answer};
}

void WebEngineSession::clear()
{
    m_loadLimit.stop();
    m_crashed = false;
    if (!m_page)
        return;
    // Delete the page once it has cleared its storage; the next page starts fresh.
    m_page->disconnect();
    m_page->triggerAction(QWebEnginePage::Stop);
    m_former = std::move(m_page);
    m_former->runJavaScript(u"localStorage.clear(); sessionStorage.clear()"_s, ourWorld, [this](const QVariant &) {
        QTimer::singleShot(0, &m_loadLimit, [this] { m_former.reset(); }); // not inside the page's own callback
    });
    m_profile->cookieStore()->deleteAllCookies();
    m_profile->clearAllVisitedLinks();
}

} // namespace parcelory
