#include "practice/carrier/PracticeCarrier.h"

#include "core/JsonFile.h"
#include "practice/LoopbackServer.h"
#include "practice/carrier/PracticeAnswers.h"
#include "practice/carrier/PracticeArchive.h"
#include "practice/carrier/PracticeHistory.h"
#include "practice/carrier/PracticeLedger.h"
#include "practice/carrier/PracticeRoutes.h"

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <utility>

namespace parcelory {

namespace {

QByteArray headerOf(const httplib::Request &request, const char *name)
{
    return QByteArray::fromStdString(request.get_header_value(name));
}

void send(const CarrierAnswer &answer, httplib::Response &response, LoopbackServer &server)
{
    response.status = answer.status;
    if (!answer.rateLimitReset.isEmpty())
        response.set_header("X-RateLimit-Reset", answer.rateLimitReset.toStdString());
    if (answer.flow != AnswerFlow::whole) {
        static constexpr auto pace = std::chrono::milliseconds(20);
        const bool isSlow = answer.flow == AnswerFlow::trickle;
        response.set_chunked_content_provider(
            answer.contentType.toStdString(),
            [isSlow, &server, block = std::string(isSlow ? 1 : 1 << 20, ' ')](size_t, httplib::DataSink &sink) {
                return sink.write(block.data(), block.size()) && (!isSlow || server.pause(pace));
            });
        return;
    }
    if (!answer.brokenOff) {
        response.set_content(answer.body.toStdString(), answer.contentType.toStdString());
        return;
    }
    const auto half = [bytes = answer.body.left(answer.body.size() / 2)](size_t, size_t, httplib::DataSink &sink) {
        sink.write(bytes.constData(), size_t(bytes.size()));
        return false;
    };
    response.set_content_provider(size_t(answer.body.size()), answer.contentType.toStdString(), half);
}

} // namespace

class PracticeCarrier::Impl {
public:
    Impl();
    ~Impl() { setScenario({}); } // the server waits for the answers that are held

    mutable std::mutex mutex; ///< guards everything below
    CarrierScenario scenario;
    int listReads = 0;
    QList<Request> received;
    PracticeLedger test, live;
    std::unique_ptr<JsonFile> file; ///< null: nothing is kept

    PracticeLedger *ledgerOf(const QByteArray &authorization);
    void setScenario(CarrierScenario next);
    /// Stores what was sold, if it is to be kept.
    void keep() const
    {
        if (file)
            file->write(archived(test, live));
    }

private:
    void serve(const httplib::Request &message, httplib::Response &response);
    std::optional<CarrierAnswer> misfortune(const CarrierRequest &request);
    CarrierAnswer download(const CarrierRequest &request, const QByteArray &authorization);
    CarrierAnswer apiAnswer(const CarrierRequest &request, const QByteArray &authorization);

