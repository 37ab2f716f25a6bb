#pragma once

#include "app/AppState.h"
#include "app/endofday/DayReport.h"
#include "app/logs/MailingLogScreen.h"
#include "app/purchase/Purchases.h"
#include "app/settings/KeysScreen.h"
#include "core/Observable.h"
#include "core/Task.h"

#include <QDate>
#include <QHash>
#include <QPropertyNotifier>

#include <memory>
#include <optional>
#include <vector>

namespace parcelory {

struct Listing;

/// Whether the day was compared with the carrier's account.
enum class AccountState { notAsked, asking, compared, unanswered };

/// What the SCAN form card's button does.
enum class FormStep { make, print };

/// The End of Day window: one day's labels by what is left to do about them, and how they differ from the carrier's
/// account. Reads nothing while the window is closed. Lives as long as AppState.
class EndOfDayScreen : public Observable {
public:
    EndOfDayScreen(AppState &app, const KeysScreen &keys, MailingLogScreen &log, Purchases &purchases);

    Observed<QDate> day{this};
    Observed<DayReport> report{this};
    Observed<AccountState> account{this, AccountState::notAsked};
    Observed<QDateTime> comparedAt{this}; ///< valid if the shown day was compared
    Observed<QString> accountFailure{this};
    Observed<QString> selected{this}; ///< the id of a difference; at first the newest
    Observed<bool> busy{this, false};
    Observed<QString> message{this}; ///< the last operation's result
    Observed<bool> isFailure{this, false};

    /// Call when the window opens and closes.
    void open();
    void close();
    /// A day in the future becomes today.
    void showDay(QDate wanted);
    bool isToday() const { return day.value() >= m_app.platform.clock.now().date(); }
    /// True if the report is about the shown day and complete.
    bool isRead() const { return report.value().day == day.value() && report.value().failure.isEmpty(); }
    /// Reads the day again, and asks the account about it again.
    void refresh();
    /// True while the carrier is asked, also about a day that is not shown any more.
    bool isAsking() const { return m_requests > 0; }
    bool canRefresh() const { return hasKey() && account.value() != AccountState::asking; }

    FormStep formStep() const;
    /// Why the card's button does nothing; empty if it may be pressed.
    QString formObstacle() const;
    /// True if the button is the next step.
    bool isFormStepNext() const;
    /// True while the button works.
    bool isFormUnderWay() const { return m_app.scanFormBusy || (busy && m_isPrintingForms); }
    /// Why the last SCAN form of today was not made; else empty.
    QString formFailure() const;
    /// The shown day's purchases whose outcome is unknown.
    QList<UnresolvedPurchase> unresolved() const;
    std::optional<AccountDifference> selectedDifference() const;
    KeyView key() const;
    /// "Compared with the account at 4:12 PM"
    QString accountText() const;

    /// Prints the day's forms: those that were never printed, or all of them again.
    enum class Forms { unprinted, all };
    Task<> printForms(Forms which);
    /// Asks first if there is a warning, as the mailing log does.
    Task<> reprint(ShipmentRecord record);
    Task<> printPage();
    Task<> exportCSV();

private:
    bool hasKey() const { return m_keys.mode != PostageMode::none && m_keys.mode != PostageMode::unknown; }
    bool hasFreshForm() const;
    void showAnew();
    void reread();
    void takeReport(const DayReport &read);
    Task<> readAgain();
    void compare();
    Task<> ask(QDate asked);
    Task<> run(QString context, Task<QString> (EndOfDayScreen::*operation)());
    Task<QString> printReport();
    Task<QString> exportReport();
    Task<QString> printDocuments();

    AppState &m_app;
    const KeysScreen &m_keys;
    MailingLogScreen &m_log;
    Purchases &m_purchases;
    QHash<QDate, AccountListing> m_accounts;   ///< of the active key, by the day that was asked for
    std::shared_ptr<Listing> m_listing;        ///< under way
    int m_requests = 0;                        ///< under way
    PostageMode m_mode = PostageMode::unknown; ///< when it was last looked at
    Forms m_wantedForms = Forms::all;
    bool m_isPrintingForms = false;
    bool m_isOpen = false, m_isReading = false, m_isStale = false;
    std::vector<QPropertyNotifier> m_notifiers;
};

} // namespace parcelory
