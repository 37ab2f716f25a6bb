#include "practice/PracticeScreens.h"

#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "app/logs/MasterLogScreen.h"
#include "app/update/UpdateChecker.h"
#include "compose/Customs.h"
#include "compose/Mailpieces.h"
#include "compose/Services.h"
#include "core/AppError.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "practice/PracticeDesk.h"
#include "practice/PracticePrinter.h"
#include "practice/PracticeSamples.h"
#include "records/StatusWords.h"
#include "shell/ErrorLog.h"
#include "shell/UpdateFeed.h"
#include "ui/Program.h"
#include "ui/WindowKeyboard.h"
#include "ui/WindowPrompts.h"
#include "ui/label/LabelView.h"
#include "ui/settings/SettingsView.h"
#include "ui/sidebar/AddressBookView.h"
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
#include <exception>
#include <functional>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

using namespace std::chrono_literals;

constexpr QSize usualSize(1280, 800);

/// Draws the screens of one running program.
class Gallery {
public:
    Gallery(PracticeDesk &desk, Program &program, QDir folder)
        : m_desk(desk), m_program(program), m_folder(std::move(folder))
    {
        m_program.window().resize(usualSize);
        m_program.window().show();
    }

    Task<> drawPractice();
    Task<> drawMode(QString name);

private:
    AppState &app() { return m_program.app(); }
    LabelScreen &label() { return m_program.screens().label; }
    Clock &clock() { return m_desk.platform().clock; }

    Task<> until(std::function<bool()> reached);
    Task<> save(QString name);
    Task<> saveDark(QString name);
    void saveWindow(const QString &title, const QString &name);
    Task<> drawSignIn();
    Task<> drawAddressBook();
    Task<> drawAddressSheet();
    Task<> drawInvoice();
    Task<> drawComposing();
    Task<> drawDialogs();
    Task<> drawHelp();
    Task<> drawAbroad();
    Task<> drawBuying();
    Task<> drawDoubt();
    Task<> drawRecords();
    Task<> drawMasterLog();
    Task<> drawReprint();
    Task<> drawScanForm();
    Task<> drawSettings();
    Task<> drawLogs(QString name);
    void compose(const ShippoAddress &to);
    QImage picture();

    PracticeDesk &m_desk;
    Program &m_program;
    QDir m_folder;
};

Task<> Gallery::until(std::function<bool()> reached)
{
    for (int turn = 0; turn < 500; ++turn) {
        co_await clock().sleep(20ms);
        if (reached())
            co_return;
    }
    throw AppError(u"The practice desk did not reach a state that was to be drawn."_s);
}

/// The window and what is open above it: a dialog over the shaded window, or a list.
QImage Gallery::picture()
{
    QWidget &window = m_program.window();
    QImage image = window.grab().toImage();
    QPainter painter(&image);
    const auto middle = [&](const QSize &inner) {
        return QPoint((window.width() - inner.width()) / 2, (window.height() - inner.height()) / 2);
    };
    if (QWidget *dialog = QApplication::activeModalWidget()) {
        painter.fillRect(window.rect(), Theme::current().tokens().shade);
        const QPoint place = middle(dialog->size());
        painter.fillRect(QRect(place, dialog->size()).adjusted(-1, -1, 1, 1), Theme::current().tokens().button);
        painter.drawPixmap(place, dialog->grab());
    }
    if (QWidget *list = QApplication::activePopupWidget())
        painter.drawPixmap(window.mapFromGlobal(list->pos()), list->grab());
    return image;
}

Task<> Gallery::save(QString name)
{
    co_await clock().sleep(60ms);
    const QString path = m_folder.filePath(name + u".png"_s);
    if (!picture().save(path))
        throw AppError(u"%1 could not be written."_s.arg(path));
    std::printf("%s\n", qUtf8Printable(path));
}

