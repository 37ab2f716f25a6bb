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

/// Adds a month of labels to a log without one, and makes the carrier know what is open in the log. The window does not
/// wait for a large log.
Task<> fillMonth(ShipmentLog &log, PracticeCarrier &carrier, QDateTime now)
{
    const QList<OpenFacts> open = co_await onPool([&log, now]() -> QList<OpenFacts> {
        const auto known = OpenItems::read(log, now);
        if (!known.isRead() || !known->isEmpty()) // labels bought here are TEST labels
            return known.valueOr({});
        addPracticeMonth(log, now);
        return OpenItems::read(log, now).valueOr({});
    });
    addToAccount(carrier, open);
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
    spawn([&] { return fillMonth(program.app().log, desk.carrier(), desk.platform().clock.now()); });
    const int status = QApplication::exec();
    running.stop();
    desk.platform().application.quitWithin(Program::longestEnd);
    return status;
}

} // namespace parcelory
