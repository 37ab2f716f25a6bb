#include "ui/Program.h"

#include "app/purchase/LabelPrinting.h"
#include "core/Platform.h"
#include "core/Task.h"
#include "ui/MainWindow.h"
#include "ui/WindowPrompts.h"
#include "ui/parts/Accessibility.h"
#include "ui/theme/Icons.h"
#include "ui/theme/SystemAppearance.h"
#include "ui/theme/Theme.h"
#include "ui/theme/Tokens.h"

#include <QApplication>
#include <QStyleHints>

#include <memory>

namespace parcelory {

void Program::makeLook()
{
    Theme::install(SystemAppearance::paletteIsDark());
    installAccessibility();
    QGuiApplication::styleHints()->setTabFocusBehavior(Qt::TabFocusAllControls); // buttons, too, on macOS
    QApplication::setWindowIcon(themeIcon(QStringLiteral("parcelory_mark"), &Tokens::accent));
}

Program::Program(Platform &platform, WindowPrompts &prompts, const QString &signInNote)
    : m_errors(platform), m_app(platform), m_screens(m_app)
{
    QObject::connect(&m_appearance, &SystemAppearance::darkChanged, [](bool dark) { Theme::current().setDark(dark); });
    m_window = std::make_unique<MainWindow>(m_app, m_screens, signInNote);
    prompts.attach(m_window.get(), platform.clock, m_screens.handbook);
}

void Program::start()
{
    spawn([&draft = m_screens.draft] { return draft.takeStored(); });
    spawn([&settings = m_screens.settings] { return settings.checkStorage(); });
    spawn([&keys = m_screens.keys] { return keys.refresh(); });
    spawn([&book = m_screens.addressBook] { return book.reload(); });
    spawn([&screens = m_screens] { return screens.startRecords(); });
    spawn([&rules = m_app.rules] { return rules.load(); });
    spawn([&items = m_screens.openItems] { return items.start(); });
    spawn([&tracking = m_screens.tracking] { return tracking.start(); });
    spawn([] { return sweepPrintFiles(); });
    spawn([] { return UpdateChecker::sweep(); });
    spawn([&handbook = m_screens.handbook] {
        return handbook.load(Handbook::places(QCoreApplication::applicationDirPath()));
    });
    if (m_screens.settings.zebraQueue.value().isEmpty())
        spawn([&settings = m_screens.settings] { return settings.refreshPrinters(); });
    spawn([&purchases = m_screens.label.purchases] { return purchases.resume(); });
    spawn([&updates = m_screens.updates] { return updates.checkOnLaunch(); });
}

Program::~Program()
{
    m_window.reset();
    m_screens.mailingLog.cancel();
    m_screens.addressBook.cancelImport();
    m_screens.records.cancel();
    m_screens.updates.stop();
    m_screens.openItems.stop();
    m_screens.tracking.stop();
    m_screens.addressBook.flush();
    workPool().waitForDone(); // running jobs report to the screens
}

} // namespace parcelory
