#include "practice/Gallery.h"

#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "compose/Customs.h"
#include "compose/Mailpieces.h"
#include "compose/Services.h"
#include "core/AppError.h"
#include "core/ShippoAddress.h"
#include "core/Task.h"
#include "practice/PracticeDesk.h"
#include "practice/PracticePrinter.h"
#include "practice/PracticeSamples.h"
#include "ui/Program.h"
#include "ui/WindowPrompts.h"
#include "ui/label/LabelView.h"
#include "ui/theme/Theme.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QListWidget>
#include <QPainter>
#include <QTemporaryDir>

#include <cstdio>
#include <functional>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

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
    for (QAbstractButton *more : m_program.window().labelView().findChildren<QAbstractButton *>()) {
        if (more->accessibleName().endsWith(u"of the shipping rules"_s))
            more->click();
    }
    co_await save(u"new-label-rules"_s);
    if (QWidget *list = QApplication::activePopupWidget())
        list->close();
    label().clearDraft();
    label().carrier = Carrier::usps;
}

Task<> Gallery::drawBuying()
{
    compose(practiceRecipient());
    co_await label().validate();
    co_await label().buyAndPrint();
    co_await until([this] { return m_program.screens().addressBook.kept.value().has_value(); });
    co_await until([this] { return label().last.preview.sight.value().picture != nullptr; });
    co_await save(u"new-label-bought"_s);
    co_await saveDark(u"new-label-bought"_s);
    co_await drawLabelWindow();
    m_program.window().resize(m_program.window().minimumSize());
    co_await save(u"new-label-bought-smallest"_s);
    m_program.window().resize(usualSize);
    m_desk.printer().setFault(PrinterFault::outOfLabels);
    co_await label().last.reprint();
    co_await until([this] { return !app().printWatch.notice.value().isEmpty(); });
    co_await save(u"new-label-out-of-labels"_s);
    co_await saveDark(u"new-label-out-of-labels"_s);
    m_desk.printer().setFault(PrinterFault::none);
    co_await until([this] { return app().printWatch.notice.value().isEmpty(); });
}

/// The label that was just bought in its own window.
Task<> Gallery::drawLabelWindow()
{
    const QString title = u"Label — "_s + label().last.label.value()->record.recipientName();
    label().last.preview.open();
    co_await settled();
    QWidget *shown = nullptr;
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->windowTitle() == title)
            shown = window;
    }
    if (!shown)
        throw AppError(u"The label's window did not open."_s);
    saveWindow(title, u"window-label"_s, {720, 900});
    shown->findChild<QListWidget *>()->setCurrentRow(0);
    for (QAbstractButton *button : shown->findChildren<QAbstractButton *>()) {
        if (button->accessibleName() == u"Turn: Upright")
            button->click();
    }
    co_await settled();
    saveWindow(title, u"window-label-upright"_s);
    Theme::current().setDark(true);
    co_await settled();
    saveWindow(title, u"window-label-dark"_s);
    Theme::current().setDark(false);
    shown->close();
}

/// A second-label warning and an unresolved purchase.
Task<> Gallery::drawDoubt()
{
    app().tab = MainTab::newLabel;
    compose(practiceRecipient());
    co_await label().validate();
    co_await until([this] { return !label().secondLabel.value().isEmpty(); });
    co_await save(u"new-label-second"_s);
    RulesScreen &rules = m_program.screens().rules;
    rules.guardAbove = u"20.00"_s;
    rules.guardOn = true;
    co_await clock().sleep(LabelScreen::buyPause);
    co_await label().buyAndPrint(); // asks, and buys nothing
    co_await save(u"new-label-spend-guard"_s);
    rules.guardOn = false;
    ShippoAddress neighbour = practiceRecipient();
    neighbour.name = u"Theodore Ames"_s;
    compose(neighbour);
    label().reference = QString();
    co_await label().fetchRates();
    m_desk.carrier().setScenario({.dropConnection = true});
    co_await clock().sleep(LabelScreen::buyPause);
    spawn([this] { return label().buyAndPrint(); });
    co_await until([this] { return !label().purchases.unresolved.value().isEmpty() && !label().busy; });
    co_await until([] { return QApplication::activeModalWidget(); });
    static_cast<QDialog *>(QApplication::activeModalWidget())->accept();
    co_await save(u"new-label-purchase-unknown"_s);
    CarrierScenario refusedList;
    refusedList.failNext = CarrierFailure{"transactions", 403, "text/plain", "", 1, "GET"};
    m_desk.carrier().setScenario(refusedList);
    co_await label().purchases.checkAgain();
    co_await until([this] { return label().purchases.unresolved.value().first().isInconclusive; });
    co_await save(u"new-label-purchase-by-hand"_s);
    m_desk.carrier().setScenario({});
    co_await label().purchases.checkAgain();
    co_await until([this] { return !label().purchases.resolved.value().isEmpty(); });
    co_await save(u"new-label-purchase-found"_s);
    label().purchases.dismiss(label().purchases.resolved.value().first());
}

} // namespace parcelory
