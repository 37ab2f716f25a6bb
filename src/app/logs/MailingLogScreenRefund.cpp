#include "app/logs/MailingLogScreen.h"

#include "app/purchase/CarrierRefund.h"
#include "app/purchase/ReprintCheck.h"
#include "carrier/CarrierWords.h"
#include "carrier/ShippoError.h"
#include "carrier/ShippoRecords.h"
#include "core/AppError.h"
#include "core/Task.h"
#include "core/Text.h"
#include "core/ports/Prompts.h"
#include "records/LabelChecks.h"
#include "records/LabelEvents.h"
#include "records/PurchaseJournal.h"
#include "records/ShipmentRecord.h"
#include "records/ShipmentStatus.h"
#include "records/StatusWords.h"
#include "shell/ErrorLog.h"

#include <QScopeGuard>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString approval = u" — USPS refunds take up to 14 days to approve."_s;

Question confirmation(const ShipmentRecord &record, const QStringList &warnings)
{
    return {.title = u"Refund This Label?"_s,
            .text = u"%1 %2 to %3, $%4\nTracking %5%6\n\nThis voids the label. Don't use it. The refund "
                    "goes to the Shippo account%7"_s.arg(record.carrier, record.service,
                                                         isolated(record.recipientName()), fixed(record.postage, 2),
                                                         record.tracking, warningLines(warnings), approval),
            .choices = {u"Keep the Label"_s, u"Request Refund"_s},
            .safeChoice = 0};
}

} // namespace

bool MailingLogScreen::isRefundable(const ShipmentRecord &record)
{
    return labelBlocker(LabelUse::refund, record).isEmpty();
}

Task<> MailingLogScreen::refund(ShipmentRecord record)
{
    if (busy || !isRefundable(record))
        co_return;
    busy = true;
    const auto done = qScopeGuard([this] { busy = false; });
    say(QString());
    // The program may have exited after marking the row and before sending the request; only the carrier knows.
    if (refundState(record) == RefundState::pending) {
        const bool asked = co_await carrierWasAsked(record);
        if (asked)
            co_return;
    }
    try {
        const bool wanted = co_await confirmRefund(record);
        if (!wanted)
            co_return;
    } catch (const AppError &error) {
        fail(u"Refund"_s, AppError(error.description() + u" No refund was requested."_s), Popup::no);
        co_return;
    }
    // From here on, the refund sync must not treat this refund as lost.
    m_app.refundsUnderWay.insert(record.transactionID);
    const auto over = qScopeGuard([this, record] { m_app.refundsUnderWay.remove(record.transactionID); });
    const bool noted = co_await noteRefund(record);
    if (noted)
        co_await requestRefund(record);
}

/// False if the clerk keeps the label, or if its status has changed meanwhile. Throws AppError if the log cannot be
/// read.
Task<bool> MailingLogScreen::confirmRefund(ShipmentRecord record)
{
    const LabelFacts facts = co_await loadLabelFacts(m_app, record);
    const QStringList warnings = labelWarnings(LabelUse::refund, record, facts);
    const int answer = co_await m_app.platform.prompts.choose(confirmation(record, warnings));
    if (answer != 1)
        co_return false;
    const auto found = co_await onPool([&log = m_app.log, record] { return log.find(record); });
    const std::optional<ShipmentRecord> now = found.orThrow();
    const bool isSame = now && now->id == record.id && now->status == record.status && now->refund == record.refund;
    if (!isSame) { // another program, or a refund sync, changed it meanwhile
        co_await onPool([&log = m_app.log, asked = search.value()] { log.reload(asked); });
        say(u"The status of this shipment has just changed. No refund was requested."_s, true);
    }
    co_return isSame;
}

