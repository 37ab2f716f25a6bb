#include "app/openitems/TrackingWatch.h"

#include "app/logs/CarrierJourney.h"
#include "carrier/ShippoError.h"
#include "core/AppError.h"
#include "core/SettingsKeys.h"
#include "core/StaleCheck.h"
#include "core/Task.h"
#include "core/ports/Preferences.h"
#include "records/OpenItems.h"
#include "records/TrackingPlan.h"

#include <QLocale>

#include <algorithm>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto usualPause = 60s;   ///< after a refusal for too many questions that names no time
constexpr auto retryPause = 10min; ///< if the carrier cannot be reached or the log cannot be read
constexpr auto labelPause = 1h;    ///< until the next question about a label without an answer
constexpr auto longestPause = 24h;

QString timeText(const QDateTime &time)
{
    return QLocale(QLocale::English, QLocale::UnitedStates).toString(time.time(), u"h:mm AP"_s);
}

} // namespace

TrackingWatch::TrackingWatch(AppState &app, KeysScreen &keys) : m_app(app), m_keys(keys)
{
    buildOn(keys);
    isOn = read(app.platform.preferences, settings::asksForTracking);
    const auto again = [this] { planAgain(); };
    m_watches.push_back(isOn.addNotifier([this, again] {
        write(m_app.platform.preferences, settings::asksForTracking, isOn.value());
        again();
    }));
    m_watches.push_back(app.keyChanges.addNotifier(again));
    m_watches.push_back(keys.mode.addNotifier(again));
    connect(&app, &AppState::labelLogged, this, again);
}

TrackingWatch::~TrackingWatch()
{
    stop();
}

QString TrackingWatch::text() const
{
    if (!isOn)
        return u"Tracking is not asked — switched off in Settings."_s;
    if (!mayAsk())
        return u"Tracking is not asked without a live key."_s;
    if (pausedUntil.value()) {
        const Clock &clock = m_app.platform.clock;
        const QDateTime until = clock.now().addMSecs(clock.steadyNow().msecsTo(*pausedUntil.value()));
        return u"The carrier asks for a pause — going on at %1."_s.arg(timeText(until));
    }
    if (left > 0)
        return u"Asking for tracking — %1 left."_s.arg(left.value());
    if (!askedAt.value())
        return {};
    return (followed == 1 ? u"Tracking asked at %1 for %2 label that is on its way."_s
                          : u"Tracking asked at %1 for %2 labels that are on their way."_s)
        .arg(timeText(*askedAt.value()))
        .arg(followed.value());
}

Task<> TrackingWatch::start()
{
    m_isStarted = true;
    co_await askNext();
}

void TrackingWatch::stop()
{
    m_isStarted = false;
    m_app.platform.clock.cancel(m_timer);
}

void TrackingWatch::planAgain()
{
    ++m_changes;
    m_isRefused = false;
    m_isPlanned = false;
    wake(0ms);
}

void TrackingWatch::wake(Clock::Duration delay)
{
    if (!m_isStarted)
        return;
    m_app.platform.clock.cancel(m_timer);
    m_timer = m_app.platform.clock.after(delay, [this] { spawn([this] { return askNext(); }); });
}

/// Reads the labels from the log.
Task<> TrackingWatch::plan()
{
    const QDateTime now = m_app.platform.clock.now(), steady = m_app.platform.clock.steadyNow();
    m_isPlanned = true;
    m_isUnread = false;
    QList<OpenFacts> labels;
    if (mayAsk()) {
        const auto found = co_await onPool([&log = m_app.log, now] { return OpenItems::read(log, now); });
        m_isUnread = !found.isRead();
        if (m_isUnread) { // wait() tries again
            m_isPlanned = false;
            m_plan.setLabels({}, now, steady);
            co_return;
        }
        labels = *found;
    }
    m_plan.setLabels(labels, now, steady);
    followed = int(m_plan.size());
}

