#pragma once

#include "app/AppState.h"
#include "app/settings/KeysScreen.h"
#include "core/Observable.h"
#include "core/Task.h"
#include "records/TrackingPlan.h"

#include <QDateTime>

#include <optional>
#include <vector>

namespace parcelory {

/// Asks the carrier in the background where the parcels of the last 30 days are. One question at a time, as
/// TrackingPlan allows; stops while there is no live key, while the carrier refuses the key, and while the switch is
/// off. Lives as long as AppState.
class TrackingWatch : public Observable {
    Q_OBJECT
public:
    TrackingWatch(AppState &app, KeysScreen &keys);
    ~TrackingWatch() override;

    Observed<bool> isOn{this, true};                      ///< the switch in Settings; stored at once
    Observed<int> left{this, 0};                          ///< labels that are still asked about in this round
    Observed<int> followed{this, 0};                      ///< labels on their way
    Observed<std::optional<QDateTime>> askedAt{this};     ///< end of the last round
    Observed<std::optional<QDateTime>> pausedUntil{this}; ///< the carrier wants no question before this steady time

    /// What the clerk reads about it: "Tracking asked at 3:50 PM for 58 labels that are on their way."
    QString text() const;

    /// Reads the log and asks. From then on it goes on by itself.
    Task<> start();
    /// Reads the log again before the next question: its labels have changed.
    void planAgain();
    /// Asks no further question.
    void stop();
    /// A question is on its way.
    bool isAsking() const { return m_isAsking; }

signals:
    /// The carrier has told something new about a label.
    void learned();

private:
    /// How a question ended.
    enum class Outcome {
        told,
        busy,        ///< the carrier wants a pause, or the key has changed meanwhile
        refused,     ///< because of the key
        unclear,     ///< the response says nothing about the label
        unreachable, ///< nor can the next question be answered
    };

    bool mayAsk() const { return isOn && m_keys.mode == PostageMode::live; } ///< TEST labels do not move
    Task<> plan();
    Task<> askNext();
    Task<Outcome> ask(OpenFacts label);
    void wait();
    void endRound();
    void wake(Clock::Duration delay);

    AppState &m_app;
    KeysScreen &m_keys;
    TrackingPlan m_plan;
    bool m_isStarted = false;
    bool m_isAsking = false;
    bool m_isRefused = false; ///< by the carrier, because of the key
    bool m_isInRound = false;
    bool m_hasDelivered = false; ///< the log shows a status that is out of date
    bool m_isPlanned = false;    ///< else the labels are to be read again
    bool m_isUnread = false;     ///< the log could not be read last time
    int m_changes = 0;           ///< of the key and the switch
    quint64 m_timer = 0;
    std::vector<QPropertyNotifier> m_watches;
};

} // namespace parcelory
