#include "practice/PracticeScreens.h"

#include "core/AppError.h"
#include "core/Task.h"
#include "practice/Gallery.h"
#include "practice/PracticeDesk.h"
#include "practice/PracticeTime.h"
#include "practice/carrier/PracticeCarrier.h"
#include "ui/Program.h"
#include "ui/WindowKeyboard.h"
#include "ui/WindowPrompts.h"
#include "ui/theme/Theme.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QPainter>
#include <QTemporaryDir>

#include <cstdio>
#include <exception>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// Runs a gallery on its own practice desk; true if every screen was drawn.
bool draw(const QDir &folder, const QString &mode)
{
    const bool isDay = mode == u"day";
    posePracticeTime(isDay ? QDateTime(QDate(2026, 11, 20), QTime(16, 12))
                           : QDateTime(QDate(2026, 11, 22), QTime(9, 41)));
    const QTemporaryDir records;
    WindowPrompts prompts;
    WindowKeyboard keyboard;
    PracticeDesk desk(records.path(), prompts, keyboard);
    if (!mode.isEmpty() && !isDay)
        desk.pose(mode == u"live" ? PracticeCarrier::liveToken : PracticeCarrier::testToken);
    Program program(desk.platform(), prompts, PracticeDesk::signInNote());
    program.start();
    Gallery gallery(desk, program, folder);
    bool done = false;
    spawn([&]() -> Task<> {
        try {
            if (mode.isEmpty())
                co_await gallery.drawPractice();
            else if (isDay)
                co_await gallery.drawDay();
            else
                co_await gallery.drawMode(mode);
            done = true;
        } catch (const std::exception &error) {
            std::fprintf(stderr, "parcelory: %s\n", qUtf8Printable(describe(error)));
        }
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    });
    QApplication::exec();
    return done;
}

} // namespace

int drawScreens(const QString &path)
{
    const QDir folder(path);
    if (!folder.mkpath(u"."_s))
        throw AppError(u"The folder %1 cannot be made."_s.arg(path));
    Program::makeLook();
    Theme::current().setDark(false);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setCursorFlashTime(0); // a blinking cursor would be in some pictures only
    const bool done = draw(folder, {}) && draw(folder, u"day"_s) && draw(folder, u"test"_s) && draw(folder, u"live"_s);
    return done ? 0 : 1;
}

} // namespace parcelory
