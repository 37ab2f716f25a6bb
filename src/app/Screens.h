#pragma once

#include "app/AppState.h"
#include "app/addressbook/AddressBook.h"
#include "app/endofday/EndOfDayScreen.h"
#include "app/handbook/Handbook.h"
#include "app/label/LabelScreen.h"
#include "app/logs/MailingLogScreen.h"
#include "app/logs/MasterLogScreen.h"
#include "app/preview/LabelPreview.h"
#include "app/records/RecordsScreen.h"
#include "app/scanform/ScanFormScreen.h"
#include "app/settings/KeysScreen.h"
#include "app/settings/SettingsScreen.h"
#include "app/signin/SignInScreen.h"
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
    MailingLogScreen mailingLog;
    KeysScreen keys;
    MasterLogScreen masterLog;
    ScanFormScreen scanForm;
    EndOfDayScreen endOfDay;
    SettingsScreen settings;
    UpdateChecker updates;
    RecordsScreen records;
    LabelPreview openLabel;              ///< in the label's own window
    Observed<int> labelsOpened{this, 0}; ///< incremented to open that window
    Handbook handbook;

    /// Restarts into the downloaded update and stores the draft for the next start. Call only if mayRestart().
    Task<> restartIntoUpdate();
    /// Puts the draft that a restart stored back into the New Label screen. Call once, at the start.
    void takeSavedDraft();

    /// Creates the SCAN form for today's labels of the chosen return address.
    Task<> createScanForm(ScanFormScope scope = ScanFormScope::allOfToday);
    /// Shows a label that differs from the account in the mailing log, or in the Master Log where only the account
    /// knows it.
    Task<> showDifference(AccountDifference difference);
    /// True while a purchase or a SCAN form is being made, which is not repeated: the program must not end now.
    bool mustStayOpen() const { return label.buying || m_app.scanFormBusy; }
    /// The restart into an update ends the process, so it must wait for a purchase, refund or SCAN form in progress.
    bool mayRestart() const { return !label.busy && !mailingLog.busy && !m_app.scanFormBusy; }

private:
    Task<> refundSecond(ShipmentRecord label);

    AppState &m_app;
};

} // namespace parcelory
