#pragma once

#include "app/Screens.h"
#include "shell/ErrorLog.h"
#include "ui/MainWindow.h"
#include "ui/WindowPrompts.h"
#include "ui/theme/SystemAppearance.h"

#include <chrono>
#include <memory>

namespace parcelory {

/// The running program with its window: services, screen models and views over one Platform.
class Program {
public:
    /// How long the end waits for work after the window is gone. A print job is the longest that must be noted: up to
    /// four tools (LabelPrinter::toolLimit), and the log.
    static constexpr std::chrono::minutes longestEnd{3};

    /// Call after makeLook(). `prompts` is the object in `platform`; `signInNote` is an extra line on the sign-in page.
    Program(Platform &platform, WindowPrompts &prompts, const QString &signInNote = {});
    ~Program();

    /// Installs the application's theme, light or dark like the system.
    static void makeLook();

    /// Starts what the program does by itself: brings the last draft back, reads the keys and the address book, tells
    /// of a damaged mailing log and of settings that cannot be stored, deletes leftover temporary files, looks for the
    /// label printer at the first start, resumes unresolved purchases and looks for an update. Call once, when the
    /// window is shown.
    void start();

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
