#include "practice/PracticeWindow.h"

#include "practice/PracticeDesk.h"
#include "practice/PracticeMenu.h"
#include "practice/PracticeSamples.h"
#include "ui/Program.h"
#include "ui/WindowKeyboard.h"
#include "ui/WindowPrompts.h"

#include <QApplication>
#include <QMenuBar>

namespace parcelory {

int runPracticeWindow(const QString &folder)
{
    Program::makeLook();
    WindowPrompts prompts;
    WindowKeyboard keyboard;
    PracticeDesk desk(folder, prompts, keyboard);
    { // before the program reads it
        LocalAddressStore book(desk.platform().dataFolder);
        addPracticeAddresses(book);
    }
    Program program(desk.platform(), prompts, PracticeDesk::signInNote());
    addPracticeMenu(program.window().menuBar(), desk);
    program.window().show();
    program.start();
    return QApplication::exec();
}

} // namespace parcelory