Task<> TrackingWatch::askNext()
{
    if (m_isAsking || !m_isStarted)
        co_return;
    m_isAsking = true;
    const QDateTime begin = m_app.platform.clock.steadyNow();
    if (pausedUntil.value() && *pausedUntil.value() <= begin)
        pausedUntil = std::nullopt;
    const auto isKeyChanged = staleCheck(m_app.keyChanges);
    if (!m_isPlanned)
        co_await plan();
    const auto isChanged = staleCheck(m_changes);
    const bool isSilent = m_isRefused || isKeyChanged() || !mayAsk();
    const std::optional<OpenFacts> label = isSilent ? std::nullopt : m_plan.next(m_app.platform.clock.steadyNow());
    Outcome outcome = Outcome::told;
    if (label) {
        m_isInRound = true;
        outcome = co_await ask(*label);
    }
    m_isAsking = false;
    if (!m_isStarted)
        co_return;
    if (outcome == Outcome::busy || outcome == Outcome::refused)
        m_plan.putBack(*label);
    if (outcome == Outcome::unclear || outcome == Outcome::unreachable)
        m_plan.putBack(*label, m_app.platform.clock.steadyNow().addSecs(std::chrono::seconds(labelPause).count()));
    if (outcome == Outcome::unreachable)
        m_plan.pauseUntil(m_app.platform.clock.steadyNow().addSecs(std::chrono::seconds(retryPause).count()));
    if (outcome == Outcome::refused)
        m_isRefused = !isChanged();
    wait();
}

Task<TrackingWatch::Outcome> TrackingWatch::ask(OpenFacts label)
{
    constexpr int forbidden = 403, notFound = 404;
    const auto isKeyChanged = staleCheck(m_app.keyChanges);
    ShippoTrackStatus answer; // tells nothing if the carrier does not know the number
    std::optional<Outcome> failure;
    try {
        answer = co_await m_app.shippo.track(carrierToken(label.label), label.label.tracking);
    } catch (const ShippoError &error) {
        if (error.isRateLimit()) {
            const QDateTime until = m_app.platform.clock.steadyNow().addSecs(
                error.wait().value_or(std::chrono::seconds(usualPause)).count());
            m_plan.pauseUntil(until);
            pausedUntil = until;
            failure = Outcome::busy;
        } else if (error.isKeyRefusal() || error.status() == forbidden || error.kind() == ShippoError::Kind::noToken) {
            failure = Outcome::refused;
        } else if (error.status() == 0 || error.status() >= 500) {
            failure = Outcome::unreachable;
        } else if (error.status() != notFound) {
            failure = Outcome::unclear;
        }
    } catch (const DecodeError &) {
        failure = Outcome::unclear;
    } catch (const AppError &) {
        failure = Outcome::unreachable;
    }
    if (failure)
        co_return *failure;
    if (isKeyChanged())
        co_return Outcome::busy; // the answer may belong to another account
    const QDateTime now = m_app.platform.clock.now();
    const Journey journey = journeyOf(answer, label.journey, now);
    const bool isStored = co_await onPool(
        [&app = m_app, label = label.label, answer, now] { return storeJourney(app, label, answer, now); });
    if (!isStored)
        co_return Outcome::unreachable; // a log that cannot be written makes asking useless
    const bool isNew = !label.journey || label.journey->status != journey.status ||
                       label.journey->isScanned != journey.isScanned || label.journey->movedAt != journey.movedAt;
    m_hasDelivered = m_hasDelivered || journey.status == TrackingStatus::delivered;
    if (isNew)
        emit learned();
    co_return Outcome::told;
}

/// Waits for the next question, or for the next round.
void TrackingWatch::wait()
{
    const QDateTime steady = m_app.platform.clock.steadyNow();
    left = m_isRefused ? 0 : int(m_plan.dueCount(steady));
    if (left == 0 && m_isInRound && !m_isRefused && !m_isUnread)
        endRound();
    const std::optional<QDateTime> next = m_isRefused ? std::nullopt : m_plan.nextAt();
    if (next)
        wake(std::clamp<Clock::Duration>(Clock::Duration(steady.msecsTo(*next)), 0ms, longestPause));
    else if (!m_isPlanned && !m_isRefused)
        wake(m_isUnread ? Clock::Duration(retryPause) : 0ms); // else something has changed meanwhile
}

void TrackingWatch::endRound()
{
    m_isInRound = false;
    m_isPlanned = false; // labels were bought, delivered and refunded meanwhile
    askedAt = m_app.platform.clock.now();
    if (std::exchange(m_hasDelivered, false))
        spawn([this]() -> Task<> { co_await onPool([&log = m_app.log] { return log.reload(); }); });
}

} // namespace parcelory
