#include "app/records/RecordsScreen.h"

#include "app/records/CopyRecords.h"
#include "app/records/RestoreTexts.h"
#include "core/AppError.h"
#include "core/Platform.h"
#include "core/SettingsKeys.h"
#include "core/ports/Clock.h"
#include "core/ports/Desktop.h"
#include "core/ports/Preferences.h"
#include "core/ports/Prompts.h"
#include "records/ShipmentRecord.h"
#include "shell/ErrorLog.h"

#include <QFileInfo>
#include <QScopeGuard>

#include <QPointer>

#include <algorithm>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto pauseAfterFailure = 1h, pauseAfterCopy = 24h;
constexpr qint64 lateSeconds = 3 * 24 * 3600;

QString agoText(qint64 seconds)
{
    const auto counted = [](qint64 count, const QString &unit) {
        return count == 1 ? u"1 %1 ago"_s.arg(unit) : u"%1 %2s ago"_s.arg(count).arg(unit);
    };
    const qint64 minutes = seconds / 60, hours = minutes / 60;
    if (minutes < 1)
        return u"just now"_s;
    if (hours < 1)
        return counted(minutes, u"minute"_s);
    return hours < 48 ? counted(hours, u"hour"_s) : counted(hours / 24, u"day"_s);
}

} // namespace

RecordsScreen::RecordsScreen(AppState &app)
    : restore(app), m_app(app), m_listWatch(app.copyCount.addNotifier([this] { spawn([this] { return list(); }); }))
{
    buildOn(restore);
    connect(&restore, &RestoreScreen::finished, this, &RecordsScreen::takeRestore);
    if (app.completedRestore)
        restored = RestoreTexts::outcomeOf(*app.completedRestore);
    folder = app.copies.folder().absolutePath();
}

RecordsScreen::~RecordsScreen()
{
    cancel();
}

std::optional<RecordCopy> RecordsScreen::lastGood() const
{
    for (const RecordCopy &copy : ownCopies()) {
        if (copy.isGood())
            return copy;
    }
    return std::nullopt;
}

/// Other desks may keep their copies in the same folder. A log that was lost has no id, so that each copy may be its
/// own.
QList<RecordCopy> RecordsScreen::ownCopies() const
{
    return m_logId.isEmpty() ? copies.value() : RecordCopies::ofLog(copies, m_logId);
}

std::optional<QDateTime> RecordsScreen::lastGoodCopy() const
{
    const std::optional<RecordCopy> last = lastGood();
    return last ? std::optional(last->madeAt) : std::nullopt;
}

std::optional<RecordCopy> RecordsScreen::selectedCopy() const
{
    const QList<RecordCopy> &all = copies.value();
    const auto found = std::ranges::find(all, selected.value(), &RecordCopy::folder);
    return found == all.end() ? std::nullopt : std::optional(*found);
}

bool RecordsScreen::canRestore() const
{
    const std::optional<RecordCopy> copy = selectedCopy();
    return copy && copy->isGood() && !copying && !restore.running;
}

Task<> RecordsScreen::openRestore()
{
    const std::optional<RecordCopy> copy = selectedCopy();
    if (!canRestore())
        co_return;
    if (const QString obstacle = restore.obstacle(); !obstacle.isEmpty()) {
        message = obstacle;
        co_return;
    }
    message = QString();
    co_await restore.open(*copy);
}

void RecordsScreen::takeRestore(const RestoreOutcome &outcome)
{
    using State = RestoreOutcome::State;
    message = outcome.failure;
    if (outcome.state == State::restored)
        restored = RestoreTexts::outcomeOf(outcome.note);
    if (outcome.state != State::unchanged) {
        report = std::nullopt; // it was about the former log
        verifyFailure = QString();
        emit recordsReplaced();
    }
    spawn([this] { return prepareLog(); });
}

QString RecordsScreen::damageText() const
{
    return restore.logDamaged    ? u"The mailing log is damaged — restore a copy."_s
           : restore.bookDamaged ? u"The address book is damaged — restore a copy."_s
                                 : QString();
}

