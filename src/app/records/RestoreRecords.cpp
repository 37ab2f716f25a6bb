#include "app/records/RestoreRecords.h"

#include "core/AppError.h"
#include "core/Task.h"
#include "records/LogMerge.h"
#include "records/PurchaseJournal.h"
#include "records/RestoreStage.h"

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString logName = u"mailing_log.sqlite"_s;

/// One restore, step by step. Each step returns what failed, for the middle of a sentence.
class Restore {
public:
    Restore(AppState &app, const RestoreReview &review, const QDateTime &now, const Progress &progress)
        : m_app(app), m_review(review), m_now(now), m_progress(progress), m_stage(app.platform.dataFolder),
          m_copy(app.copies.folder().filePath(review.copy.folder)), m_note{.copyMadeAt = review.copy.madeAt}
    {
    }

    RestoreOutcome run()
    {
        using State = RestoreOutcome::State;
        const QString failure = replaceAll();
        if (failure.isEmpty())
            return {.state = State::restored, .failure = {}, .note = m_note};
        if (m_stage.rest() == RestoreStage::Rest::begun)
            return {
                .state = State::begun,
                .failure =
                    u"Parcelory could not finish restoring the copy — %1. Restart Parcelory to finish."_s.arg(failure),
                .note = m_note};
        if (m_stage.rest() == RestoreStage::Rest::note)
            return {.failure =
                        u"The copy was not restored — %1. Nothing was changed, but the next start of Parcelory may "
                        "restore the copy; today's records are kept among the copies."_s.arg(failure)};
        m_app.copies.discard(m_aside);
        return {.failure = u"The copy was not restored — %1. Nothing was changed."_s.arg(failure)};
    }

private:
    /// Returns what failed.
    QString replaceAll()
    {
        if (const QString failure = own(); !failure.isEmpty())
            return failure;
        if (const QString failure = fillAndSetAside(); !failure.isEmpty())
            return failure;
        if (const QString failure = bringBack(); !failure.isEmpty())
            return failure;
        if (const QString failure = m_stage.sync(); !failure.isEmpty())
            return failure;
        if (const QString journal = m_copy.filePath(u"purchase_journal.sqlite"_s); QFile::exists(journal))
            m_app.journal.takeOver(journal);
        m_app.senders.flush();
        m_app.boxes.flush();
        if (!m_app.copies.markReplaced(m_aside, m_review.copy.madeAt))
            return u"Parcelory can't set today's records aside: the copies folder can't be written"_s;
        return m_app.log.replaceFile(
            [this] { return takeLast(); },
            [this] { return m_app.addressBook.replaceFile([this] { return m_stage.commit(m_note); }); });
    }

    /// A second Parcelory has no journal, and must not replace what the first one uses.
    QString own()
    {
        try {
            m_app.journal.open();
            return {};
        } catch (const AppError &) {
            return u"another Parcelory window has the records open, or the purchase journal can't be written"_s;
        }
    }

    /// Both at once: each takes about as long as the other.
    QString fillAndSetAside()
    {
        const CancelToken useless;
        auto setAside =
            QtConcurrent::run(&workPool(), [this, useless] { return m_app.copies.setAside(m_now, Progress(useless)); });
        const QString failure = m_stage.fill(m_copy, m_review.copy.files, part(0, 800));
        if (!failure.isEmpty())
            useless.cancel();
        const RecordCopies::SetAside aside = setAside.result();
        m_aside = aside.copy;
        return failure.isEmpty() && !aside.failure.isEmpty()
                   ? u"Parcelory can't set today's records aside: "_s + aside.failure
                   : failure;
    }

    QString bringBack()
    {
        if (!m_stage.has(logName))
            return {};
        {
            const ShipmentLog staged{QFileInfo(m_stage.path(logName)).dir()}; // adds the columns of later versions
        }
        Database log(m_stage.path(logName));
        return merge(log, m_review.added.labels, true);
    }

    QString merge(Database &log, const QList<ShipmentRecord> &labels, bool withAccount)
    {
        const LogMerge::Merged own = LogMerge::bringBack(log, m_app.log.path(), labels);
        if (!own.failure.isEmpty())
            return own.failure;
        QList<ShipmentRecord> others;
        try {
            if (withAccount)
                others = fromAccount();
        } catch (const AppError &) {
            return u"the purchase journal can't be read"_s;
        }
        const LogMerge::Merged account = LogMerge::append(log, others);
        m_note.broughtBack += own.labels + account.labels;
        m_note.missing += int(labels.size()) - own.labels;
        return account.failure;
    }

    /// Without labels that the journal still completes, or has completed since the review. Throws AppError if the
    /// journal cannot be read.
    QList<ShipmentRecord> fromAccount()
    {
        QSet<QString> own;
        for (const OpenPurchase &purchase : m_app.journal.openPurchases())
            own += purchase.record.transactionID;
        for (const ShipmentRecord &label :
             LogMerge::addedSince(m_app.log.path(), m_review.held, m_review.added.lastId).labels)
            own += label.transactionID;
        QList<ShipmentRecord> others = m_review.fromAccount;
        others.removeIf([&own](const ShipmentRecord &label) { return own.contains(label.transactionID); });
        return others;
    }

    /// Labels that were logged after the review: a purchase whose answer was lost may be found at any time.
    QString takeLast()
    {
        if (!m_stage.has(logName))
            return {};
        const LogMerge::Added late = LogMerge::addedSince(m_app.log.path(), m_review.held, m_review.added.lastId);
        Database log(m_stage.path(logName));
        const QString failure = merge(log, late.labels, false);
        return failure.isEmpty() ? m_stage.sync() : failure;
    }

    /// The part of the progress from one to another thousandth.
    Progress part(int from, int to) const
    {
        return Progress(m_progress.cancelToken(), [this, from, to](qint64 done, qint64 total) {
            [[maybe_unused]] const bool goesOn =
                m_progress.report(from + (total > 0 ? (to - from) * done / total : 0), 1000);
        });
    }

    AppState &m_app;
    const RestoreReview &m_review;
    const QDateTime m_now;
    const Progress &m_progress;
    RestoreStage m_stage;
    const QDir m_copy;
    RecordCopy m_aside;
    RestoreNote m_note;
};

} // namespace

RestoreOutcome restoreRecords(AppState &app, const RestoreReview &review, const QDateTime &now,
                              const Progress &progress)
{
    return Restore(app, review, now, progress).run();
}

} // namespace parcelory