Task<> Gallery::saveDark(QString name)
{
    Theme::current().setDark(true);
    co_await save(name + u"-dark"_s);
    Theme::current().setDark(false);
}

/// A secondary window.
void Gallery::saveWindow(const QString &title, const QString &name)
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->windowTitle() == title)
            window->grab().save(m_folder.filePath(name + u".png"_s));
    }
}

void Gallery::compose(const ShippoAddress &to)
{
    label().clearDraft();
    app().draftTo = to;
    label().mailpiece = PresetMailpiece{u"uline-s-5148"_s};
    label().service = ServiceOption::signature;
    label().weightLb = u"1"_s;
    label().weightOz = u"1.3"_s;
    label().insuranceValue = u"412.00"_s;
    label().reference = u"48213"_s;
    label().descriptionText = u"Coins"_s;
}

Task<> Gallery::drawSignIn()
{
    co_await save(u"sign-in"_s);
    m_desk.backOffice().setScenario({.unreachable = true});
    co_await app().signIn(PracticeBackOffice::user, PracticeBackOffice::password, false);
    co_await save(u"sign-in-error"_s);
    m_desk.backOffice().setScenario({});
    co_await app().signIn(PracticeBackOffice::user, PracticeBackOffice::password, false);
    if (app().loginError.value())
        throw AppError(*app().loginError.value());
}

Task<> Gallery::drawAddressBook()
{
    AddressBook &book = m_program.screens().addressBook;
    AddressBookView &view = m_program.window().labelView().addressBook();
    co_await save(u"address-book-empty"_s);
    addPracticeAddresses(app().addressBook);
    co_await book.reload();
    view.pane().selection = book.contacts()[1].id;
    co_await save(u"address-book"_s);
    co_await saveDark(u"address-book"_s);
    co_await drawAddressSheet();
    const PostalContact last = book.contacts().last();
    co_await book.remove(last);
    co_await save(u"address-book-deleted"_s);
    co_await book.undoRemove();
    view.pane().query = u"nobody of this name"_s;
    co_await save(u"address-book-nothing-found"_s);
    view.pane().query = QString();
    book.importing = true; // as an import of many addresses shows it
    book.setStatus(StatusKind::progress, u"Parsing vCard… 41000"_s);
    co_await clock().sleep(1400ms);
    co_await save(u"address-book-import"_s);
    book.importing = false;
    co_await book.reload();
    m_program.window().openWindow(u"addressbook"_s);
    co_await clock().sleep(60ms);
    saveWindow(u"Address Book"_s, u"window-address-book"_s);
}

Task<> Gallery::drawAddressSheet()
{
    m_program.window().labelView().addressBook().editSelected();
    co_await until([] { return QApplication::activeModalWidget(); });
    co_await save(u"dialog-edit-address"_s);
    static_cast<QDialog *>(QApplication::activeModalWidget())->reject();
}

Task<> Gallery::drawInvoice()
{
    label().mailpiece = PresetMailpiece{u"uline-s-5148"_s};
    label().service = ServiceOption::signature;
    label().insuranceValue = u"412.00"_s;
    app().handleInvoiceScan(u"48213"_s);
    co_await until([] { return QApplication::activeModalWidget(); });
    co_await save(u"dialog-invoice-attention"_s);
    static_cast<QDialog *>(QApplication::activeModalWidget())->accept();
    co_await until([this] { return !label().rates.value().isEmpty(); }); // validated, weighed and rated automatically
    co_await save(u"new-label-invoice"_s);
    app().scannedInvoice = std::nullopt; // its tracking number would raise a second-label warning in later pictures
    label().clearDraft();
    label().mailpiece = BuiltinMailpiece::package;
    for (QAbstractButton *button : m_program.window().findChildren<QAbstractButton *>()) {
        if (button->text() == u"Endicia Mode")
            button->click();
    }
}

