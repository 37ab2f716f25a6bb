#pragma once

#include "app/AppState.h"
#include "app/purchase/PurchaseFlow.h"
#include "app/purchase/PurchaseLookup.h"
#include "core/Observable.h"
#include "core/Task.h"

#include <optional>

namespace parcelory {

/// A purchase whose outcome is unknown.
struct UnresolvedPurchase {
    OpenPurchase purchase;
    QString text;                ///< status, worded for the clerk
    bool isInconclusive = false; ///< no definite answer, and a retry may not help: buying stays enabled
    bool isUnlogged = false;     ///< it was bought, and only the mailing log lacks it
    QDateTime since;             ///< no request is sent after this steady time; a request in transit may still arrive
    int looks = 0;               ///< how often the carrier was asked in vain

    bool operator==(const UnresolvedPurchase &other) const
    {
        return purchase.id == other.purchase.id && text == other.text && isInconclusive == other.isInconclusive &&
               isUnlogged == other.isUnlogged && looks == other.looks;
    }
};

/// A formerly unresolved purchase whose outcome is now known.
struct ResolvedPurchase {
    qint64 id = 0; ///< the journal's
    ShippoAddress recipient;
    ShipmentRecord record;
    bool isBought = false; ///< bought and in the mailing log
    bool isPrinted = false;
    bool isSecond = false; ///< a further label of the same request: to be refunded, not used
    QString text;

    bool operator==(const ResolvedPurchase &other) const { return id == other.id && text == other.text; }
};

/// The purchases whose outcome is unknown. A purchase is recorded in the journal before the request is sent; if the
/// response is lost or the program exits, it is looked up by its rate id among the account's newest transactions: found
/// -> completed by PurchaseFlow; not found after a minute -> not bought; otherwise retried automatically. This class
/// never buys a label. Lives as long as AppState.
class Purchases : public Observable {
    Q_OBJECT
public:
    explicit Purchases(AppState &app) : m_app(app), m_flow(app)
    {
        connect(&app, &AppState::refundTaken, this, [this](const QString &label) { forgetResolved(label, true); });
    }
    ~Purchases() override;

    Observed<QList<UnresolvedPurchase>> unresolved{this};
    Observed<QList<ResolvedPurchase>> resolved{this}; ///< until the clerk has seen them
    Observed<bool> checking{this, false};
    Observed<bool> printing{this, false}; ///< the label of a resolved purchase

    /// Resumes the purchases that the last run left unresolved.
    Task<> resume();
    /// The same after the journal has taken over entries of a copy.
    Task<> resumeRestored();
    /// Looks up every unresolved purchase at the carrier.
    Task<> checkAgain();
    /// The unresolved purchase for this recipient, if any.
    std::optional<UnresolvedPurchase> unresolvedFor(const ShippoAddress &recipient) const;
    /// The clerk knows the outcome better than the carrier can tell. Asks first; an entry in the error log remains.
    enum class ByHand { notBought, haveLabel };
    Task<> resolveByHand(qint64 id, ByHand outcome);
    /// Prints or reprints the label of a resolved purchase.
    Task<> print(ResolvedPurchase label);
    void dismiss(ResolvedPurchase label); // by value: the caller may pass an element of `resolved`
    /// The label was reprinted elsewhere, so that it does not wait here any more.
    void takeReprint(const QString &transactionId) { forgetResolved(transactionId, false); }
    /// Shows the further labels that the carrier sold for the same request, until the clerk has seen them, and looks
    /// for more of them a minute later.
    void watchForSeconds(const PurchaseResult &result);
    /// Asks for the refund of such a label: the mailing log does it.
    void refund(const ResolvedPurchase &label) { emit refundWanted(label.record); }

    /// Records in the journal that `purchase` is about to be requested; returns the journal's id. Throws AppError if
    /// the journal cannot be written, or if it turns out that an earlier run left a purchase for this recipient
    /// unresolved; nothing may be bought then.
    Task<qint64> begin(OpenPurchase purchase);
    void markUnresolved(const OpenPurchase &purchase, const LookupAnswer &answer);
    PurchaseFlow &flow() { return m_flow; }

signals:
    /// Its outcome was found, or the clerk has told it.
    void purchaseResolved(const ResolvedPurchase &purchase);
    /// The label of a purchase that was resolved later was printed; `printed` is the printer's message.
    void resolvedPrinted(const QString &transactionId, const QString &printed);
    void refundWanted(const ShipmentRecord &record);

private:
    Task<> load();
    Task<> loadIfPossible();
    Task<QString> newTrouble();
    bool isListed(qint64 id) const;
    bool mayGiveUp(const UnresolvedPurchase &pending, const LookupAnswer &answer) const;
    Task<> recheckAll();
    Task<> recheck(UnresolvedPurchase pending);
    Task<> finish(UnresolvedPurchase pending, LookupAnswer answer);
    Task<> giveUp(OpenPurchase purchase);
    void replaceUnresolved(qint64 id, std::optional<UnresolvedPurchase> with);
    void addResolved(const ResolvedPurchase &purchase);
    void forgetResolved(const QString &transactionId, bool isRefunded);
    void showSeconds(const QList<ShipmentRecord> &seconds);
    void lookForSecondsLater();
    Task<> lookForSeconds();
    void askLater();

    AppState &m_app;
    PurchaseFlow m_flow;
    bool m_isLoaded = false; ///< what earlier runs left unresolved is in the list
    quint64 m_timer = 0, m_secondsTimer = 0;
    bool m_isJournalNew = true;     ///< its state is to be told, also why it cannot be opened
    QString m_toldTrouble;          ///< the last sentence about it
    bool m_looksForSeconds = false; ///< the next check does
    qint64 m_seconds = 0;           ///< how many second labels are or were listed; they have no id of the journal
    Clock::Duration m_pause = firstPause;
    // The fourth retry comes soon after the minute in which a lost request may still arrive.
    static constexpr Clock::Duration firstPause = std::chrono::seconds(5), longestPause = std::chrono::minutes(1);
};

} // namespace parcelory
