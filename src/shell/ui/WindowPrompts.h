#pragma once

#include "core/ports/Prompts.h"

#include <QPointer>
#include <QWidget>

namespace parcelory {

class Clock;
class Dialog;

/// Prompts as dialogs over the program's window. Nothing waits while one is open: the answer resumes whoever asked.
class WindowPrompts : public Prompts {
public:
    /// Until there is a window, dialogs stand by themselves.
    void attach(QWidget *window, Clock &clock);

    Task<> alert(QString title, QString text) override;
    Task<int> choose(Question question) override;

private:
    Task<int> run(Dialog *dialog);

    QPointer<QWidget> m_window;
    Clock *m_clock = nullptr;
};

} // namespace parcelory
