#include "practice/Gallery.h"

#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "app/logs/MasterLogScreen.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "practice/PracticeDay.h"
#include "practice/PracticeDesk.h"
#include "practice/PracticeMonth.h"
#include "practice/PracticeSamples.h"
#include "records/StatusWords.h"
#include "ui/Program.h"
#include "ui/WindowPrompts.h"
#include "ui/log/MailingLogView.h"
#include "ui/parts/RowTable.h"
#include "ui/theme/Theme.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QPainter>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

Task<> Gallery::drawRecords()
{
    app().tab = MainTab::mailingLog;
    co_await save(u"mailing-log-one"_s);
    MailingLogScreen &log = m_program.screens().mailingLog;
    log.selected = app().log.records().first().id;
    co_await until([&log] { return log.preview.sight.value().picture != nullptr; });
    co_await save(u"mailing-log-label"_s);
    co_await saveDark(u"mailing-log-label"_s);
    m_program.window().resize(m_program.window().minimumSize());
    co_await save(u"mailing-log-label-smallest"_s);
    m_program.window().resize(usualSize);
    co_await onPool([this] { addPracticeShipments(app().log); });
    co_await until([this] { return app().log.records().size() > 10; });
    m_program.screens().mailingLog.selected = app().log.records()[3].id;
    co_await save(u"mailing-log"_s);
    co_await saveDark(u"mailing-log"_s);
    m_program.screens().mailingLog.selected = app().log.records().last().id;
    co_await save(u"mailing-log-imported"_s);
    log.progress = 0.4; // as an import of many shipments shows it
    log.message = u"Importing…"_s;
    co_await save(u"mailing-log-import"_s);
    log.progress = std::nullopt;
    log.message = QString();
    log.selected = app().log.records()[1].id;
    spawn([&log] { return log.refund(*log.selectedRecord()); });
    co_await until([] { return QApplication::activeModalWidget(); });
    co_await save(u"dialog-refund"_s);
    static_cast<QDialog *>(QApplication::activeModalWidget())->reject();
    log.search = u"no such name"_s;
    co_await until([this] { return app().log.records().isEmpty(); });
    co_await save(u"mailing-log-nothing-found"_s);
    log.search = QString();
    m_program.window().openWindow(u"errorlog"_s);
    saveWindow(u"Error Log"_s, u"window-error-log"_s);
}

Task<> Gallery::drawMasterLog()
{
    MasterLogScreen &log = m_program.screens().masterLog;
    m_desk.carrier().seedHistory(18, clock().now().addSecs(-3600), 7h);
    app().tab = MainTab::masterLog;
    co_await until([&log] { return log.loaded && !log.busy; });
    log.selected = log.entries.value()[2].id;
    log.copyTracking(*log.selectedEntry());
    co_await save(u"master-log"_s);
    co_await saveDark(u"master-log"_s);
    log.to = QDate(2026, 1, 2);
    log.from = QDate(2026, 1, 1);
    co_await log.load();
    co_await save(u"master-log-nothing-found"_s);
}

/// The question before a second reprint, and about a label that does not match its parcel.
Task<> Gallery::drawReprint()
{
    MailingLogScreen &log = m_program.screens().mailingLog;
    const ShipmentRecord bought = label().last.label.value()->record;
    spawn([&log, bought] { return log.reprint(bought); });
    co_await until([] { return QApplication::activeModalWidget(); });
    co_await save(u"dialog-reprint"_s);
    static_cast<QDialog *>(QApplication::activeModalWidget())->reject();
    co_await until([&log] { return !log.busy; });
    ShipmentRecord wrong = bought;
    wrong.zpl = QByteArray(*bought.zpl).replace("APT 3B", "APT 8B");
    spawn([&log, wrong] { return log.reprint(wrong); });
    co_await until([] { return QApplication::activeModalWidget(); });
    QWidget *first = QApplication::activeModalWidget();
    static_cast<QDialog *>(first)->done(2);
    co_await until([first] { return QApplication::activeModalWidget() && QApplication::activeModalWidget() != first; });
    co_await save(u"dialog-label-differs"_s);
    co_await saveDark(u"dialog-label-differs"_s);
    static_cast<QDialog *>(QApplication::activeModalWidget())->reject();
    co_await until([&log] { return !log.busy; });
}

