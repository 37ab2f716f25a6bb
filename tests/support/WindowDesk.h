#pragma once

#include "support/CarrierDesk.h" // IWYU pragma: export
#include "ui/Program.h"          // IWYU pragma: export
#include "ui/WindowKeyboard.h"
#include "ui/WindowPrompts.h"
#include "ui/label/LabelView.h"
#include "ui/parts/Button.h"   // IWYU pragma: export
#include "ui/parts/Dialog.h"   // IWYU pragma: export
#include "ui/parts/LineEdit.h" // IWYU pragma: export

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QWindow>

namespace parcelory::test {

/// The program with its real window over the practice carrier. Keys and clicks go to the native window, like a
/// person's, and not to a widget.
struct WindowDesk : CarrierDesk {
    WindowPrompts windowPrompts;
    WindowKeyboard windowKeyboard{[this](const QKeyEvent &) { return clock.elapsed() + std::chrono::seconds(5); }};
    Platform world;
    std::unique_ptr<Program> program;

    /// `log`: what the mailing log's file holds at the start. `backOffice`: a server that can be reached.
    explicit WindowDesk(bool practice = false, const QByteArray &log = {}, const QUrl &backOffice = {})
        : world(with({.prompts = &windowPrompts, .keyboard = &windowKeyboard, .web = {}}))
    {
        world.practice = practice;
        if (!backOffice.isEmpty())
            world.deployment.backOffice = backOffice;
        clock.start = QDateTime::currentDateTime(); // the practice carrier uses the real date
        preferences.setValue(QStringLiteral("printer.zebraQueue"), QStringLiteral("ZD421"));
        processes.behave = [](const QString &, const QStringList &arguments) {
            const bool list = arguments.first() == QStringLiteral("-v");
            return ProcessOutcome{0, list ? "device for ZD421: usb://Zebra/ZD421\n" : "", {}};
        };
        if (QFile file(path(QStringLiteral("mailing_log.sqlite"))); !log.isEmpty() && file.open(QIODevice::WriteOnly))
            file.write(log);
        program = std::make_unique<Program>(world, windowPrompts);
        window().show();
        // On a busy machine the window manager may overlook a window that follows another one closely.
        for (int tries = 0; !QTest::qWaitForWindowActive(&window(), 2000); ++tries) {
            if (tries == 29)
                qFatal("the window did not become active");
            window().activateWindow();
        }
        program->start();
        app().flow = AppFlow::main;
        wait([this] { return program->screens().keys.mode != PostageMode::unknown; });
        settleAll();
    }
    ~WindowDesk()
    {
        // Unfinished work reports to the program in a later turn of the event loop. That must happen now: the next desk
        // turns the loop when this program no longer exists.
        runUntil([this] { return !program->screens().masterLog.busy && !program->screens().endOfDay.isAsking(); },
                 &clock);
        endRequests();
        runTask(program->screens().keys.refresh()); // these threads run jobs in order, so these are their last
        runTask(app().credentials.stored());
        constexpr int longestChain = 32; // more jobs than a coroutine starts in sequence
        settleBook(program->screens().addressBook, longestChain);
        endRequests(); // a job may have led to a request
    }

    MainWindow &window() { return program->window(); }
    AppState &app() { return program->app(); }
    LabelScreen &label() { return program->screens().label; }

    template <class Done>
    void wait(Done done, const std::source_location &caller = std::source_location::current())
    {
        runUntil(done, &clock, caller);
        settleAll();
    }
    /// Processes events until no follow-up events are left.
    void settleAll()
    {
        for (int turn = 0; turn < 4; ++turn)
            settle();
    }
    void idle(const std::source_location &caller = std::source_location::current())
    {
        settleAll();
        wait([this] { return !label().busy; }, caller);
    }

    /// Waits until a dialog has the focus and returns it. Fake time does not advance.
    Dialog *dialog(const std::source_location &caller = std::source_location::current())
    {
        const auto isFocused = [] {
            const QWidget *modal = QApplication::activeModalWidget();
            return modal && QGuiApplication::focusWindow() == modal->windowHandle();
        };
        runUntil(isFocused, nullptr, caller);
        return qobject_cast<Dialog *>(QApplication::activeModalWidget());
    }

    /// Waits for a dialog and for the time during which it takes neither keys nor clicks.
    Dialog *readyDialog(const std::source_location &caller = std::source_location::current())
    {
        Dialog *shown = dialog(caller);
        clock.advance(Dialog::keyGuard);
        return shown;
    }
    /// Presses a key in the focused window.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QWindow *target = QGuiApplication::focusWindow();
        QTest::keyClick(target ? target : window().windowHandle(), key, modifiers);
        settleAll();
    }
    void pressBuy()
    {
        press(Qt::Key_Return, Qt::ControlModifier);
        idle();
    }
    void type(const QString &text)
    {
        for (const QChar letter : text) {
            clock.advance(std::chrono::milliseconds(60)); // a fast typist, but slower than a scanner
            QWindow *target = QGuiApplication::focusWindow();
            QTest::keyClick(target ? target : window().windowHandle(), letter.toLatin1());
        }
        settleAll();
    }
    void click(QWidget *widget, int times = 1)
    {
        QWidget *top = widget->window();
        const QPoint place = widget->mapTo(top, widget->rect().center());
        for (int time = 0; time < times; ++time)
            QTest::mouseClick(top->windowHandle(), Qt::LeftButton, {}, place);
        settleAll();
    }

    template <class Widget = QWidget>
    Widget *named(const QString &accessibleName, QWidget *root = nullptr)
    {
        for (Widget *widget : (root ? root : &window())->template findChildren<Widget *>()) {
            if (widget->isVisible() && widget->accessibleName() == accessibleName)
                return widget;
        }
        qFatal("no widget is called %s", qUtf8Printable(accessibleName));
    }
    Button *button(const QString &text, QWidget *root = nullptr)
    {
        for (Button *found : (root ? root : &window())->findChildren<Button *>()) {
            if (found->text() == text && found->isVisible())
                return found;
        }
        qFatal("no button says %s", qUtf8Printable(text));
    }
    /// The enabled buttons that are filled with a color.
    QStringList solidButtons()
    {
        QStringList texts;
        for (const Button *found : window().findChildren<Button *>()) {
            const bool solid = found->kind() == Button::Kind::solid || found->kind() == Button::Kind::test ||
                               found->kind() == Button::Kind::practice;
            if (solid && found->isEnabled() && found->isVisible())
                texts += found->text();
        }
        return texts;
    }
    QString focusName() const
    {
        const QWidget *focus = QApplication::focusWidget();
        if (!focus)
            return QStringLiteral("nothing");
        const auto *pressed = qobject_cast<const QAbstractButton *>(focus);
        return focus->accessibleName().isEmpty() && pressed ? pressed->text() : focus->accessibleName();
    }

    /// Fills in a one-pound parcel that needs only rates.
    void compose(const ShippoAddress &to)
    {
        app().draftTo = to;
        label().weightLb = QStringLiteral("1");
        label().mailpiece = PresetMailpiece{QStringLiteral("uline-s-5148")};
        settleAll();
    }
    void composeAndRate(const ShippoAddress &to)
    {
        compose(to);
        press(Qt::Key_K, Qt::ControlModifier);
        idle();
    }
    qsizetype purchases() const { return sent("/transactions/").size(); }
};

} // namespace parcelory::test
