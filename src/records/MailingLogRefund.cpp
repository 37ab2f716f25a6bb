#include "records/MailingLogScreen.h"

#include "core/Text.h"
#include "records/ShipmentStatus.h"

#include <QScopeGuard>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString approval = u" — USPS refunds take up to 14 days to approve."_s;

Question confirmation(const ShipmentRecord &record)
{
    const QString name = record.recipient.section(u',', 0, 0);
    return {.title = u"Refund This Label?"_s,
            .text =
                u"%1 %2 to %3, $%4\nTracking %5\n\nThe label is given back and must not be used any more. The refund "
                "goes to the Shippo account%6"_s.arg(record.carrier, record.service, name, fixed(record.postage, 2),
                                                     record.tracking, approval),
            .choices = {u"Keep the Label"_s, u"Request Refund"_s},
            .safeChoice = 0};
}

/// What the log keeps of the carrier's answer.
QString statusAfter(const QString &answer)
{
    if (answer == u"SUCCESS")
        return u"REFUNDED"_s;
    return answer == u"ERROR" ? u"REFUND_ERROR"_s : u"REFUND_PENDING"_s;
}

} // namespace

bool MailingLogScreen::isRefundable(const ShipmentRecord &record)
{
    const RefundState state = refundState(record.status);
    return !record.transactionID.isEmpty() && state != RefundState::granted;
}

Task<> MailingLogScreen::refund(ShipmentRecord record)
{
    if (busy || !isRefundable(record))
        co_return;
    busy = true;
    const auto done = qScopeGuard([this] { busy = false; });
    message = QString();
    // The program may have ended between the mark and the request: only the carrier knows whether it was asked.
    const bool pending = refundState(record.status) == RefundState::pending;
    if (pending) {
        const bool asked = co_await carrierWasAsked(record);
        if (asked)
            co_return;
    }
    const int answer = co_await m_app.platform.prompts.choose(confirmation(record));
    if (answer != 1)
        co_return;
    auto looking = onPool([&log = m_app.log, id = record.id] { return log.status(id); });
    const std::optional<QString> now = co_await looking;
    if (now != record.status) { // another program on this log, or the carrier, was quicker
        auto reloading = onPool([&log = m_app.log, asked = search.value()] { log.reload(asked); });
        co_await reloading;
        message = u"The shipment's status has changed meanwhile. No refund was requested."_s;
        co_return;
    }
    // Marked first, so that the list tells the truth if the program quits before the answer.
    const bool marked = co_await storeStatus(record.id, u"REFUND_PENDING"_s);
    if (!marked) {
        message = message + u" No refund was requested."_s;
        co_return;
    }
    co_await requestRefund(record);
}

/// False when the carrier knows of no refund of this label; otherwise, and when it cannot be asked, the message says
/// how things are.
Task<bool> MailingLogScreen::carrierWasAsked(ShipmentRecord record)
{
    QString status;
    try {
        const ShippoTransaction transaction = co_await m_app.shippo.transaction(record.transactionID);
        status = transaction.status;
    } catch (const AppError &error) {
        message = error.description();
        co_return true;
    }
    if (status == u"SUCCESS")
        co_return false;
    const bool decided = status == u"REFUNDED" || status == u"REFUNDREJECTED";
    if (decided)
        co_await storeStatus(record.id, status == u"REFUNDED" ? u"REFUNDED"_s : u"REFUND_ERROR"_s);
    message = status == u"REFUNDED"         ? u"Refunded."_s
              : status == u"REFUNDREJECTED" ? u"The carrier has refused the refund of this label."_s
                                            : u"The carrier already has this refund"_s + approval;
    co_return true;
}

Task<> MailingLogScreen::requestRefund(ShipmentRecord record)
{
    message = u"Requesting refund…"_s;
    QString status = u"REFUND_ERROR"_s, outcome;
    try {
        const ShippoRefund answer = co_await m_app.shippo.refund(record.transactionID);
        const QString word = answer.status.value_or(QString()).toUpper();
        status = statusAfter(word);
        outcome = word == u"SUCCESS" ? u"Refunded."_s
                                     : u"Refund "_s + (word.isEmpty() ? u"requested"_s : word.toLower()) + approval;
        if (word == u"ERROR") // the status points to the error log
            m_app.errors.record(u"Refund"_s,
                                AppError(u"The carrier has refused the refund of %1's label (%2)."_s.arg(
                                    record.recipient.section(u',', 0, 0), record.tracking)),
                                Popup::no);
    } catch (const AppError &error) {
        outcome = error.description();
        m_app.errors.record(u"Refund"_s, error, Popup::yes);
    }
    const bool stored = co_await storeStatus(record.id, status);
    message = stored ? outcome : outcome + u' ' + message;
}

} // namespace parcelory
