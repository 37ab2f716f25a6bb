#pragma once

#include "app/AppState.h"
#include "app/records/RestoreScreen.h"
#include "core/Observable.h"
#include "core/Progress.h"
#include "core/StatusKind.h"
#include "core/Task.h"
#include "records/LogChain.h"
#include "records/RecordCopies.h"

#include <QDateTime>

#include <optional>

namespace parcelory {

/// The Records page: copies of the records, and whether the mailing log is as it was bought.
class RecordsScreen : public Observable {
    Q_OBJECT
public:
    explicit RecordsScreen(AppState &app);
    ~RecordsScreen() override;

    Observed<QList<RecordCopy>> copies{this}; ///< newest first
    Observed<QString> folder{this};           ///< where the copies go
    Observed<bool> copying{this, false};
    Observed<QString> message{this}; ///< why the last copy or the chosen folder failed; otherwise empty

    Observed<QString> selected{this}; ///< the folder of the chosen copy
    Observed<QString> restored{this}; ///< what the last restore did, as a sentence
    RestoreScreen restore;

    Observed<bool> verifying{this, false};
    Observed<double> verified{this, 0};                     ///< share of the log, while verifying
    Observed<std::optional<LogChain::Report>> report{this}; ///< of the last complete comparison
    Observed<QDateTime> verifiedAt{this};
    Observed<QString> verifyFailure{this}; ///< why the log could not be compared; otherwise empty

    /// The newest copy that passed its check.
    std::optional<RecordCopy> lastGood() const;
    /// When that copy was made.
    std::optional<QDateTime> lastGoodCopy() const;
    std::optional<RecordCopy> selectedCopy() const;
    /// True if the chosen copy can be restored.
    bool canRestore() const;
    Task<> openRestore();
    /// "The mailing log is damaged — restore a copy."; usually empty.
    QString damageText() const;
    /// At the start: looks for damage of the log and the address book and tells it, without the folder of the copies.
    /// True if there is any.
    Task<bool> lookForDamage();
    /// Then: if the records are damaged or the log has lost all its rows, chooses the newest good copy. True if the
    /// clerk can restore it. Without a copy, the damage is no longer shown on this page. Waits for the folder of the
    /// copies, as long as that takes.
    Task<bool> offerCopy();
    /// Call after another program has restored a copy.
    void takeReplacedRecords();
    /// "Last good copy 9 hours ago", "No copy yet."
    QString ageText() const;
    /// Until when the records are safe: the time of the newest good copy or, without a copy, of the oldest shown
    /// label.
    std::optional<QDateTime> safeUntil() const;
    /// True if that was more than three days ago.
    bool isLate() const;

    /// At the start: seals and indexes rows of an older log, lists the copies, and makes the copy of the day. From then
    /// on, the first change of the mailing log on a day makes the copy of that day; without one it is made a day after
    /// the last, and tried again an hour after a failure.
    Task<> start();
    Task<> copyNow(CopyReason reason = CopyReason::byHand);
    Task<> chooseFolder();
    Task<> openFolder();
    Task<> verify();
    void cancelVerifying() { m_verifying.cancel(); }
    /// Ends all work in progress.
    void cancel();

signals:
    /// The clerk should see this page.
    void attentionWanted();
    /// The records are those of another day now.
    void recordsReplaced();

private:
    void tellDamage(const QString &detail);
    void takeRestore(const RestoreOutcome &outcome);
    Task<> copyDaily();
    Task<> copyIfDue();
    void waitForNextCopy();
    std::optional<QDateTime> copyOfToday() const;
    QList<RecordCopy> ownCopies() const;
    Task<> list();
    Task<> prepareLog();

    AppState &m_app;
    CancelToken m_cancel;    ///< of the work of the whole run
    CancelToken m_verifying; ///< of the comparison
    QString m_logId;         ///< of the present log when the copies were listed; empty if it had none
    QPropertyNotifier m_listWatch;
    quint64 m_nextCopy = 0; ///< the timer of the next daily copy
    QDateTime m_triedAt;    ///< the steady time of the last daily copy, which may have failed
    int m_lists = 0;        ///< how often the copies were listed
    int m_shownList = 0;    ///< which of these lists is shown
};

} // namespace parcelory