    std::condition_variable m_scenarioChanged;
    LoopbackServer m_server{"practice carrier"}; // declared last: its handlers use the other members until it stops
};

PracticeCarrier::Impl::Impl()
{
    live.test = false;
    test.base = live.base = m_server.base();
    m_server.start([this](const httplib::Request &message, httplib::Response &response) { serve(message, response); });
}

PracticeLedger *PracticeCarrier::Impl::ledgerOf(const QByteArray &authorization)
{
    if (authorization == "ShippoToken " + testToken.toUtf8())
        return &test;
    return authorization == "ShippoToken " + liveToken.toUtf8() ? &live : nullptr;
}

void PracticeCarrier::Impl::setScenario(CarrierScenario next)
{
    {
        const std::lock_guard lock(mutex);
        scenario = std::move(next);
        listReads = 0;
    }
    m_scenarioChanged.notify_all();
}

void PracticeCarrier::Impl::serve(const httplib::Request &message, httplib::Response &response)
{
    const QByteArray target = QByteArray::fromStdString(message.target);
    const CarrierRequest request = {.method = QByteArray::fromStdString(message.method),
                                    .target = QUrl::fromEncoded("http://carrier" + target),
                                    .body = QByteArray::fromStdString(message.body)};
    const QByteArray authorization = headerOf(message, "Authorization");
    std::unique_lock lock(mutex);
    const bool isDropped =
        scenario.dropConnection ||
        (!scenario.droppedPath.isEmpty() && request.target.path().mid(1).toUtf8().startsWith(scenario.droppedPath));
    const std::chrono::milliseconds delay = scenario.answerDelay;
    CarrierAnswer answer;
    if (auto instead = misfortune(request))
        answer = *std::move(instead);
    else if (const QString path = request.target.path();
             path.startsWith(u"/labels/") || path.startsWith(u"/documents/"))
        answer = download(request, authorization);
    else
        answer = apiAnswer(request, authorization);
    received.append({request.method, target, authorization, headerOf(message, "Content-Type"), request.body,
                     isDropped ? 0 : answer.status});
    if (request.method == "POST" && request.keepsRecords())
        keep();
    m_scenarioChanged.wait(lock, [this] { return !scenario.holdsAnswers; });
    lock.unlock();
    m_server.pause(delay);
    if (isDropped)
        m_server.hangUp(message);
    else
        send(answer, response, m_server);
}

/// The scenario's error response that replaces the regular response, if any.
std::optional<CarrierAnswer> PracticeCarrier::Impl::misfortune(const CarrierRequest &request)
{
    auto &failure = scenario.failNext;
    if (failure && failure->count > 0 && request.target.path().mid(1).toUtf8().startsWith(failure->pathPrefix) &&
        (failure->method.isEmpty() || failure->method == request.method)) {
        if (failure->after-- > 0)
            return std::nullopt;
        --failure->count;
        return CarrierAnswer{.status = failure->status,
                             .body = failure->body,
                             .contentType = failure->contentType,
                             .flow = failure->flow};
    }
    if (scenario.rateLimitAfterListReads && request.readsList() && ++listReads > *scenario.rateLimitAfterListReads) {
        constexpr int secondsToWait = 60;
        return CarrierAnswer{.status = 429,
                             .body = "Too many requests. Please slow down.",
                             .contentType = "text/plain",
                             .rateLimitReset = QByteArray::number(QDateTime::currentSecsSinceEpoch() + secondsToWait)};
    }
    return std::nullopt;
}

CarrierAnswer PracticeCarrier::Impl::download(const CarrierRequest &request, const QByteArray &authorization)
{
    // The link is signed; a token sent with it would be leaked.
    if (!authorization.isEmpty())
        return fileRefusal(400, "InvalidArgument", "Only one auth mechanism allowed");
    if (request.method != "GET")
        return fileRefusal(405, "MethodNotAllowed", "The method is not allowed against this resource.");
    for (const PracticeLedger *ledger : {&test, &live}) {
        if (auto file = fileFor(request, *ledger, scenario))
            return *std::move(file);
    }
    return fileRefusal(403, "AccessDenied", "Access Denied");
}

CarrierAnswer PracticeCarrier::Impl::apiAnswer(const CarrierRequest &request, const QByteArray &authorization)
{
    if (authorization.isEmpty())
        return detailAnswer(401, "Authentication credentials were not provided.");
    if (!scenario.badToken.isEmpty())
        return detailAnswer(401, scenario.badToken.toStdString());
    PracticeLedger *ledger = ledgerOf(authorization);
    if (!ledger)
        return detailAnswer(401, "Token does not exist");
    if (scenario.repeatsPurchases && request.method == "POST" && request.path().value(0) == u"transactions")
        answerTo(request, *ledger, scenario);
    return answerTo(request, *ledger, scenario);
}

PracticeCarrier::PracticeCarrier() : m_impl(std::make_unique<Impl>()) {}

PracticeCarrier::~PracticeCarrier() = default;

QUrl PracticeCarrier::baseUrl() const
{
    return QUrl(QString::fromStdString(m_impl->test.base));
}

void PracticeCarrier::keepIn(const QString &path)
{
    const std::lock_guard lock(m_impl->mutex);
    m_impl->file = std::make_unique<JsonFile>(path);
    if (const std::optional<QByteArray> archive = m_impl->file->read())
        restoreArchive(*archive, m_impl->test, m_impl->live);
}

void PracticeCarrier::setScenario(CarrierScenario scenario)
{
    m_impl->setScenario(std::move(scenario));
}

QList<PracticeCarrier::Request> PracticeCarrier::requests() const
{
    const std::lock_guard lock(m_impl->mutex);
    return m_impl->received;
}

void PracticeCarrier::clearRequests()
{
    const std::lock_guard lock(m_impl->mutex);
    m_impl->received.clear();
}

void PracticeCarrier::seedHistory(int labels, const QDateTime &newest, std::chrono::seconds step, const QString &token)
{
    const std::lock_guard lock(m_impl->mutex);
    PracticeLedger *ledger = m_impl->ledgerOf("ShippoToken " + token.toUtf8());
    if (!ledger)
        throw std::invalid_argument("The practice carrier knows no account of this token.");
    addHistory(*ledger, labels, newest, step);
}

PracticeSold PracticeCarrier::seedSale(const PracticeSale &sale)
{
    const std::lock_guard lock(m_impl->mutex);
    PracticeSold sold = addSale(m_impl->test, sale);
    m_impl->keep();
    return sold;
}

} // namespace parcelory
