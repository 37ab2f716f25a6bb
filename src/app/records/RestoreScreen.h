#pragma once

#include "app/records/RestoreRecords.h"
#include "app/records/RestoreReview.h"
#include "core/Observable.h"
#include "core/Task.h"
#include "core/ports/Clock.h"

#include <functional>

namespace parcelory {

/// The question whether to restore a copy of the records, and the restore.
class RestoreScreen : public Observable {
    Q_OBJECT
public:
    explicit RestoreScreen(AppState &app);
    ~RestoreScreen() override;

    Observed<bool> looking{this, false}; ///< reads what the copy and the present records hold
    Observed<RestoreReview> review{this};
    Observed<bool> running{this, false};
    Observed<double> progress{this, 0};                               ///< of the restore
    Observed<bool> logDamaged{this, false}, bookDamaged{this, false}; ///< as the start found them

    /// What keeps records from being replaced now, as a sentence; set once, by the owner of all screens.
    std::function<QString()> obstacle = [] { return QString(); };

    Clock &clock() const { return m_app.platform.clock; }
    bool isDamaged() const { return logDamaged || bookDamaged; }
    bool canRestore() const;
    /// Asks about a copy: reads it, and asks the carrier's account for labels that neither log knows.
    Task<> open(RecordCopy copy);
    /// Forgets the question.
    void close();
    Task<> restore();
    /// Call after another program has restored a copy: the answer to an open question would be about the former log.
    void takeReplacedRecords();

signals:
    /// A question is to be shown.
    void opened();
    /// The question is answered.
    void finished(const RestoreOutcome &outcome);

private:
    Task<> askAccount(RestoreReview seen);
    Task<> fetchLabels();

    AppState &m_app;
    int m_asks = 0;      ///< counts questions, so that a late answer goes to no other question
    quint64 m_timer = 0; ///< ends the wait for the account
};

} // namespace parcelory
