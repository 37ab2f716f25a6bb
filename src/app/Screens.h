#pragma once

#include "app/AppState.h"
#include "app/addressbook/AddressBook.h"
#include "app/label/LabelScreen.h"
#include "app/logs/MailingLogScreen.h"
#include "app/logs/MasterLogScreen.h"
#include "app/scanform/ScanFormScreen.h"
#include "app/settings/KeysScreen.h"
#include "app/settings/SettingsScreen.h"
#include "app/signin/SignInScreen.h"
#include "app/update/UpdateChecker.h"

namespace parcelory {

/// The screen models of the program's main window. They live as long as AppState, so that a draft survives every change
/// of tab and every sign-in.
struct Screens {
    explicit Screens(AppState &app)
        : signIn(app), addressBook(app), label(app), mailingLog(app), masterLog(app), scanForm(app), settings(app),
          keys(app), updates(app)
    {
    }

    SignInScreen signIn;
    AddressBook addressBook;
    LabelScreen label;
    MailingLogScreen mailingLog;
    MasterLogScreen masterLog;
    ScanFormScreen scanForm;
    SettingsScreen settings;
    KeysScreen keys;
    UpdateChecker updates;
};

} // namespace parcelory
