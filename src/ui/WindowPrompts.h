#pragma once

#include "core/ports/Prompts.h"

#include <QFileDialog>
#include <QPointer>
#include <QWidget>

namespace parcelory {

class Clock;
class Handbook;

/// Prompts as dialogs over the program's window. An open dialog blocks nothing: the answer resumes the caller.
class WindowPrompts : public Prompts {
public:
    /// Call before the first prompt: dialogs need the clock, and alerts offer help from the handbook.
    void attach(QWidget *window, Clock &clock, Handbook &handbook);

    Task<> alert(QString title, QString text) override;
    Task<int> choose(Question question) override;
    Task<QString> saveFile(QString title, QString proposed) override;
    Task<QString> openFile(QString title, QString filter) override;
    Task<QString> openFolder(QString title) override;

private:
    QWidget *activeOrMain() const;
    Task<int> run(QDialog *dialog);
    Task<QString> pickFile(QFileDialog *dialog);

    QPointer<QWidget> m_window;
    Clock *m_clock = nullptr;
    Handbook *m_handbook = nullptr;
};

} // namespace parcelory
