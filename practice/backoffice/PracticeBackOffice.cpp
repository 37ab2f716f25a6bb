#include "practice/backoffice/PracticeBackOffice.h"

#include "practice/LoopbackServer.h"
#include "practice/backoffice/BackOfficePages.h"
#include "practice/backoffice/BackOfficeScenario.h"
#include "practice/backoffice/PracticeInvoices.h"

#include <QHash>
#include <QUuid>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <mutex>
#include <string>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr auto sessionCookie = "deskline_session=";
constexpr auto signInPath = "/staff/login.php";
constexpr auto dashboardPath = "/staff/dashboard.php";

struct Answer {
    int status = 200;
    QString body = {};
    std::string location = {};
    QList<QByteArray> cookies = {};
};

Answer redirect(const std::string &location)
{
    return {.status = 302, .location = location};
}

QByteArray cookiesOf(const httplib::Request &message)
{
    return QByteArray::fromStdString(message.get_header_value("Cookie"));
}

QString parameterOf(const httplib::Request &message, const char *name)
{
    return QString::fromStdString(message.get_param_value(name));
}

/// The session id in the client's cookies; empty without such a cookie.
QByteArray sessionOf(const httplib::Request &message)
{
    for (const QByteArray &cookie : cookiesOf(message).split(';')) {
        if (cookie.trimmed().startsWith(sessionCookie))
            return cookie.trimmed().mid(qsizetype(qstrlen(sessionCookie)));
    }
    return {};
}

} // namespace

class PracticeBackOffice::Impl {
public:
    Impl();

    mutable std::mutex mutex; ///< guards everything below
    BackOfficeScenario scenario;
    QString password = PracticeBackOffice::password;
    QHash<QByteArray, QString> sessions; ///< user name by session id
    QList<Request> received;

    QUrl baseUrl() const { return QUrl(QString::fromStdString(m_server.base())); }

private:
    void serve(const httplib::Request &message, httplib::Response &response);
    Answer answerTo(const httplib::Request &message);
    Answer signIn(const httplib::Request &message);
    Answer signOut(const httplib::Request &message);
    Answer invoice(const QString &number) const;
    Answer customer(const QString &number) const;
    void sendHalf(const std::string &html, const httplib::Request &message, httplib::Response &response);

    const QList<PracticeInvoice> m_invoices = practiceInvoices();
    LoopbackServer m_server{"practice back office"}; // declared last: its handlers use the other members until it stops
};

PracticeBackOffice::Impl::Impl()
{
    m_server.start([this](const httplib::Request &message, httplib::Response &response) { serve(message, response); });
}

void PracticeBackOffice::Impl::serve(const httplib::Request &message, httplib::Response &response)
{
    std::unique_lock lock(mutex);
    const BackOfficeScenario now = scenario;
    const Answer answer = now.unreachable ? Answer{.status = 0} : answerTo(message);
    received.append({QByteArray::fromStdString(message.method), QByteArray::fromStdString(message.target),
                     QByteArray::fromStdString(message.body), cookiesOf(message), answer.status});
    lock.unlock();
    if (now.unreachable) {
        m_server.hangUp(message);
        return;
    }
    if (message.method != "HEAD")
        m_server.pause(now.answerDelay);
    response.status = answer.status;
    for (const QByteArray &cookie : answer.cookies)
        response.set_header("Set-Cookie", cookie.toStdString());
    if (!answer.location.empty())
        response.set_redirect(answer.location, answer.status);
    else if (now.neverFinishes && message.method == "GET")
        sendHalf(answer.body.toStdString(), message, response);
    else
        response.set_content(answer.body.toStdString(), "text/html; charset=utf-8");
}

/// Sends the first half of `html` at once and the rest when `neverFinishes` is cleared.
void PracticeBackOffice::Impl::sendHalf(const std::string &html, const httplib::Request &message,
                                        httplib::Response &response)
{
    const auto provider = [this, html, half = html.size() / 2, &message](size_t sent, size_t left,
                                                                         httplib::DataSink &sink) {
        if (sent < half)
            return sink.write(html.data() + sent, half - sent);
        // The server calls again while nothing is written. A client that has disconnected must not hold its thread.
        if (!m_server.pause(std::chrono::milliseconds(20)) || m_server.isAbandoned(message))
            return false;
        const std::lock_guard lock(mutex);
        return scenario.neverFinishes || sink.write(html.data() + sent, left);
    };
    response.set_content_provider(html.size(), "text/html; charset=utf-8", provider);
}