Task<> Gallery::drawComposing()
{
    co_await save(u"new-label-empty"_s);
    compose(practiceRecipient());
    co_await label().validate();
    co_await save(u"new-label-domestic"_s);
    co_await saveDark(u"new-label-domestic"_s);
    m_program.window().resize(m_program.window().minimumSize());
    co_await save(u"new-label-smallest"_s);
    m_program.window().resize(usualSize);

    m_desk.carrier().setScenario({.answerDelay = 2500ms});
    label().weightLb = u"2"_s;
    spawn([this] { return label().fetchRates(); });
    co_await clock().sleep(1400ms);
    co_await save(u"new-label-busy"_s);
    co_await until([this] { return !label().busy; });
    m_desk.carrier().setScenario({});

    if (auto *mailpieces = m_program.window().labelView().findChild<QComboBox *>(u"mailpieces"_s)) {
        mailpieces->showPopup();
        co_await save(u"menu-mailpiece"_s);
        mailpieces->hidePopup();
    }
}

/// A second-label warning and an unresolved purchase.
Task<> Gallery::drawDoubt()
{
    app().tab = MainTab::newLabel;
    compose(practiceRecipient());
    co_await label().validate();
    co_await until([this] { return !label().secondLabel.value().isEmpty(); });
    co_await save(u"new-label-second"_s);
    ShippoAddress neighbour = practiceRecipient();
    neighbour.name = u"Theodore Ames"_s;
    compose(neighbour);
    label().reference = QString();
    co_await label().fetchRates();
    m_desk.carrier().setScenario({.dropConnection = true});
    spawn([this] { return label().buyAndPrint(); });
    co_await until([this] { return !label().purchases.unresolved.value().isEmpty() && !label().busy; });
    co_await until([] { return QApplication::activeModalWidget(); });
    static_cast<QDialog *>(QApplication::activeModalWidget())->accept();
    co_await save(u"new-label-purchase-unknown"_s);
    m_desk.carrier().setScenario({});
    co_await label().purchases.checkAgain();
    co_await until([this] { return !label().purchases.resolved.value().isEmpty(); });
    co_await save(u"new-label-purchase-found"_s);
    label().purchases.dismiss(label().purchases.resolved.value().first());
}

Task<> Gallery::drawDialogs()
{
    compose(practiceBoxHolder());
    spawn([this] { return label().validate(); });
    co_await until([] { return QApplication::activeModalWidget(); });
    co_await save(u"dialog-address-review"_s);
    co_await until([this] { // the same question appears again with the rates
        if (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget()))
            dialog->reject();
        return !label().busy;
    });

    co_await drawHelp();
    app().errors.record(u"Buy Label"_s, AppError(u"The carrier answered with an error."_s), Popup::yes);
    co_await until([] { return QApplication::activeModalWidget(); });
    co_await save(u"dialog-alert"_s);
    static_cast<QDialog *>(QApplication::activeModalWidget())->accept();
}

Task<> Gallery::drawHelp()
{
    for (QAction *action : m_program.window().findChildren<QAction *>()) {
        if (action->text() == u"Keyboard Shortcuts")
            action->trigger();
    }
    co_await until([] { return QApplication::activeModalWidget(); });
    co_await save(u"dialog-keyboard-shortcuts"_s);
    static_cast<QDialog *>(QApplication::activeModalWidget())->accept();
    UpdateChecker &updates = m_program.screens().updates;
    updates.available = UpdateInfo{u"1.4.2"_s,   {}, u"The scale answers faster.\nThe master log shows a whole year."_s,
                                   std::nullopt, {}, {}};
    updates.offers = updates.offers + 1;
    co_await until([] { return QApplication::activeModalWidget(); });
    co_await save(u"dialog-update"_s);
    updates.phase = UpdatePhase::downloading; // as a download under way shows it
    updates.progress = 0.4;
    updates.status = u"Downloading v1.4.2…"_s;
    co_await save(u"dialog-update-download"_s);
    updates.phase = UpdatePhase::idle;
    updates.status = QString();
    static_cast<QDialog *>(QApplication::activeModalWidget())->reject();
}