/// Records in the journal and the log that a refund is about to be requested, so that the log is correct if the program
/// exits before the response. False on failure; the message then says why no refund was requested.
Task<bool> MailingLogScreen::noteRefund(ShipmentRecord record)
{
    const OpenRefund refund{record.transactionID, record.id, m_app.platform.clock.now()};
    try {
        co_await onPool(m_app.journal, &PurchaseJournal::beginRefund, refund);
    } catch (const AppError &error) {
        fail(u"Refund"_s, error, Popup::no);
        co_return false;
    }
    const QString unwritten = co_await write([record, refund](AppState &app) {
        return LabelEvents::put(app.log, {refund.transactionId}, LabelEvent::refundAsked, refund.askedAt) &&
               app.log.setStatus(record, wordOf(LogStatus::refundPending));
    });
    if (!unwritten.isEmpty()) {
        fail(u"Refund"_s, AppError(unwritten + u" No refund was requested."_s), Popup::no);
        co_await closeRefund(record.transactionID);
    }
    co_return unwritten.isEmpty();
}

Task<> MailingLogScreen::closeRefund(QString transactionId)
{
    co_await onPool(m_app.journal, &PurchaseJournal::closeRefund, transactionId);
}

/// False if the carrier has no refund of this label. Otherwise, or if the carrier cannot be asked, the message shows
/// the status.
Task<bool> MailingLogScreen::carrierWasAsked(ShipmentRecord record)
{
    std::optional<RefundState> refund;
    try {
        const ShippoTransaction transaction = co_await m_app.shippo.transaction(record.transactionID);
        refund = refundStateOf(transactionStatus(transaction));
    } catch (const AppError &error) {
        fail(u"Refund"_s, error, Popup::yes);
        co_return true;
    }
    if (refund == RefundState::none)
        co_return false;
    QString unwritten;
    if (refund == RefundState::granted || refund == RefundState::failed)
        unwritten = co_await write([record, refund](AppState &app) { return app.log.setRefund(record, *refund); });
    if (refund == RefundState::failed) // the row's status refers the clerk to the error log
        m_app.errors.record(u"Refund"_s, AppError(refundRefusal(record)), Popup::no);
    if (!unwritten.isEmpty())
        m_app.errors.record(u"Refund"_s, AppError(unwritten), Popup::no);
    if (refund != RefundState::failed)
        emit m_app.refundTaken(record.transactionID);
    const QString outcome = refund == RefundState::granted  ? u"Refunded."_s
                            : refund == RefundState::failed ? u"The carrier has refused the refund of this label."_s
                                                            : u"The carrier already has this refund"_s + approval;
    say(joinPresent({outcome, unwritten}, u" "_s), refund == RefundState::failed || !unwritten.isEmpty());
    co_return true;
}

Task<> MailingLogScreen::requestRefund(ShipmentRecord record)
{
    say(u"Requesting refund…"_s);
    RefundState refund = RefundState::failed;
    QString outcome;
    bool isSettled = false; // otherwise the next sync asks the carrier
    try {
        const ShippoRefund answer = co_await m_app.shippo.refund(record.transactionID);
        const QString word = answer.status.value_or(QString()).toLower();
        isSettled = true;
        refund = refundStateOf(refundAnswer(answer));
        outcome = refund == RefundState::granted ? u"Refunded."_s
                                                 : u"Refund "_s + (word.isEmpty() ? u"requested"_s : word) + approval;
        if (refund == RefundState::failed) // the row's status refers the clerk to the error log
            m_app.errors.record(u"Refund"_s, AppError(refundRefusal(record)), Popup::no);
    } catch (const AppError &error) {
        // After a refusal, the sync asks, too: the refund may have been requested elsewhere.
        isSettled = fateOf(error) == RequestFate::notSent;
        outcome = m_app.recorded(u"Refund"_s, error, Popup::yes);
    }
    const QString unwritten = co_await write([record, status = statusAfter(refund, record.status)](AppState &app) {
        return app.log.setStatus(record, status);
    });
    if (!unwritten.isEmpty()) // the next sync asks the carrier
        m_app.errors.record(u"Refund"_s, AppError(outcome + u' ' + unwritten), Popup::no);
    say(joinPresent({outcome, unwritten}, u" "_s), refund == RefundState::failed || !unwritten.isEmpty());
    if (refund != RefundState::failed)
        emit m_app.refundTaken(record.transactionID);
    if (isSettled && unwritten.isEmpty())
        co_await closeRefund(record.transactionID);
}

} // namespace parcelory