void RecordsScreen::tellDamage(const QString &detail)
{
    m_app.errors.record(u"Records"_s, AppError(damageText() + (detail.isEmpty() ? QString() : u" ("_s + detail + u')')),
                        Popup::no);
    emit attentionWanted();
}

Task<bool> RecordsScreen::lookForDamage()
{
    const auto [log, book] =
        co_await onPool([&app = m_app] { return std::pair(app.log.damage(), app.addressBook.damage()); });
    restore.logDamaged = !log.isEmpty();
    restore.bookDamaged = !book.isEmpty();
    if (restore.isDamaged())
        tellDamage(log.isEmpty() ? book : log);
    co_return restore.isDamaged();
}

Task<bool> RecordsScreen::offerCopy()
{
    co_await list();
    const bool isEmpty = co_await onPool(m_app.log, &ShipmentLog::isEmpty);
    const std::optional<RecordCopy> last = lastGood();
    if (!last) {
        restore.logDamaged = false;
        restore.bookDamaged = false;
        co_return false;
    }
    // The program never deletes a row: a file that was emptied looks like a new one.
    if (isEmpty && last->labels > 0 && !restore.logDamaged) {
        restore.logDamaged = true;
        tellDamage({});
    }
    if (!restore.isDamaged())
        co_return false;
    selected = last->folder;
    co_return true;
}

void RecordsScreen::takeReplacedRecords()
{
    restore.takeReplacedRecords();
    report = std::nullopt; // it was about the former log
    verifyFailure = QString();
    spawn([this] { return list(); });
}

QString RecordsScreen::ageText() const
{
    const std::optional<RecordCopy> last = lastGood();
    return last ? u"Last good copy "_s + agoText(last->madeAt.secsTo(m_app.platform.clock.now())) : u"No copy yet."_s;
}

std::optional<QDateTime> RecordsScreen::safeUntil() const
{
    if (const std::optional<RecordCopy> last = lastGood())
        return last->madeAt;
    if (m_shownList == 0) // the copies are yet to be listed
        return std::nullopt;
    const QList<ShipmentRecord> labels = m_app.log.records();
    const auto oldest = std::ranges::min_element(labels, {}, &ShipmentRecord::createdAt);
    return oldest == labels.end() ? std::nullopt : std::optional(oldest->createdAt);
}

bool RecordsScreen::isLate() const
{
    const std::optional<QDateTime> safe = safeUntil();
    return safe && safe->secsTo(m_app.platform.clock.now()) > lateSeconds;
}

/// Gives a log of an older version, also one that was restored, what later versions added.
Task<> RecordsScreen::prepareLog()
{
    const QPointer alive(this);
    co_await list();
    if (!alive)
        co_return;
    co_await onPool([&log = m_app.log, known = RecordCopies::headsOf(copies), cancel = m_cancel] {
        return log.sealOlder(known, cancel) && log.addIndexes();
    });
}

Task<> RecordsScreen::start()
{
    const QPointer alive(this);
    co_await onPool(m_app.copies, &RecordCopies::correctMark);
    if (!alive)
        co_return;
    co_await prepareLog();
    connect(&m_app.log, &ShipmentLog::recordsChanged, this, [this] { spawn([this] { return copyDaily(); }); });
    co_await copyDaily();
}

Task<> RecordsScreen::copyDaily()
{
    const QPointer alive(this);
    co_await copyIfDue();
    if (alive)
        waitForNextCopy();
}

/// Without a change of the log, nothing else would start a copy. Parcelory may stay open for days.
void RecordsScreen::waitForNextCopy()
{
    Clock &clock = m_app.platform.clock;
    clock.cancel(m_nextCopy);
    if (m_cancel.isCanceled())
        return;
    Clock::Duration pause = pauseAfterFailure;
    if (const std::optional<QDateTime> last = copyOfToday())
        pause =
            std::max<Clock::Duration>(pause, pauseAfterCopy - std::chrono::milliseconds(last->msecsTo(clock.now())));
    m_nextCopy = clock.after(pause, [this] { spawn([this] { return copyDaily(); }); });
}

