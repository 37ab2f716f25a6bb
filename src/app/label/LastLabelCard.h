#pragma once

#include "app/preview/LabelPreview.h"
#include "compose/LabelReadBack.h"
#include "core/Observable.h"
#include "core/Task.h"
#include "records/ShipmentRecord.h"

#include <QProperty>

#include <optional>

namespace parcelory {

/// The last label bought.
struct LastLabel {
    QString recipient; ///< "Eleanor Whitfield · Asheville NC"
    ShipmentRecord record;
    QString message;           ///< why it was not printed, or the result of a reprint or a copy
    bool isPrinted = true;     ///< false until the label has come out: it is paid for and must be printed
    LabelVerdict verdict = {}; ///< of the comparison with the parcel
    bool isLogged = true;      ///< false: the mailing log does not have it, so it can be reprinted only here

    bool operator==(const LastLabel &other) const
    {
        return record.transactionID == other.record.transactionID && message == other.message &&
               isPrinted == other.isPrinted && verdict == other.verdict && isLogged == other.isLogged;
    }
};

/// The last label beside the form, its picture, its reprint and its papers for customs. A label that has come out goes
/// when the clerk begins the next parcel. A label that has not stays until its reprint has come out, the clerk
/// dismisses it, it is refunded or the next label is bought, because it is paid for. A label that only this card can
/// print takes no Dismiss and gives way only to another such label. Lives as long as AppState.
class LastLabelCard : public Observable {
    Q_OBJECT
public:
    /// `busy` is true while an operation of the screen or of this card is in progress.
    LastLabelCard(AppState &app, Observed<bool> &busy);

    Observed<std::optional<LastLabel>> label{this};
    Observed<bool> printing{this, false}; ///< the label is being reprinted
    LabelPreview preview;                 ///< the picture of `label`

    void show(const LastLabel &bought);
    /// True if the label has not come out.
    bool awaitsReprint() const { return label.value() && !label.value()->isPrinted; }
    /// True if the clerk has begun the next parcel.
    bool isBesideParcel() const { return !m_app.draftTo.value().isEmpty(); }
    /// True if the clerk may take the label off the screen: the mailing log can print it.
    bool mayDismiss() const { return isBesideParcel() && label.value() && label.value()->isLogged; }
    /// True if the reprint is to be done before anything else.
    bool comesFirst() const { return awaitsReprint() && !isBesideParcel(); }
    /// Why the label, which was sent, is still in the printer; empty if it is not.
    QString waiting() const;
    bool hasTracking() const { return label.value() && !label.value()->record.tracking.isEmpty(); }
    /// True if papers for customs go with the label.
    bool hasCustoms() const { return label.value() && label.value()->record.isIntl; }

    /// Reprints the label; the result is in its message.
    Task<> reprint();
    Task<> reprintCustoms();
    void copyTracking();
    /// The label was reprinted elsewhere, so that it does not wait here any more.
    void takeReprint(const QString &transactionId, const QString &printed);
    /// A label is refunded or will be, so that it must not be printed.
    void takeRefund(const QString &transactionId);
    /// The mailing log has the label at last.
    void takeLogged(const QString &transactionId);
    /// The clerk does not need the label here; the mailing log keeps it.
    void dismiss();

signals:
    /// News of a label for the message line.
    void told(const QString &transactionId, const QString &text, bool ok);
    /// A label is refunded, or a label that had not come out is reprinted or dismissed: earlier news of it is over.
    void settled(const QString &transactionId);
    void reprinted(const QString &transactionId);

private:
    void showPicture();
    void leave();
    bool isInQueue() const;
    void note(const QString &text, bool ok = true);
    void noteReprint(const QString &text, bool isPrinted, bool wasPrinted);

    AppState &m_app;
    Observed<bool> &m_busy;
    bool m_isReprint = false; ///< `label` was reprinted because it had not come out
    QPropertyNotifier m_labelWatch, m_recipientWatch, m_queueWatch, m_noticeWatch;
};

} // namespace parcelory
