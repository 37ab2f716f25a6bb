#pragma once

#include "addressbook/AddressBook.h"
#include "backoffice/SignInScreen.h"
#include "compose/LabelScreen.h"
#include "core/AppState.h"
#include "records/MailingLogScreen.h"
#include "records/MasterLogScreen.h"
#include "records/ScanFormScreen.h"
#include "shell/KeysScreen.h"
#include "shell/SettingsScreen.h"
#include "shell/UpdateChecker.h"

namespace parcelory {

/// The screen models of the program's one window; they live as long as AppState, so that a draft survives every
/// change of tab and sign-in.
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