Task<> Gallery::drawScanForm()
{
    m_program.window().openWindow(u"scanform"_s);
    co_await settled();
    saveWindow(u"SCAN Form"_s, u"window-scan-form-empty"_s, {1070, 880});
    const QList<ShipmentRecord> labels = app().log.records();
    const auto bought = std::ranges::find_if(labels, [](const ShipmentRecord &row) { return !row.labelURL.isEmpty(); });
    co_await onPool([this, label = *bought] { return app().log.setStatus(label, wordOf(LogStatus::refundPending)); });
    m_desk.carrier().setScenario({.manifestDocuments = 2});
    spawn([this] { return app().createScanForm(label().sender().value_or(SenderProfile()).address); });
    co_await until([] { return QApplication::activeModalWidget(); });
    co_await save(u"dialog-scan-form"_s);
    static_cast<QDialog *>(QApplication::activeModalWidget())->done(2);
    co_await until([this] { return !app().scanFormBusy; });
    m_desk.carrier().setScenario({});
    co_await settled();
    saveWindow(u"SCAN Form"_s, u"window-scan-form"_s);
    app().tab = MainTab::newLabel;
    co_await save(u"new-label-scan-form"_s);
}

Task<> Gallery::drawDay()
{
    app().flow = AppFlow::main;
    co_await until([this] { return !m_program.screens().keys.statusText.value().isEmpty(); });
    addPracticeDay(app(), label().purchases, m_desk.carrier());
    const EndOfDayScreen &day = m_program.screens().endOfDay;
    m_program.window().openWindow(u"endofday"_s);
    co_await until([&day] { return !day.report.value().differences.isEmpty(); });
    co_await settled();
    const QString title = u"End of Day — PRACTICE MODE"_s;
    saveWindow(title, u"window-end-of-day"_s);
    Theme::current().setDark(true);
    co_await settled();
    saveWindow(title, u"window-end-of-day-dark"_s);
    Theme::current().setDark(false);
}

/// The logs in the smallest window, the master log after a change of the selected days.
Task<> Gallery::drawLogs(QString name)
{
    co_await onPool([this] { addPracticeShipments(app().log); });
    co_await until([this] { return app().log.records().size() > 10; });
    m_program.screens().mailingLog.selected = app().log.records()[1].id;
    app().tab = MainTab::mailingLog;
    co_await save(u"mailing-log-"_s + name);
    MasterLogScreen &log = m_program.screens().masterLog;
    for (const QString &token : {PracticeCarrier::testToken, PracticeCarrier::liveToken})
        m_desk.carrier().seedHistory(12, clock().now().addSecs(-3600), 9h, token);
    app().tab = MainTab::masterLog;
    co_await until([&log] { return log.loaded && !log.busy; });
    log.from = log.to.value().addDays(-40);
    log.loaded = false; // as after a change of the field
    co_await save(u"master-log-"_s + name);
}

Task<> Gallery::drawOpenItems()
{
    OpenItemsScreen &items = m_program.screens().openItems;
    app().tab = MainTab::mailingLog;
    items.isShown = true;
    m_program.screens().mailingLog.message = QString();
    m_program.screens().tracking.askedAt = clock().now();
    m_program.screens().tracking.followed = 58;
    co_await onPool([this] { addPracticeMonth(app().log, clock().now()); });
    co_await until([&items] { return items.items().size() > 10; });
    m_program.window().mailingLogView().table()->selectRow(0);
    co_await save(u"open-items-smallest"_s);
    m_program.window().resize(usualSize);
    co_await save(u"open-items"_s);
    co_await saveDark(u"open-items"_s);
    items.search = u"no such item"_s;
    co_await until([&items] { return items.items().isEmpty(); });
    co_await save(u"open-items-nothing-found"_s);
    items.search = QString();
    items.isShown = false;
}

} // namespace parcelory
