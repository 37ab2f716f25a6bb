#include "platform/NetworkTransport.h"

#include "core/AppError.h"
#include "core/ErrorDetail.h"
#include "core/Task.h"
#include "core/ports/Clock.h"
#include "core/ports/HttpTransport.h"

#include <QCoroNetworkReply>
#include <QHostAddress>
#include <QIODevice>
#include <QNetworkReply>
#include <QScopeGuard>

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// A request body that can be read only once. QNetworkAccessManager resends a request if the connection is lost before
/// the response, which would buy a label twice; a body that cannot be rewound makes the request fail instead.
class OneTimeBody : public QIODevice {
public:
    explicit OneTimeBody(QByteArray bytes) : m_bytes(std::move(bytes)) { open(ReadOnly | Unbuffered); }

    qint64 size() const override { return m_bytes.size(); }
    bool reset() override { return m_read == 0; }
    bool seek(qint64 to) override { return to == m_read && QIODevice::seek(to); }
    bool atEnd() const override { return m_read == m_bytes.size(); }
    qint64 bytesAvailable() const override { return m_bytes.size() - m_read; }

protected:
    qint64 readData(char *data, qint64 most) override
    {
        const qint64 count = std::min(most, qint64(m_bytes.size()) - m_read);
        std::copy_n(m_bytes.constData() + m_read, count, data);
        m_read += count;
        return count > 0 || most == 0 ? count : -1;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray m_bytes;
    qint64 m_read = 0;
};

QNetworkRequest networkRequest(const HttpRequest &request, NetworkTransport::Reach reach)
{
    QNetworkRequest message(request.url);
    if (!request.body.isEmpty())
        message.setHeader(QNetworkRequest::ContentLengthHeader, request.body.size());
    for (const auto &[name, value] : request.headers)
        message.setRawHeader(name, value);
    // A redirect to another host would carry the token along, or lead the practice desk outside.
    const bool authorised = std::ranges::any_of(request.headers, [](const auto &header) {
        return header.first.compare("Authorization", Qt::CaseInsensitive) == 0;
    });
    const bool stay = authorised || reach == NetworkTransport::Reach::loopbackOnly;
    const auto followed = stay ? QNetworkRequest::SameOriginRedirectPolicy : QNetworkRequest::NoLessSafeRedirectPolicy;
    message.setAttribute(QNetworkRequest::RedirectPolicyAttribute, request.redirects == HttpRequest::Redirects::follow
                                                                       ? followed
                                                                       : QNetworkRequest::ManualRedirectPolicy);
    // Requests share no cookies.
    message.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    message.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    return message;
}

/// Suggests a retry only if the request was not sent, because a retry could otherwise buy a label twice.
const QString notReached = u"The carrier can't be reached — check the network and try again."_s;
const QString noAnswer = u"No answer from the carrier — check the network."_s;

/// For the error log: names the host, but not the full address, headers or body.
QString hostAndReason(const QNetworkReply &reply, const HttpRequest &request)
{
    return request.url.host() + u": "_s + reply.errorString();
}

QString lateText(const HttpRequest &request)
{
    return u"No answer from the carrier within %1 seconds — check the network."_s.arg(request.timeout.count() / 1000);
}

QString tooLongText(const HttpRequest &request)
{
    return u"The answer of %1 is too large (more than %2 MB) — ask support."_s.arg(request.url.host())
        .arg(request.mostBytes / (1024 * 1024));
}

[[noreturn]] void throwFailure(const QNetworkReply &reply, const HttpRequest &request)
{
    constexpr QNetworkReply::NetworkError beforeSending[] = {QNetworkReply::HostNotFoundError,
                                                             QNetworkReply::ConnectionRefusedError,
                                                             QNetworkReply::SslHandshakeFailedError};
    const bool isSent = std::ranges::find(beforeSending, reply.error()) == std::end(beforeSending);
    if (!isSent)
        throw Detailed<NotSent>(notReached, hostAndReason(reply, request));
    throw Detailed<AppError>(noAnswer, hostAndReason(reply, request));
}

} // namespace

NetworkTransport::NetworkTransport(Reach reach, Clock &clock) : m_reach(reach), m_clock(clock) {}

Task<HttpAnswer> NetworkTransport::send(HttpRequest request)
{
    if (m_reach == Reach::loopbackOnly && !QHostAddress(request.url.host()).isLoopback())
        throw AppError(u"The practice desk does not connect to %1."_s.arg(request.url.host()));
    const QNetworkRequest message = networkRequest(request, m_reach);
    const auto start = [&] {
        if (request.method == "HEAD")
            return m_manager.head(message); // sendCustomRequest() would wait for a body that never comes
        if (request.body.isEmpty())
            return m_manager.sendCustomRequest(message, request.method);
        // The network's thread may still ask for the body until the reply is deleted, which is after this function.
        auto body = std::make_unique<OneTimeBody>(request.body);
        QNetworkReply *sent = m_manager.sendCustomRequest(message, request.method, body.get());
        body.release()->setParent(sent);
        return sent;
    };
    const std::unique_ptr<QNetworkReply, QScopedPointerDeleteLater> reply(start());
    reply->setReadBufferSize(request.mostBytes +
                             1); // the network's thread would take gigabytes while this thread is busy
    bool isLate = false;
    const quint64 deadline = m_clock.after(request.timeout, [&isLate, pending = reply.get()] {
        isLate = true;
        pending->abort();
    });
    const auto isOver = qScopeGuard([this, deadline] { m_clock.cancel(deadline); });
    QByteArray received;
    QObject::connect(reply.get(), &QIODevice::readyRead, reply.get(),
                     [&received, pending = reply.get(), most = request.mostBytes] {
                         received += pending->readAll();
                         if (received.size() > most)
                             pending->abort();
                     });
    co_await reply.get();
    if (reply->isOpen()) // abort() closes it
        received += reply->readAll();
    if (isLate)
        throw Detailed<AppError>(lateText(request), request.url.host());
    if (received.size() > request.mostBytes)
        throw AppError(tooLongText(request));
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    // A connection that breaks during the response has a status, too. A 4xx or 5xx status is a complete response.
    if (status == 0 || (reply->error() != QNetworkReply::NoError && status < 400))
        throwFailure(*reply, request);
    co_return HttpAnswer{status, received, reply->rawHeaderPairs()};
}

} // namespace parcelory
