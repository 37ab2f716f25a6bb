#include "platform/SystemPlatform.h"

#include "core/Deployment.h"
#include "core/PrivateFiles.h"
#include "core/ports/Keyboard.h"
#include "core/ports/Prompts.h"

#include <QStandardPaths>

#ifdef Q_OS_MACOS
#include "platform/ContactsMac.h"
#endif

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

std::shared_ptr<ContactsSource> systemContacts()
{
#ifdef Q_OS_MACOS
    return std::make_shared<ContactsMac>();
#else
    return nullptr;
#endif
}

} // namespace

QDir applicationSupportFolder()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + u"/Parcelory"_s);
}

SystemPlatform::SystemPlatform(Prompts &prompts, Keyboard &keyboard)
    : m_web({.folder = applicationSupportFolder().filePath(u"Deskline"_s)}),
      m_platform{.http = m_http,
                 .clock = m_clock,
                 .secrets = m_secrets,
                 .preferences = m_preferences,
                 .prompts = prompts,
                 .desktop = m_desktop,
                 .processes = m_processes,
                 .hid = m_hid,
                 .keyboard = keyboard,
                 .web = m_web,
                 .application = m_application,
                 .dataFolder = applicationSupportFolder(),
                 .deployment = Deployment::builtIn(),
                 .contacts = systemContacts()}
{
    makePrivate(m_platform.dataFolder); // an earlier version left the modes to the umask
}

} // namespace parcelory