/// When the daily copy of today was made.
std::optional<QDateTime> RecordsScreen::copyOfToday() const
{
    const QDate today = m_app.platform.clock.now().date();
    const auto isOfToday = [today](const RecordCopy &copy) {
        return copy.isGood() && copy.reason == wordOf(CopyReason::daily) && copy.madeAt.toLocalTime().date() == today;
    };
    const QList<RecordCopy> all = ownCopies();
    const auto found = std::ranges::find_if(all, isOfToday);
    return found == all.end() ? std::nullopt : std::optional(found->madeAt);
}

/// Makes the copy of the day unless it was made, or failed within the last hour.
Task<> RecordsScreen::copyIfDue()
{
    const QDateTime steady = m_app.platform.clock.steadyNow();
    const bool isRecent =
        m_triedAt.isValid() && std::chrono::milliseconds(m_triedAt.msecsTo(steady)) < pauseAfterFailure;
    if (isRecent || restore.isDamaged() || copyOfToday())
        co_return;
    m_triedAt = steady;
    co_await copyNow(CopyReason::daily);
}

Task<> RecordsScreen::list()
{
    const QPointer alive(this);
    const int list = ++m_lists;
    const auto [listed, logId] =
        co_await onPool([&stored = m_app.copies] { return std::pair(stored.list(), stored.logId()); });
    if (!alive || list < m_shownList) // the folder may have changed since
        co_return;
    m_shownList = list;
    m_logId = logId;
    copies = listed;
}

Task<> RecordsScreen::copyNow(CopyReason reason)
{
    if (copying || restore.running)
        co_return;
    copying = true;
    const auto done = qScopeGuard([this] { copying = false; });
    message = QString();
    const QString failure = co_await copyRecords(m_app, reason, m_cancel);
    message = failure.isEmpty() ? QString() : m_app.recorded(u"Copy of the Records"_s, AppError(failure), Popup::no);
    co_await list();
}

Task<> RecordsScreen::chooseFolder()
{
    const QString path = co_await m_app.platform.prompts.openFolder(u"Choose the Folder for Copies"_s);
    if (path.isEmpty())
        co_return;
    const bool isWritable = co_await onPool([path] { return QFileInfo(path).isWritable(); });
    if (!isWritable) {
        message = u"The copies folder can't be written — choose another one."_s;
        co_return;
    }
    write(m_app.platform.preferences, settings::copiesFolder, path);
    m_app.copies.setFolder(QDir(path));
    folder = path;
    message = QString();
    co_await list();
}

Task<> RecordsScreen::openFolder()
{
    try {
        co_await onPool([&desktop = m_app.platform.desktop, path = folder.value()] { desktop.openFile(path); });
    } catch (const AppError &error) {
        message = m_app.recorded(u"Copy of the Records"_s, error, Popup::no);
    }
}

void RecordsScreen::cancel()
{
    m_app.platform.clock.cancel(m_nextCopy);
    m_cancel.cancel();
    m_verifying.cancel();
}

Task<> RecordsScreen::verify()
{
    if (verifying)
        co_return;
    verifying = true;
    const auto done = qScopeGuard([this] { verifying = false; });
    m_verifying = {};
    verified = 0;
    verifyFailure = QString();
    const QList<LogChain::Head> known = RecordCopies::headsOf(copies);
    const Progress progress(m_verifying, [this](qint64 count, qint64 total) {
        const double share = total ? double(count) / double(total) : 0;
        QMetaObject::invokeMethod(this, [this, share] { verified = share; }, Qt::QueuedConnection);
    });
    const auto found = co_await onPool([&log = m_app.log, known, progress] {
        return log.sealOlder(known, progress.cancelToken()) ? log.verify(known, progress)
                                                            : LogRead<LogChain::Report>::failed(log.lastError());
    });
    if (m_verifying.isCanceled())
        co_return;
    if (!found.isRead()) {
        verifyFailure = m_app.recorded(u"Verify Log"_s, AppError(found.failure()), Popup::no);
        co_return;
    }
    report = *found;
    verifiedAt = m_app.platform.clock.now();
}

} // namespace parcelory
