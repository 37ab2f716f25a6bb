#pragma once

#include "app/AppState.h"
#include "core/Observable.h"
#include "core/Task.h"

#include <optional>

namespace parcelory {

/// A purchase whose outcome is unknown.
struct UnresolvedPurchase {
    OpenPurchase purchase;
    QString text;                ///< status, worded for the clerk
    bool isInconclusive = false; ///< no definite answer, and a retry may bring none: buying stays enabled
    QDateTime since;             ///< no request is sent after this time; a request in transit may still arrive

    bool operator==(const UnresolvedPurchase &other) const
    {
        return purchase.id == other.purchase.id && text == other.text && isInconclusive == other.isInconclusive;
    }
};

/// A formerly unresolved purchase whose outcome is now known.
struct ResolvedPurchase {
    ShippoAddress recipient;
    ShipmentRecord record;
    bool isBought = false; ///< bought and in the mailing log
    bool isPrinted = false;
    QString text;

    bool operator==(const ResolvedPurchase &other) const
    {
        return record.createdAt == other.record.createdAt && record.recipient == other.record.recipient &&
               text == other.text;
    }
};

/// Ensures that every paid label is logged, even if a response is lost or the program exits. A purchase is recorded in
/// the journal before the request is sent. A purchase with unknown outcome is looked up by its rate id among the
/// account's newest transactions: found -> completed; not found after a minute -> not bought; otherwise retried
/// automatically. This class never buys a label. Lives as long as AppState.
class Purchases : public Observable {
public:
    explicit Purchases(AppState &app) : m_app(app) {}
    ~Purchases();
    Purchases(const Purchases &) = delete;
    Purchases &operator=(const Purchases &) = delete;

    Observed<QList<UnresolvedPurchase>> unresolved{this};
    Observed<QList<ResolvedPurchase>> resolved{this}; ///< until the clerk has seen them
    Observed<bool> checking{this, false};

    enum class Verdict { bought, notBought, unknown };
    struct Answer {
        Verdict verdict = Verdict::unknown;
        std::optional<ShippoTransaction> transaction = {}; ///< the sale; empty if the journal already has the response
        QString text = {};                                 ///< why the outcome is unknown
        bool isInconclusive = false;
    };

    /// Resumes the purchases that the last run left unresolved.
    Task<> resume();
    /// Looks up every unresolved purchase at the carrier.
    Task<> checkAgain();
    /// The unresolved purchase for this recipient, if any.
    std::optional<UnresolvedPurchase> unresolvedFor(const ShippoAddress &recipient) const;
    /// Prints or reprints the label of a resolved purchase.
    Task<> print(ResolvedPurchase label);
    void dismiss(const ResolvedPurchase &label);

    // For the purchase in progress.
    /// Returns the journal's id. Throws AppError if the journal cannot be written; nothing may be bought then.
    Task<qint64> begin(OpenPurchase purchase);
    Task<> save(OpenPurchase purchase);
    Task<> markPrinted(qint64 id);
    Task<> close(qint64 id);
    /// Looks up a purchase at the carrier. A request sent before `since` may still arrive there for a while.
    Task<Answer> lookUp(OpenPurchase purchase, QDateTime since);
    void markUnresolved(const OpenPurchase &purchase, const Answer &answer);
    /// Adds a completed purchase to the mailing log, unless it is already there, and then removes it from the journal.
    /// Returns false, and reports it once in the error log, if the mailing log cannot be written.
    Task<bool> enterIntoLog(OpenPurchase purchase);

    /// "USPS Priority Mail to Eleanor Whitfield, $9.85"
    static QString titleOf(const ShipmentRecord &record);
    /// Text for a bought label that is in the journal but not in the mailing log.
    static QString notLogged(const ShipmentRecord &record);
    /// Copies the mailing log's fields from the carrier's response.
    static void applyTransaction(ShipmentRecord &record, const ShippoTransaction &transaction);

private:
    Task<Answer> evaluate(OpenPurchase purchase, QDateTime since);
    Task<> recheck(UnresolvedPurchase pending);
    Task<> finish(UnresolvedPurchase pending, std::optional<ShippoTransaction> transaction);
    Task<> giveUp(OpenPurchase purchase);
    bool isKnownUnlogged(qint64 id) const;
    Task<std::optional<QByteArray>> fetch(QString url);
    void replaceUnresolved(qint64 id, std::optional<UnresolvedPurchase> with);
    void addResolved(const ResolvedPurchase &purchase);
    void askLater();

    AppState &m_app;
    quint64 m_timer = 0;
    Clock::Duration m_pause = firstPause;
    // The fourth retry comes soon after the minute in which a lost request may still arrive.
    static constexpr Clock::Duration firstPause = std::chrono::seconds(5), longestPause = std::chrono::minutes(1);
};

} // namespace parcelory
