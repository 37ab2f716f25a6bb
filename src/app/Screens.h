#pragma once

#include "app/AppState.h"
#include "app/addressbook/AddressBook.h"
#include "app/endofday/EndOfDayScreen.h"
#include "app/handbook/Handbook.h"
#include "app/label/DraftKeeper.h"
#include "app/label/LabelScreen.h"
#include "app/logs/MailingLogScreen.h"
#include "app/logs/MasterLogScreen.h"
#include "app/openitems/OpenItemsScreen.h"
#include "app/openitems/TrackingWatch.h"
#include "app/preview/LabelPreview.h"
#include "app/records/RecordsScreen.h"
#include "app/scanform/ScanFormScreen.h"
#include "app/settings/KeysScreen.h"
#include "app/settings/RulesScreen.h"
#include "app/settings/SettingsScreen.h"
#include "app/signin/SignInScreen.h"
#include "app/support/Activity.h"
#include "app/support/SupportBundle.h"
#include "app/update/UpdateChecker.h"
#include "core/Observable.h"

namespace parcelory {

/// The screen models of the program's main window, and the rules that concern several of them. They live as long as
/// AppState, so that a draft survives every change of tab and every sign-in.
class Screens : public Observable {
public:
    explicit Screens(AppState &app);

    SignInScreen signIn;
    AddressBook addressBook;
    LabelScreen label;
    DraftKeeper draft;
    MailingLogScreen mailingLog;
    KeysScreen keys;
    MasterLogScreen masterLog;
    ScanFormScreen scanForm;
    EndOfDayScreen endOfDay;
    SettingsScreen settings;
    UpdateChecker updates;
    RecordsScreen records;
    RulesScreen rules;
    TrackingWatch tracking;
    OpenItemsScreen openItems;
    LabelPreview openLabel;              ///< in the label's own window
    Observed<int> labelsOpened{this, 0}; ///< incremented to open that window
    Handbook handbook;
    Activity activity;
    SupportBundle support;

    /// Restarts into the downloaded update once the records are copied and the draft is on the disk. Does nothing if
    /// the restart is called off or mayRestart() is false by then.
    Task<> restartIntoUpdate();
    void callOffRestart() { restarting = false; }
    Observed<bool> restarting{this, false}; ///< on the way to the end of the program

    /// The last change that undo() takes back, for the status strip; empty without a change. A label's recipient may
    /// have changed an entry of the address book.
    QString changeText() const;
    /// True if undo() would do something in the tab that is shown.
    bool canUndo() const;
    /// Takes back the last change of the shown form, or else what changeText() names.
    void undo();
    void undoChange();

    /// Creates the SCAN form for today's labels of the chosen return address.
    Task<> createScanForm(ScanFormScope scope = ScanFormScope::allOfToday);
    /// Shows a label that differs from the account in the mailing log, or in the Master Log where only the account
    /// knows it.
    Task<> showDifference(AccountDifference difference);
    /// True while a purchase or a SCAN form is being made, which is not repeated, or the records are replaced: the
    /// program must not end now.
    bool mustStayOpen() const { return label.buying || m_app.scanFormBusy || records.restore.running; }
    /// The restart into an update ends the process, with what still runs on the thread pool, so it must wait for a
    /// purchase, print, import, refund or SCAN form in progress.
    bool mayRestart() const
    {
        return !label.busy && !label.purchases.checking && !label.purchases.printing && !mailingLog.busy &&
               !addressBook.importing && !m_app.scanFormBusy && !scanForm.busy && !endOfDay.busy &&
               !records.restore.running;
    }
    /// At the start: offers a copy if the records are damaged, or says what else is wrong with the mailing log; then
    /// makes the copy of the day.
    Task<> startRecords();

private:
    QString obstacleToRestore() const;
    void takeReplacedRecords();
    Task<> refundSecond(ShipmentRecord label);
    void tellOverridden(const QStringList &names);

    AppState &m_app;
};

} // namespace parcelory
