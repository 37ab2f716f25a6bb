#pragma once

#include "core/ports/Prompts.h"

#include <QFileDialog>
#include <QPointer>
#include <QWidget>

namespace parcelory {

class Clock;

/// Prompts as dialogs over the program's window. Nothing waits while one is open: the answer resumes whoever asked.
class WindowPrompts : public Prompts {
public:
    /// Until there is a window, dialogs stand by themselves.
    void attach(QWidget *window, Clock &clock);

    Task<> alert(QString title, QString text) override;
    Task<int> choose(Question question) override;
    Task<QString> saveFile(QString title, QString proposed) override;
    Task<QString> openFile(QString title) override;

private:
    Task<int> run(QDialog *dialog);
    Task<QString> pickFile(QFileDialog *dialog);

    QPointer<QWidget> m_window;
    Clock *m_clock = nullptr;
};

} // namespace parcelory
