#include "ui/WindowPrompts.h"

#include "app/handbook/Handbook.h"
#include "core/Task.h"
#include "core/ports/Prompts.h"
#include "ui/ReviewDialog.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <coroutine>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

const QString allFiles = u"All files (*)"_s;

/// Suspends until the dialog is closed and gives its result.
struct Closing {
    QDialog *dialog;
    int result = QDialog::Rejected;

    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> waiting)
    {
        const auto finish = [this, waiting](int answer) {
            result = answer;
            // Posted, so that the caller does not resume while the dialog is closing.
            QMetaObject::invokeMethod(qApp, [waiting] { waiting.resume(); }, Qt::QueuedConnection);
        };
        // Only once, because a dialog that is closed again before its deletion emits finished again.
        QObject::connect(dialog, &QDialog::finished, dialog, finish, Qt::SingleShotConnection);
    }
    int await_resume() const noexcept { return result; }
};

} // namespace

void WindowPrompts::attach(QWidget *window, Clock &clock, Handbook &handbook)
{
    m_window = window;
    m_clock = &clock;
    m_handbook = &handbook;
}

/// A question belongs in front of the window whose button was pressed.
QWidget *WindowPrompts::activeOrMain() const
{
    QWidget *active = QApplication::activeWindow();
    return active && active->windowType() == Qt::Window ? active : m_window.data();
}

Task<int> WindowPrompts::run(QDialog *dialog)
{
    const QPointer<QWidget> focus = dialog->parentWidget() ? dialog->parentWidget()->focusWidget() : nullptr;
    dialog->open();
    const int result = co_await Closing{dialog};
    if (focus)
        focus->setFocus(); // the clerk continues where the dialog interrupted
    co_return result;
}

Task<QString> WindowPrompts::pickFile(QFileDialog *dialog)
{
    const int result = co_await run(dialog);
    const QString path = result == QDialog::Accepted ? dialog->selectedFiles().value(0) : QString();
    dialog->deleteLater();
    co_return path;
}

Task<QString> WindowPrompts::saveFile(QString title, QString proposed)
{
    auto *dialog = new QFileDialog(QApplication::activeWindow() ? QApplication::activeWindow() : m_window.data(), title,
                                   QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    dialog->setAcceptMode(QFileDialog::AcceptSave); // asks before it replaces a file
    const QString suffix = QFileInfo(proposed).suffix();
    dialog->setNameFilters({u"%1 files (*.%2)"_s.arg(suffix.toUpper(), suffix), allFiles});
    dialog->setDefaultSuffix(suffix);
    const QFileInfo file(proposed);
    if (file.isAbsolute() && file.dir().exists())
        dialog->setDirectory(file.dir());
    dialog->selectFile(file.fileName());
    co_return co_await pickFile(dialog);
}

Task<QString> WindowPrompts::openFile(QString title, QString filter)
{
    auto *dialog = new QFileDialog(QApplication::activeWindow() ? QApplication::activeWindow() : m_window.data(), title,
                                   QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setNameFilters({filter, allFiles});
    co_return co_await pickFile(dialog);
}

Task<QString> WindowPrompts::openFolder(QString title)
{
    auto *dialog = new QFileDialog(QApplication::activeWindow() ? QApplication::activeWindow() : m_window.data(), title,
                                   QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
    dialog->setFileMode(QFileDialog::Directory);
    co_return co_await pickFile(dialog);
}

Task<> WindowPrompts::alert(QString title, QString text)
{
    Dialog *alert = makeAlert(*m_clock, title, text, m_window);
    if (const QString page = m_handbook->pageAbout(title + u'\n' + text); !page.isEmpty())
        alert->addHelp([handbook = m_handbook, page] { spawn([handbook, page] { return handbook->open(page); }); });
    co_await run(alert);
}

Task<int> WindowPrompts::choose(Question question)
{
    const int safeChoice = question.safeChoice;
    const int result = co_await run(makeQuestion(*m_clock, question, activeOrMain()));
    co_return result == QDialog::Rejected ? safeChoice : result - 1;
}

} // namespace parcelory
