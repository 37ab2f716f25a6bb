#include "practice/PracticeDesk.h"

#include "backoffice/SavedCredentials.h"
#include "carrier/ShippoKeys.h"
#include "core/AppError.h"
#include "core/Deployment.h"
#include "core/SettingsKeys.h"
#include "core/ports/Keyboard.h"
#include "core/ports/Preferences.h"
#include "core/ports/Prompts.h"
#include "platform/SystemPlatform.h"
#include "practice/backoffice/PracticeBackOffice.h"
#include "practice/carrier/PracticeCarrier.h"

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

QDir practiceFolder(const QString &folder)
{
    const QDir chosen(folder.isEmpty() ? applicationSupportFolder().absolutePath() + u" Practice"_s : folder);
    if (chosen == applicationSupportFolder())
        throw AppError(u"The practice desk cannot use the folder of the real records — choose another folder."_s);
    if (!chosen.mkpath(u"."_s))
        throw AppError(u"The practice folder %1 cannot be made."_s.arg(chosen.absolutePath()));
    return chosen;
}

Deployment practiceDeployment(const PracticeCarrier &carrier, const PracticeBackOffice &backOffice)
{
    Deployment deployment = Deployment::builtIn();
    deployment.carrierApi = carrier.baseUrl();
    deployment.backOffice = backOffice.baseUrl();
    deployment.updateFeed = carrier.baseUrl().resolved(QUrl(u"app/parcelory-latest.json"_s)).toString();
    return deployment;
}

} // namespace

PracticeDesk::PracticeDesk(const QString &folder, Prompts &prompts, Keyboard &keyboard)
    : m_folder(practiceFolder(folder)), m_preferences(m_folder.filePath(u"preferences.ini"_s)),
      m_printer(QDir(m_folder.filePath(u"printed"_s))), m_desktop(QDir(m_folder.filePath(u"viewer"_s))),
      m_web({.folder = m_folder.filePath(u"deskline"_s), .reach = WebEngineSession::Reach::loopbackOnly}),
      m_platform{.http = m_http,
                 .clock = m_clock,
                 .secrets = m_secrets,
                 .preferences = m_preferences,
                 .prompts = prompts,
                 .desktop = m_desktop,
                 .processes = m_printer,
                 .hid = m_scale,
                 .keyboard = keyboard,
                 .web = m_web,
                 .application = m_application,
                 .dataFolder = m_folder,
                 .deployment = practiceDeployment(m_carrier, m_backOffice),
                 .practice = true}
{
    m_carrier.keepIn(m_folder.filePath(u"practice_carrier.json"_s));
    ShippoKeys keys(m_secrets, m_preferences);
    keys.set(PracticeCarrier::testToken, u"Practice"_s);
    keys.makeActive(u"Practice"_s);
    m_secrets.set(PracticeBackOffice::user, SavedCredentials::userAccount);
    m_secrets.set(PracticeBackOffice::password, SavedCredentials::passwordAccount);
    if (read(m_preferences, settings::zebraQueue).isEmpty())
        write(m_preferences, settings::zebraQueue, PracticePrinter::labelQueue);
    if (read(m_preferences, settings::documentQueue).isEmpty())
        write(m_preferences, settings::documentQueue, PracticePrinter::documentQueue);
}

QString PracticeDesk::signInNote()
{
    return u"This is the practice desk: sign in as %1 with the password “%2”. Nothing is sent, charged or printed, and "
           "its records are kept apart from the real ones."_s.arg(PracticeBackOffice::user,
                                                                  PracticeBackOffice::password);
}

void PracticeDesk::pose(const QString &token)
{
    m_platform.practice = false;
    ShippoKeys keys(m_secrets, m_preferences);
    keys.remove(u"Practice"_s);
    const QString name = ShippoKeys::isTest(token) ? u"Test Mode"_s : u"Live Mode"_s;
    keys.set(token, name);
    keys.makeActive(name);
}

} // namespace parcelory