Task<> Gallery::drawAbroad()
{
    compose(practiceRecipientAbroad());
    label().carrier = Carrier::fedex;
    label().mailpiece = BuiltinMailpiece::fedexSmallBox;
    label().service = ServiceOption::fedexDirect;
    label().insuranceValue = QString();
    label().customs = CustomsInfo{CustomsItemType::gold, u"1"_s, u"1860.00"_s, u"Dana Marsh"_s};
    ShippoAddress to = app().draftTo;
    const QString phone = std::exchange(to.phone, QString());
    app().draftTo = to;
    co_await label().validate();
    co_await save(u"new-label-error"_s);
    to.phone = phone;
    app().draftTo = to;
    co_await label().validate();
    co_await until([] { return QApplication::activeModalWidget(); });
    co_await save(u"dialog-international-paperwork"_s);
    static_cast<QDialog *>(QApplication::activeModalWidget())->accept();
    co_await until([this] { return !label().rates.value().isEmpty(); });
    co_await save(u"new-label-international"_s);
    label().clearDraft();
    label().carrier = Carrier::usps;
}

Task<> Gallery::drawBuying()
{
    compose(practiceRecipient());
    co_await label().validate();
    co_await label().buyAndPrint();
    co_await save(u"new-label-bought"_s);
    m_desk.printer().setFault(PrinterFault::outOfLabels);
    co_await label().reprintLast();
    co_await until([this] { return !app().printWatch.notice.value().isEmpty(); });
    co_await save(u"new-label-out-of-labels"_s);
    co_await saveDark(u"new-label-out-of-labels"_s);
    m_desk.printer().setFault(PrinterFault::none);
    co_await until([this] { return app().printWatch.notice.value().isEmpty(); });
}

