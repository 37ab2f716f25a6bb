#include "core/StatusKind.h"
#include "practice/Gallery.h"

#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "app/update/UpdateChecker.h"
#include "compose/Mailpieces.h"
#include "compose/Services.h"
#include "core/AppError.h"
#include "core/Task.h"
#include "practice/PracticeDesk.h"
#include "practice/PracticeSamples.h"
#include "shell/ErrorLog.h"
#include "shell/UpdateFeed.h"
#include "ui/Program.h"
#include "ui/WindowPrompts.h"
#include "ui/label/LabelView.h"
#include "ui/settings/SettingsView.h"
#include "ui/sidebar/AddressBookView.h"

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QPainter>
#include <QScrollArea>
#include <QTemporaryDir>

#include <cstdio>
#include <functional>
#include <optional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

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
    co_await book.undo();
    ShippoAddress changed = book.contacts()[1].asShippoAddress();
    changed.phone = u"828 555 0199"_s;
    co_await book.keep(changed);
    co_await save(u"address-book-changed"_s);
    co_await book.undo();
    app().lastChange.note(u"The form was filled in anew. Before: Eleanor Whitfield, Asheville NC"_s, [] {});
    co_await save(u"change-to-undo"_s);
    app().lastChange.undo();
    view.pane().query = u"no such name"_s;
    co_await save(u"address-book-nothing-found"_s);
    view.pane().query = QString();
    book.importing = true; // as an import of many addresses shows it
    book.setStatus(StatusKind::progress, u"Parsing vCard… 41000"_s);
    co_await clock().sleep(1400ms);
    co_await save(u"address-book-import"_s);
    book.importing = false;
    co_await book.reload();
    m_program.window().openWindow(u"addressbook"_s);
    co_await settled();
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

Task<> Gallery::drawRestore()
{
    RecordsScreen &records = m_program.screens().records;
    co_await records.copyNow();
    co_await until([&records] { return records.lastGood().has_value(); });
    records.selected = records.lastGood()->folder;
    co_await onPool([this, like = app().log.records().first()] {
        ShipmentRecord label = like;
        label.labelURL = u"https://labels.example.com/1"_s;
        for (int number = 1; number <= 3; ++number) {
            label.transactionID = u"restored-%1"_s.arg(number);
            if (!app().log.insert(label, number == 3))
                return;
        }
    });
    records.folder = u"/Volumes/Desk Backup/Parcelory Copies"_s; // the folder has another name in each run
    m_program.window().settingsView().showPage(SettingsView::Page::records);
    co_await records.openRestore();
    co_await until([&records] { return QApplication::activeModalWidget() && records.restore.canRestore(); });
    co_await save(u"dialog-restore"_s);
    co_await saveDark(u"dialog-restore"_s);
    static_cast<QDialog *>(QApplication::activeModalWidget())->reject();
    records.restore.logDamaged = true; // as the start finds it
    co_await save(u"settings-records-damaged"_s);
    records.restore.logDamaged = false;
}

Task<> Gallery::drawSettings()
{
    app().tab = MainTab::settings;
    using Page = SettingsView::Page;
    const std::pair<Page, QString> pages[] = {
        {Page::senders, u"settings-senders"_s},   {Page::boxes, u"settings-custom-boxes"_s},
        {Page::printers, u"settings-printers"_s}, {Page::keys, u"settings-api-keys"_s},
        {Page::rules, u"settings-rules"_s},       {Page::records, u"settings-records"_s},
        {Page::contacts, u"settings-contacts"_s}, {Page::updates, u"settings-updates"_s}};
    addPracticeProfiles(app());
    for (const auto &[page, name] : pages) {
        m_program.window().settingsView().showPage(page);
        co_await save(name);
    }
    co_await saveDark(u"settings-api-keys"_s);
    m_program.window().settingsView().showPage(Page::rules);
    for (QCheckBox *box : m_program.window().settingsView().findChildren<QCheckBox *>()) {
        if (!box->text().startsWith(u"Require a reference"_s))
            continue;
        for (QScrollArea *page : m_program.window().settingsView().findChildren<QScrollArea *>()) {
            if (page->isAncestorOf(box)) // at the end of the page
                page->ensureWidgetVisible(box, 0, 100);
        }
    }
    app().rules.setOn(u"fedex-signature"_s, false);
    co_await save(u"settings-rules-guard"_s);
    co_await saveDark(u"settings-rules"_s);
    app().rules.setOn(u"fedex-signature"_s, true);
    co_await drawRestore();
    SettingsScreen &settings = m_program.screens().settings;
    co_await settings.printTest();
    co_await until([&settings] { return settings.testLabel.sight.value().picture != nullptr; });
    m_program.window().settingsView().showPage(Page::printers);
    co_await save(u"settings-printers-test"_s);
}

} // namespace parcelory
