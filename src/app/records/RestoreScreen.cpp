#include "app/records/RestoreScreen.h"

#include "carrier/PagedList.h"
#include "core/AppError.h"
#include "core/StaleCheck.h"
#include "core/ports/Clock.h"
#include "devices/Zpl.h"
#include "records/SenderProfile.h"
#include "shell/ErrorLog.h"

#include <QScopeGuard>

#include <chrono>
#include <memory>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr auto longestAnswer = std::chrono::seconds(20); ///< of the account, and of all label files together
const QString context = u"Restore"_s;
const QString outOfDate = u"Another Parcelory has just restored a copy — press Restore again to see what the chosen "
                          "copy would change now."_s;

} // namespace

RestoreScreen::RestoreScreen(AppState &app) : m_app(app) {}

RestoreScreen::~RestoreScreen()
{
    m_app.platform.clock.cancel(m_timer);
}

bool RestoreScreen::canRestore() const
{
    return !looking && !running && review.value().unreadable.isEmpty() && !review.value().copy.folder.isEmpty() &&
           review.value().account != RestoreReview::Account::asking;
}

Task<> RestoreScreen::open(RecordCopy copy)
{
    if (running || looking || !copy.isGood())
        co_return;
    close();
    const auto isOld = staleCheck(m_asks);
    RestoreReview seen{.copy = copy, .account = RestoreReview::Account::asking};
    {
        looking = true;
        const auto done = qScopeGuard([this] { looking = false; });
        review = seen;
        emit opened();
        const QDateTime now = m_app.platform.clock.now();
        seen = co_await onPool([&app = m_app, copy, now] { return reviewOf(app, copy, now); });
    }
    if (isOld())
        co_return;
    if (seen.unreadable.isEmpty())
        co_await askAccount(seen);
    else
        review = seen;
}

Task<> RestoreScreen::askAccount(RestoreReview seen)
{
    const auto isOld = staleCheck(m_asks);
    const auto listing = std::make_shared<Listing>();
    const auto end = [this, listing](RestoreReview::Account account, const QList<ShipmentRecord> &labels) {
        m_app.platform.clock.cancel(std::exchange(m_timer, 0));
        listing->cancel.cancel();
        RestoreReview known = review;
        known.account = account;
        known.fromAccount = labels;
        known.isAccountCut = account == RestoreReview::Account::answered && listing->isCut;
        review = known;
    };
    seen.account = RestoreReview::Account::asking;
    review = seen;
    m_timer = m_app.platform.clock.after(longestAnswer, [end] { end(RestoreReview::Account::silent, {}); });
    const QDate from = seen.copy.madeAt.toLocalTime().date().addDays(-1);
    try {
        const QList<MasterEntry> account =
            co_await m_app.shippo.masterLog(from, m_app.platform.clock.now().date(), listing);
        QStringList offices;
        for (const SenderProfile &profile : m_app.senders.profiles.value())
            offices += profile.address.zip.section(u'-', 0, 0).trimmed();
        if (!isOld() && !listing->cancel.isCanceled())
            end(RestoreReview::Account::answered, unknownLabels(account, seen, offices));
    } catch (const AppError &) {
        if (!isOld() && review.value().account == RestoreReview::Account::asking)
            end(RestoreReview::Account::silent, {});
    }
}

void RestoreScreen::close()
{
    ++m_asks;
    m_app.platform.clock.cancel(std::exchange(m_timer, 0));
    if (!running)
        review = RestoreReview();
}

void RestoreScreen::takeReplacedRecords()
{
    logDamaged = false;
    bookDamaged = false;
    const bool isAsked = !running && !review.value().copy.folder.isEmpty();
    close(); // a restore that begins sees it
    if (isAsked)
        emit finished({.failure = outOfDate});
}

/// Labels that only the account knows, as long as its files come quickly: the log keeps the link for Reprint.
Task<> RestoreScreen::fetchLabels()
{
    const QDateTime begun = m_app.platform.clock.steadyNow();
    RestoreReview known = review;
    for (ShipmentRecord &label : known.fromAccount) {
        if (begun.secsTo(m_app.platform.clock.steadyNow()) >= longestAnswer.count())
            break;
        try {
            const QByteArray bytes = co_await m_app.shippo.downloadLabel(label.labelURL);
            if (isWhole(bytes))
                label.zpl = bytes;
        } catch (const AppError &error) {
            m_app.errors.record(context, error, Popup::no);
        }
    }
    review = known;
}

Task<> RestoreScreen::restore()
{
    if (!canRestore())
        co_return;
    RestoreOutcome outcome{.failure = obstacle()};
    const auto isOld = staleCheck(m_asks);
    const auto done = qScopeGuard([this] { running = false; });
    if (outcome.failure.isEmpty()) {
        running = true;
        progress = 0;
        co_await fetchLabels();
        co_await onPool(m_app.log, &ShipmentLog::isEmpty);  // follows another program that has restored a copy
        outcome.failure = isOld() ? outOfDate : obstacle(); // the files may have taken a while
    }
    if (outcome.failure.isEmpty()) {
        const Progress steps({}, [this](qint64 done, qint64 total) {
            const double share = total ? double(done) / double(total) : 0;
            QMetaObject::invokeMethod(this, [this, share] { progress = share; }, Qt::QueuedConnection);
        });
        outcome = co_await onPool([&app = m_app, seen = review.value(), now = m_app.platform.clock.now(), steps] {
            return restoreRecords(app, seen, now, steps);
        });
    }
    if (outcome.state == RestoreOutcome::State::restored) {
        co_await onPool([&app = m_app] {
            app.senders.reload();
            app.boxes.reload();
        });
        logDamaged = false;
        bookDamaged = false;
    } else {
        m_app.errors.record(context, AppError(outcome.failure), Popup::no);
    }
    running = false;
    close();
    emit finished(outcome);
}

} // namespace parcelory
