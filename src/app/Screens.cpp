#include "app/Screens.h"

#include "app/AppState.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "records/SenderProfile.h"

namespace parcelory {

Screens::Screens(AppState &app)
    : signIn(app), addressBook(app), label(app), mailingLog(app), keys(app), masterLog(app, keys), scanForm(app),
      settings(app), updates(app), m_app(app)
{
    connect(&mailingLog, &MailingLogScreen::reprinted, &label, &LabelScreen::takeReprint);
    buildOn(app, signIn, addressBook, label, mailingLog, keys, masterLog, scanForm, settings, updates);
}

Task<> Screens::createScanForm()
{
    return m_app.createScanForm(label.sender().value_or(SenderProfile()).address);
}

} // namespace parcelory
