#pragma once

#include "core/Task.h"
#include "practice/PracticeDesk.h"
#include "ui/Program.h"

#include <QDir>
#include <QSize>

#include <functional>

class QImage;

namespace parcelory {

/// Draws the screens of one running program.
class Gallery {
public:
    static constexpr QSize usualSize{1280, 800};

    Gallery(PracticeDesk &desk, Program &program, QDir folder);

    Task<> drawPractice();
    Task<> drawMode(QString name);
    /// The afternoon of a day with something to do on every card.
    Task<> drawDay();

private:
    AppState &app() { return m_program.app(); }
    LabelScreen &label() { return m_program.screens().label; }
    Clock &clock() { return m_desk.platform().clock; }

    Task<> until(std::function<bool()> reached);
    Task<> settled();
    Task<> save(QString name);
    Task<> saveDark(QString name);
    /// A secondary window; `size`: on a larger screen than the one without a display.
    void saveWindow(const QString &title, const QString &name, QSize size = {});
    Task<> drawSignIn();
    Task<> drawAddressBook();
    Task<> drawAddressSheet();
    Task<> drawInvoice();
    Task<> drawComposing();
    Task<> drawDialogs();
    Task<> drawHelp();
    Task<> drawAbroad();
    Task<> drawBuying();
    Task<> drawLabelWindow();
    Task<> drawDoubt();
    Task<> drawRecords();
    Task<> drawMasterLog();
    Task<> drawReprint();
    Task<> drawScanForm();
    Task<> drawRestore();
    Task<> drawSettings();
    Task<> drawLogs(QString name);
    Task<> drawOpenItems();
    void compose(const ShippoAddress &to);
    QImage picture();

    PracticeDesk &m_desk;
    Program &m_program;
    QDir m_folder;
};

} // namespace parcelory
