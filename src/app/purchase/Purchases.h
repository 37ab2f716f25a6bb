#pragma once

#include "app/AppState.h"
#include "core/Task.h"

#include <QProperty>

#include <optional>

namespace parcelory {

/// A purchase of which it is not known whether the carrier sold the label.
struct UnresolvedPurchase {
    OpenPurchase purchase;
    QString text;                ///< how things are, in the clerk's words
    bool isInconclusive = false; ///< whoever was asked could not say: checking once more may tell no more
    QDateTime since;             ///< from then on nobody asks for it any more; what is on its way may still arrive

    bool operator==(const UnresolvedPurchase &other) const
    {
        return purchase.id == other.purchase.id && text == other.text && isInconclusive == other.isInconclusive;
    }
};

/// A purchase whose end was found out only after its moment.
struct ResolvedPurchase {
    ShippoAddress recipient;
    ShipmentRecord record;
    bool isBought = false; ///< it is in the mailing log
    bool isPrinted = false;
    QString text;

    bool operator==(const ResolvedPurchase &other) const
    {
        return record.createdAt == other.record.createdAt && record.recipient == other.record.recipient &&
               text == other.text;
    }
};

/// Sees to it that every label that was paid for gets into the books, whatever becomes of an answer or of the program.
/// A purchase stands in the journal before the carrier is asked. One whose end was not seen is looked for among the
/// account's newest ones, by its rate: found, it is finished; not found although a minute has passed since, it was
/// none; otherwise it stays a question, which is asked again by itself. Nothing is ever bought here. Lives as long as
/// AppState.
class Purchases {
public:
    explicit Purchases(AppState &app) : m_app(app) {}
    ~Purchases();
    Purchases(const Purchases &) = delete;
    Purchases &operator=(const Purchases &) = delete;

    QProperty<QList<UnresolvedPurchase>> unresolved;
    QProperty<QList<ResolvedPurchase>> resolved; ///< until the clerk has seen them
    QProperty<bool> checking{false};

    enum class Verdict { bought, notBought, unknown };
    struct Answer {
        Verdict verdict = Verdict::unknown;
        std::optional<ShippoTransaction> transaction = {}; ///< of a purchase that the journal does not know better
        QString text = {};                                 ///< why it is not known
        bool isInconclusive = false;
    };

    /// Takes up what the last run of the program left open.
    Task<> resume();
    /// Asks the carrier about every open question.
    Task<> checkAgain();
    /// The open question about a recipient's label.
    std::optional<UnresolvedPurchase> unresolvedFor(const ShippoAddress &recipient) const;
    /// Prints a label that was found, or prints it again.
    Task<> print(ResolvedPurchase label);
    void dismiss(const ResolvedPurchase &label);

    // For the purchase that is under way.
    /// Gives the journal's number; throws AppError when the journal cannot be written: then nothing may be bought.
    Task<qint64> begin(OpenPurchase purchase);
    Task<> save(OpenPurchase purchase);
    Task<> markPrinted(qint64 id);
    Task<> close(qint64 id);
    /// What the carrier knows of a purchase that may still arrive there for a while after `since`.
    Task<Answer> lookUp(OpenPurchase purchase, QDateTime since);
    void markUnresolved(const OpenPurchase &purchase, const Answer &answer);
    /// Writes a finished purchase into the mailing log, unless it stands there; only then the journal forgets it.
    /// False, with an entry in the error log, when the log could not be written.
    Task<bool> enterIntoLog(OpenPurchase purchase);

    /// "USPS Priority Mail to Eleanor Whitfield, $9.85"
    static QString titleOf(const ShipmentRecord &record);
    /// How things are with a label that only the journal knows of.
    static QString notLogged(const ShipmentRecord &record);
    /// What the mailing log takes from the carrier's answer.
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
    // The fourth look comes soon after the minute in which a lost request may still arrive.
    static constexpr Clock::Duration firstPause = std::chrono::seconds(5), longestPause = std::chrono::minutes(1);
};

} // namespace parcelory