Answer PracticeBackOffice::Impl::answerTo(const httplib::Request &message)
{
    const std::string &path = message.path;
    const bool reads = message.method == "GET" || message.method == "HEAD";
    if (path == signInPath && message.method == "POST")
        return signIn(message);
    if (path == signInPath && reads)
        return {.body = signInPage(scenario.loginPage, false)};
    if (path == "/staff/logout.php" && reads)
        return signOut(message);
    const bool isInvoice = path == "/staff/buyers.php" && parameterOf(message, "subcmd") == u"_detail_invoice";
    const bool isCustomer = path == "/staff/users.php" && parameterOf(message, "subcmd") == u"_update-customer";
    if (!reads || (path != dashboardPath && !isInvoice && !isCustomer))
        return {.status = 404, .body = messagePage(u"The page was not found."_s)};
    const auto session = sessions.constFind(sessionOf(message));
    if (session == sessions.cend())
        return redirect(signInPath);
    if (isInvoice)
        return invoice(parameterOf(message, "id"));
    return isCustomer ? customer(parameterOf(message, "id")) : Answer{.body = dashboardPage(*session, m_invoices)};
}

Answer PracticeBackOffice::Impl::signIn(const httplib::Request &message)
{
    const QString name = parameterOf(message, "user");
    if (name.isEmpty() || parameterOf(message, "password") != password)
        return {.body = signInPage(scenario.loginPage, true)};
    const QByteArray session = QUuid::createUuid().toByteArray(QUuid::Id128);
    sessions.insert(session, name);
    Answer answer = redirect(dashboardPath);
    answer.cookies = {sessionCookie + session + "; Path=/; HttpOnly",
                      "deskline_device=practice; Max-Age=31536000; Path=/; HttpOnly"};
    return answer;
}

Answer PracticeBackOffice::Impl::signOut(const httplib::Request &message)
{
    sessions.remove(sessionOf(message));
    return redirect(signInPath);
}

Answer PracticeBackOffice::Impl::invoice(const QString &number) const
{
    if (scenario.status != 200)
        return {.status = scenario.status, .body = messagePage(u"The server met an error."_s)};
    const auto found = std::ranges::find(
        m_invoices, number, [](const PracticeInvoice &invoice) { return QString::number(invoice.number); });
    if (found == m_invoices.cend())
        return {.body = messagePage(u"Invoice %1 was not found."_s.arg(number))};
    return {.body = invoicePage(*found, scenario.hangsScript)};
}

Answer PracticeBackOffice::Impl::customer(const QString &number) const
{
    const auto found = std::ranges::find_if(m_invoices, [&](const PracticeInvoice &invoice) {
        return invoice.customer > 0 && QString::number(invoice.customer) == number;
    });
    if (found == m_invoices.cend())
        return {.body = messagePage(u"Customer %1 was not found."_s.arg(number))};
    return {.body = customerPage(*found, !scenario.noCompanyField)};
}

PracticeBackOffice::PracticeBackOffice() : m_impl(std::make_unique<Impl>()) {}

PracticeBackOffice::~PracticeBackOffice() = default;

QUrl PracticeBackOffice::baseUrl() const
{
    return m_impl->baseUrl();
}

void PracticeBackOffice::setScenario(BackOfficeScenario scenario)
{
    const std::lock_guard lock(m_impl->mutex);
    m_impl->scenario = scenario;
}

void PracticeBackOffice::setPassword(const QString &password)
{
    const std::lock_guard lock(m_impl->mutex);
    m_impl->password = password;
}

void PracticeBackOffice::endSessions()
{
    const std::lock_guard lock(m_impl->mutex);
    m_impl->sessions.clear();
}

QList<PracticeBackOffice::Request> PracticeBackOffice::requests() const
{
    const std::lock_guard lock(m_impl->mutex);
    return m_impl->received;
}

void PracticeBackOffice::clearRequests()
{
    const std::lock_guard lock(m_impl->mutex);
    m_impl->received.clear();
}

} // namespace parcelory
