#include "app/Screens.h"

#include "app/AppState.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "records/DraftStore.h"
#include "records/SenderProfile.h"

#include <optional>

namespace parcelory {

Screens::Screens(AppState &app)
    : signIn(app), addressBook(app), label(app), mailingLog(app), keys(app), masterLog(app, keys), scanForm(app),
      settings(app), updates(app), m_app(app)
{
    connect(&mailingLog, &MailingLogScreen::reprinted, &label, &LabelScreen::takeReprint);
    buildOn(app, signIn, addressBook, label, mailingLog, keys, masterLog, scanForm, settings, updates);
}

Task<> Screens::restartIntoUpdate()
{
    m_app.drafts.save(label.saved());
    co_await onPool([&drafts = m_app.drafts] { drafts.flush(); });
    co_await updates.relaunchNow();
    if (!updates.isRelaunching())
        m_app.drafts.clear(); // the clerk goes on with the draft on the screen
}

void Screens::takeSavedDraft()
{
    const std::optional<SavedDraft> draft = m_app.drafts.saved();
    if (!draft)
        return;
    m_app.drafts.clear(); // a later start must not bring back a parcel that has its label by then
    label.restore(*draft);
    if (!draft->recipient.isEmpty())
        label.banner = Banner{QStringLiteral("The draft is back after the update — validate the address again.")};
}

Task<> Screens::createScanForm()
{
    return m_app.createScanForm(label.sender().value_or(SenderProfile()).address);
}

} // namespace parcelory
