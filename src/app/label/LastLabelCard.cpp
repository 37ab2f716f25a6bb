#include "app/label/LastLabelCard.h"

#include "app/AppState.h"
#include "app/purchase/LabelPrinting.h"
#include "app/purchase/ReprintCheck.h"
#include "core/AppError.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "core/ports/Desktop.h"
#include "devices/PrintWatch.h"

#include <QScopeGuard>

#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// True if no other place can print the label.
bool isOnlyHere(const std::optional<LastLabel> &label)
{
    return label && !label->isPrinted && !label->isLogged;
}

} // namespace

LastLabelCard::LastLabelCard(AppState &app, Observed<bool> &busy)
    : preview(app), m_app(app), m_busy(busy), m_labelWatch(label.addNotifier([this] { showPicture(); })),
      m_recipientWatch(app.draftTo.addNotifier([this] { leave(); })),
      m_queueWatch(app.printWatch.awaited.addNotifier([this] { leave(); })),
      m_noticeWatch(app.printWatch.notice.addNotifier([this] { leave(); }))
{
    buildOn(preview);
    connect(&app, &AppState::refundTaken, this, &LastLabelCard::takeRefund);
}

void LastLabelCard::showPicture()
{
    const std::optional<LastLabel> shown = label;
    if (shown)
        preview.show(shown->record, shown->verdict.findings.isEmpty() ? std::nullopt : std::optional(shown->verdict));
    else
        preview.clear();
}

void LastLabelCard::show(const LastLabel &bought)
{
    if (isOnlyHere(label) && !isOnlyHere(bought))
        return;
    m_isReprint = false;
    label = isBesideParcel() && bought.isPrinted ? std::nullopt : std::optional(bought);
}

void LastLabelCard::leave()
{
    if (isBesideParcel() && !awaitsReprint() && !isInQueue())
        label = std::nullopt;
}

/// The print tools return long before a label comes out.
bool LastLabelCard::isInQueue() const
{
    const std::optional<LastLabel> shown = label;
    const QStringList awaited = m_app.printWatch.awaited;
    return m_isReprint && shown && (awaited.contains(shown->record.transactionID) || !waiting().isEmpty());
}

void LastLabelCard::dismiss()
{
    if (!mayDismiss())
        return;
    const QString transaction = label.value()->record.transactionID;
    label = std::nullopt;
    emit settled(transaction);
}

void LastLabelCard::takeLogged(const QString &transactionId)
{
    std::optional<LastLabel> shown = label;
    if (!shown || shown->record.transactionID != transactionId)
        return;
    shown->isLogged = true;
    label = shown;
    if (m_isReprint) // so that it is not offered for printing where its purchase was completed
        emit reprinted(transactionId);
}

QString LastLabelCard::waiting() const
{
    const bool isSent = label.value() && label.value()->isPrinted;
    return isSent ? m_app.printWatch.noticeAbout(Paper::label) : QString();
}

/// The card of a label that is not printed says why; the message line tells the rest.
void LastLabelCard::note(const QString &text, bool ok)
{
    if (awaitsReprint()) {
        emit told(label.value()->record.transactionID, text, ok);
    } else if (std::optional<LastLabel> shown = label) {
        shown->message = text;
        label = shown;
    }
}

void LastLabelCard::takeReprint(const QString &transactionId, const QString &printed)
{
    if (awaitsReprint() && label.value()->record.transactionID == transactionId)
        noteReprint(printed, true, false);
}

void LastLabelCard::takeRefund(const QString &transactionId)
{
    if (label.value() && label.value()->record.transactionID == transactionId)
        label = std::nullopt;
    emit settled(transactionId);
}

void LastLabelCard::noteReprint(const QString &text, bool isPrinted, bool wasPrinted)
{
    std::optional<LastLabel> shown = label;
    if (!shown || (text.isEmpty() && !wasPrinted)) // the clerk may have canceled, which prints nothing
        return;
    m_isReprint = m_isReprint || (isPrinted && !wasPrinted);
    shown->message = text;
    shown->isPrinted = wasPrinted || isPrinted;
    label = shown;
    if (!wasPrinted && isPrinted) {
        leave();
        emit settled(shown->record.transactionID);
        emit told(shown->record.transactionID, text, true);
    } else if (!isPrinted && isBesideParcel()) { // a low window has no room for the reason on the card
        emit told(shown->record.transactionID, text, false);
    }
}

Task<> LastLabelCard::reprint()
{
    if (m_busy || !label.value())
        co_return;
    m_busy = true;
    printing = true;
    const bool wasPrinted = !awaitsReprint();
    const ShipmentRecord record = label.value()->record;
    const auto done = qScopeGuard([this] {
        printing = false;
        m_busy = false;
    });
    try {
        const QString printed = co_await reprintChecked(m_app, record);
        noteReprint(printed, true, wasPrinted);
        if (!printed.isEmpty())
            emit reprinted(record.transactionID);
    } catch (const AppError &error) {
        noteReprint(error.description().trimmed(), false, wasPrinted);
        recordReprintFailure(m_app, error);
    }
}

Task<> LastLabelCard::reprintCustoms()
{
    if (m_busy || !hasCustoms())
        co_return;
    m_busy = true;
    const auto done = qScopeGuard([this] { m_busy = false; });
    try {
        const QString printed = co_await parcelory::reprintCustoms(m_app, label.value()->record);
        note(printed);
    } catch (const AppError &error) {
        note(m_app.recorded(u"Customs Docs Reprint"_s, error, Popup::no), false);
    }
}

void LastLabelCard::copyTracking()
{
    if (!hasTracking())
        return;
    const QString tracking = label.value()->record.tracking;
    m_app.platform.desktop.copyText(tracking);
    note(u"Copied tracking "_s + tracking);
}

} // namespace parcelory