Task<> Gallery::drawRecords()
{
    app().tab = MainTab::mailingLog;
    co_await save(u"mailing-log-one"_s);
    co_await onPool([this] { addPracticeShipments(app().log); });
    co_await until([this] { return app().log.records().size() > 10; });
    m_program.screens().mailingLog.selected = app().log.records()[3].id;
    co_await save(u"mailing-log"_s);
    co_await saveDark(u"mailing-log"_s);
    m_program.screens().mailingLog.selected = app().log.records().last().id;
    co_await save(u"mailing-log-imported"_s);
    MailingLogScreen &log = m_program.screens().mailingLog;
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
    log.search = u"nobody of this name"_s;
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

/// The question before a second reprint.
Task<> Gallery::drawReprint()
{
    MailingLogScreen &log = m_program.screens().mailingLog;
    const ShipmentRecord bought = label().lastLabel.value()->record;
    spawn([&log, bought] { return log.reprint(bought); });
    co_await until([] { return QApplication::activeModalWidget(); });
    co_await save(u"dialog-reprint"_s);
    static_cast<QDialog *>(QApplication::activeModalWidget())->reject();
    co_await until([&log] { return !log.busy; });
}

Task<> Gallery::drawScanForm()
{
    m_program.window().openWindow(u"scanform"_s);
    co_await clock().sleep(60ms);
    saveWindow(u"SCAN Form"_s, u"window-scan-form-empty"_s);
    const QList<ShipmentRecord> labels = app().log.records();
    const auto bought = std::ranges::find_if(labels, [](const ShipmentRecord &row) { return !row.labelURL.isEmpty(); });
    co_await onPool([this, id = bought->id] { return app().log.setStatus(id, wordOf(LogStatus::refundPending)); });
    m_desk.carrier().setScenario({.manifestDocuments = 2});
    spawn([this] { return app().createScanForm(label().sender().value_or(SenderProfile()).address); });
    co_await until([] { return QApplication::activeModalWidget(); });
    co_await save(u"dialog-scan-form"_s);
    static_cast<QDialog *>(QApplication::activeModalWidget())->done(2);
    co_await until([this] { return !app().scanFormBusy; });
    m_desk.carrier().setScenario({});
    co_await clock().sleep(800ms); // the pages are drawn on another thread
    saveWindow(u"SCAN Form"_s, u"window-scan-form"_s);
    app().tab = MainTab::newLabel;
    co_await save(u"new-label-scan-form"_s);
}

Task<> Gallery::drawSettings()
{
    app().tab = MainTab::settings;
    using Page = SettingsView::Page;
    const std::pair<Page, QString> pages[] = {
        {Page::senders, u"settings-senders"_s},   {Page::boxes, u"settings-custom-boxes"_s},
        {Page::printers, u"settings-printers"_s}, {Page::keys, u"settings-api-keys"_s},
        {Page::contacts, u"settings-contacts"_s}, {Page::updates, u"settings-updates"_s}};
    addPracticeProfiles(app());
    for (const auto &[page, name] : pages) {
        m_program.window().settingsView().showPage(page);
        co_await save(name);
    }
    co_await saveDark(u"settings-api-keys"_s);
}

Task<> Gallery::drawPractice()
{
    co_await drawSignIn();
    m_desk.scale().put(17.3);
    co_await until([this] { return app().scale.reading() && !m_program.screens().keys.statusText.value().isEmpty(); });
    co_await drawAddressBook();
    co_await drawInvoice();
    co_await drawComposing();
    co_await drawDialogs();
    co_await drawAbroad();
    co_await drawBuying();
    co_await drawRecords();
    co_await drawReprint();
    co_await drawDoubt();
    co_await drawMasterLog();
    co_await drawScanForm();
    co_await drawSettings();
}

/// The screens with a test or a live key, without any practice mode marker.
Task<> Gallery::drawMode(QString name)
{
    app().flow = AppFlow::main;
    m_desk.scale().put(17.3);
    co_await until([this] { return app().scale.reading() && !m_program.screens().keys.statusText.value().isEmpty(); });
    compose(practiceRecipient());
    co_await label().validate();
    co_await save(u"new-label-"_s + name);
    app().tab = MainTab::settings;
    m_program.window().settingsView().showPage(SettingsView::Page::keys);
    co_await save(u"settings-api-keys-"_s + name);
    m_program.window().resize(m_program.window().minimumSize());
    co_await drawLogs(name);
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

/// Runs a gallery on its own practice desk; true if every screen was drawn.
bool draw(const QDir &folder, const QString &mode)
{
    const QTemporaryDir records;
    WindowPrompts prompts;
    WindowKeyboard keyboard;
    PracticeDesk desk(records.path(), prompts, keyboard);
    if (!mode.isEmpty())
        desk.pose(mode == u"live" ? PracticeCarrier::liveToken : PracticeCarrier::testToken);
    Program program(desk.platform(), prompts, PracticeDesk::signInNote());
    program.start();
    Gallery gallery(desk, program, folder);
    bool done = false;
    spawn([&]() -> Task<> {
        try {
            if (mode.isEmpty())
                co_await gallery.drawPractice();
            else
                co_await gallery.drawMode(mode);
            done = true;
        } catch (const std::exception &error) {
            std::fprintf(stderr, "parcelory: %s\n", qUtf8Printable(describe(error)));
        }
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    });
    QApplication::exec();
    return done;
}

} // namespace

int drawScreens(const QString &path)
{
    const QDir folder(path);
    if (!folder.mkpath(u"."_s))
        throw AppError(u"The folder %1 cannot be made."_s.arg(path));
    Program::makeLook();
    Theme::current().setDark(false);
    QApplication::setQuitOnLastWindowClosed(false);
    const bool done = draw(folder, {}) && draw(folder, u"test"_s) && draw(folder, u"live"_s);
    return done ? 0 : 1;
}

} // namespace parcelory
