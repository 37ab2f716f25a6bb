#pragma once

#include "app/Screens.h"
#include "shell/ErrorLog.h"
#include "ui/MainWindow.h"
#include "ui/WindowPrompts.h"
#include "ui/theme/SystemAppearance.h"

namespace parcelory {

/// The running program with its window: services, screen models and views over one world.
class Program {
public:
    /// Call after makeLook(). `prompts` is the one in `platform`; `signInNote` is an extra line of the sign-in screen.
    Program(Platform &platform, WindowPrompts &prompts, const QString &signInNote = {});
    ~Program();

    /// Gives the application its theme, light or dark as the system is.
    static void makeLook();

    MainWindow &window() { return *m_window; }
    AppState &app() { return m_app; }
    Screens &screens() { return m_screens; }

private:
    ErrorLog m_errors;
    AppState m_app;
    Screens m_screens;
    SystemAppearance m_appearance;
    std::unique_ptr<MainWindow> m_window;
};

} // namespace parcelory
