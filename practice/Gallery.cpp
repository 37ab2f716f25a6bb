#include "practice/Gallery.h"

#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "compose/Mailpieces.h"
#include "compose/Services.h"
#include "core/AppError.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "practice/PracticeDesk.h"
#include "practice/PracticeSamples.h"
#include "ui/Program.h"
#include "ui/WindowPrompts.h"
#include "ui/settings/SettingsView.h"
#include "ui/theme/Theme.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QPainter>
#include <QTemporaryDir>

#include <cstdio>
#include <functional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

Gallery::Gallery(PracticeDesk &desk, Program &program, QDir folder) : m_desk(desk), m_program(program), m_folder(folder)
{
    m_program.window().resize(usualSize);
    m_program.window().show();
    m_program.screens().tracking.stop(); // its answers would be in some pictures only
}

Task<> Gallery::until(std::function<bool()> reached)
{
    for (int turn = 0; turn < 3000; ++turn) {
        co_await clock().sleep(20ms);
        if (reached())
            co_return;
    }
    throw AppError(u"The practice desk did not reach a state that was to be drawn."_s);
}

/// The window and what is open above it: a dialog over the shaded window, or a list.
QImage Gallery::picture()
{
    QWidget &window = m_program.window();
    QImage image = window.grab().toImage();
    QPainter painter(&image);
    const auto middle = [&](const QSize &inner) {
        return QPoint((window.width() - inner.width()) / 2, (window.height() - inner.height()) / 2);
    };
    if (QWidget *dialog = QApplication::activeModalWidget()) {
        painter.fillRect(window.rect(), Theme::current().tokens().shade);
        const QPoint place = middle(dialog->size());
        painter.fillRect(QRect(place, dialog->size()).adjusted(-1, -1, 1, 1), Theme::current().tokens().button);
        painter.drawPixmap(place, dialog->grab());
    }
    if (QWidget *list = QApplication::activePopupWidget())
        painter.drawPixmap(window.mapFromGlobal(list->pos()), list->grab());
    return image;
}

/// Ends when nothing that the screen shows is still being read, looked up or drawn on another thread.
Task<> Gallery::settled()
{
    constexpr int enough = 3; // the end of one work often starts the next
    int quietTurns = 0;
    co_await until([&quietTurns] {
        quietTurns = workPool().activeThreadCount() == 0 ? quietTurns + 1 : 0;
        return quietTurns == enough;
    });
}

Task<> Gallery::save(QString name)
{
    co_await settled();
    const QString path = m_folder.filePath(name + u".png"_s);
    if (!picture().save(path))
        throw AppError(u"%1 could not be written."_s.arg(path));
    std::printf("%s\n", qUtf8Printable(path));
}

Task<> Gallery::saveDark(QString name)
{
    Theme::current().setDark(true);
    co_await save(name + u"-dark"_s);
    Theme::current().setDark(false);
}

void Gallery::saveWindow(const QString &title, const QString &name, QSize size)
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->windowTitle() != title)
            continue;
        if (!size.isEmpty())
            window->resize(size);
        window->grab().save(m_folder.filePath(name + u".png"_s));
    }
}

void Gallery::compose(const ShippoAddress &to)
{
    label().clearDraft();
    app().draftTo = to;
    label().mailpiece = PresetMailpiece{u"uline-s-5148"_s};
    label().service = ServiceOption::signature;
    label().weightLb = u"1"_s;
    label().weightOz = u"1.3"_s;
    label().insuranceValue = u"412.00"_s;
    label().reference = u"48213"_s;
    label().descriptionText = u"Coins"_s;
}

Task<> Gallery::drawPractice()
{
    co_await drawSignIn();
    m_desk.scale().put(17.3);
    co_await until([this] { return app().scale.reading() && !m_program.screens().keys.statusText.value().isEmpty(); });
    co_await drawAddressBook();
    co_await drawInvoice();
    co_await drawComposing();
    co_await drawDialogs();
    co_await drawAbroad();
    co_await drawBuying();
    co_await drawRecords();
    co_await drawReprint();
    co_await drawDoubt();
    co_await drawMasterLog();
    co_await drawScanForm();
    co_await drawSettings();
}

/// The screens with a test or a live key, without any practice mode marker.
Task<> Gallery::drawMode(QString name)
{
    app().flow = AppFlow::main;
    m_desk.scale().put(17.3);
    co_await until([this] { return app().scale.reading() && !m_program.screens().keys.statusText.value().isEmpty(); });
    compose(practiceRecipient());
    co_await label().validate();
    co_await save(u"new-label-"_s + name);
    app().tab = MainTab::settings;
    m_program.window().settingsView().showPage(SettingsView::Page::keys);
    co_await save(u"settings-api-keys-"_s + name);
    m_program.window().resize(m_program.window().minimumSize());
    co_await drawLogs(name);
    if (name == u"live")
        co_await drawOpenItems();
}

} // namespace parcelory
