#include "practice/PracticeWindow.h"

#include "core/Task.h"
#include "platform/RunningProgram.h"
#include "practice/PracticeDesk.h"
#include "practice/PracticeMenu.h"
#include "practice/PracticeMonth.h"
#include "practice/PracticeSamples.h"
#include "records/OpenItems.h"
#include "records/ShipmentLog.h"
#include "ui/Program.h"
#include "ui/WindowKeyboard.h"
#include "ui/WindowPrompts.h"

#include <QApplication>

namespace parcelory {

namespace {

void fillMonth(ShipmentLog &log, const QDateTime &now)
{
    const auto known = OpenItems::read(log, now);
    if (known.isRead() && known->isEmpty()) // labels bought here are TEST labels
        addPracticeMonth(log, now);
}

} // namespace

int runPracticeWindow(const QString &folder)
{
    Program::makeLook();
    WindowPrompts prompts;
    WindowKeyboard keyboard;
    PracticeDesk desk(folder, prompts, keyboard);
    RunningProgram running(desk.platform().dataFolder);
    if (running.handOver())
        return 0;
    { // before the program reads it
        LocalAddressStore book(desk.platform().dataFolder);
        addPracticeAddresses(book);
    }
    Program program(desk.platform(), prompts, PracticeDesk::signInNote());
    addPracticeMenu(program, desk);
    program.window().show();
    running.accept([&program] { program.window().comeToFront(); });
    program.start();
    spawn([&log = program.app().log, now = desk.platform().clock.now()] {
        return onPool([&log, now] { fillMonth(log, now); }); // the window does not wait for a large log
    });
    return QApplication::exec();
}

} // namespace parcelory
