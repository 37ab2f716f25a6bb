#include "practice/PracticeMenu.h"

#include "core/Task.h"
#include "core/ports/Clock.h"
#include "practice/PracticeDay.h"
#include "practice/PracticeDesk.h"
#include "practice/PracticePrinter.h"
#include "practice/PracticeScale.h"
#include "practice/backoffice/BackOfficeScenario.h"
#include "practice/backoffice/PracticeInvoices.h"
#include "practice/carrier/CarrierScenario.h"
#include "ui/Program.h"

#include <QActionGroup>
#include <QGuiApplication>
#include <QInputDialog>
#include <QKeyEvent>
#include <QMenuBar>
#include <QWindow>

#include <functional>
#include <memory>
#include <utility>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

struct Mishap {
    QString name;
    std::function<void(CarrierScenario &, bool on)> apply;
};

const QList<Mishap> &mishaps()
{
    using S = CarrierScenario;
    static const QList<Mishap> table = {
        {u"Carrier Answers Slowly"_s, [](S &s, bool on) { s.answerDelay = std::chrono::milliseconds(on ? 4000 : 0); }},
        {u"No Rates Come Back"_s, [](S &s, bool on) { s.noRates = on; }},
        {u"Carrier Drops the Unit Number"_s, [](S &s, bool on) { s.rewrittenAddressTo = on; }},
        {u"No FedEx Account Connected"_s, [](S &s, bool on) { s.fedexConnected = !on; }},
        {u"Purchases Fail"_s, [](S &s, bool on) { s.purchaseFails = on; }},
        {u"Purchases Take Their Time"_s, [](S &s, bool on) { s.queuedReads = on ? 3 : 0; }},
        {u"Connection Ends Before the Answer"_s, [](S &s, bool on) { s.dropConnection = on; }},
        {u"Purchases' Answers Are Lost"_s, [](S &s, bool on) { s.droppedPath = on ? "transactions/" : ""; }},
        {u"Label Link Has Expired"_s,
         [](S &s, bool on) { s.labelAnswer = on ? LabelAnswer::expired : LabelAnswer::normal; }},
        {u"Packages Are on Their Way"_s, [](S &s, bool on) { s.trackedAs = on ? u"TRANSIT"_s : QString(); }},
        {u"Refunds Take Their Time"_s, [](S &s, bool on) { s.refundReads = on ? 3 : 0; }},
        {u"Refunds Are Refused Later"_s,
         [](S &s, bool on) { s.refundOutcome = on ? RefundOutcome::rejected : RefundOutcome::granted; }},
        {u"SCAN Forms Have Two Documents"_s, [](S &s, bool on) { s.manifestDocuments = on ? 2 : 1; }},
        {u"The SCAN Form's Answer Is Lost"_s,
         [](S &s, bool on) { s.droppedPath = on ? QByteArray("manifests") : QByteArray(); }},
        {u"Label Comes as PDF"_s, [](S &s, bool on) { s.labelFileType = on ? u"PDF"_s : QString(); }},
    };
    return table;
}

/// Types a text like a scanner: a key every ten milliseconds, then Return.
Task<> typeLikeAScanner(Clock &clock, QString text)
{
    const auto press = [](int key, const QString &letters) {
        if (QWindow *window = QGuiApplication::focusWindow()) {
            for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease})
                QCoreApplication::postEvent(window, new QKeyEvent(type, key, Qt::NoModifier, letters));
        }
    };
    for (const QChar letter : text) {
        press(letter.toUpper().unicode(), letter);
        co_await clock.sleep(std::chrono::milliseconds(10));
    }
    press(Qt::Key_Return, u"\r"_s);
}

void addScaleEntries(QMenu *menu, PracticeScale &scale)
{
    const std::pair<QString, double> parcels[] = {{u"Take Everything off the Scale"_s, 0},
                                                  {u"Put 12.4 oz on the Scale"_s, 12.4},
                                                  {u"Put 1 lb 1.3 oz on the Scale"_s, 17.3},
                                                  {u"Put 3 lb 8.0 oz on the Scale"_s, 56},
                                                  {u"Put Too Much on the Scale"_s, PracticeScale::capacity + 16}};
    for (const auto &[name, ounces] : parcels)
        QObject::connect(menu->addAction(name), &QAction::triggered, menu, [&scale, ounces] { scale.put(ounces); });
    QAction *other = menu->addAction(u"Put Another Weight on the Scale…"_s);
    QObject::connect(other, &QAction::triggered, menu, [menu, &scale] {
        auto *question = new QInputDialog(menu->window());
        question->setAttribute(Qt::WA_DeleteOnClose);
        question->setInputMode(QInputDialog::DoubleInput);
        question->setDoubleRange(0, PracticeScale::capacity);
        question->setDoubleDecimals(1);
        question->setLabelText(u"Ounces on the scale:"_s);
        QObject::connect(question, &QInputDialog::doubleValueSelected, menu,
                         [&scale](double ounces) { scale.put(ounces); });
        question->open();
    });
    QAction *unplugged = menu->addAction(u"Scale Is Unplugged"_s);
    unplugged->setCheckable(true);
    QObject::connect(unplugged, &QAction::toggled, menu, [&scale](bool on) { on ? scale.unplug() : scale.plug(); });
}

void addPrinterEntries(QMenu *menu, PracticePrinter &printer)
{
    const std::pair<QString, PrinterFault> faults[] = {{u"Label Printer Is Paused"_s, PrinterFault::paused},
                                                       {u"Label Printer Is Off"_s, PrinterFault::off},
                                                       {u"Label Printer Is Out of Labels"_s, PrinterFault::outOfLabels},
                                                       {u"Label Printer Was Removed"_s, PrinterFault::unknown}};
    auto *group = new QActionGroup(menu);
    group->setExclusionPolicy(QActionGroup::ExclusionPolicy::ExclusiveOptional);
    for (const auto &[name, fault] : faults) {
        QAction *action = menu->addAction(name);
        action->setCheckable(true);
        group->addAction(action);
        // Not "toggled": unchecking the old fault must not undo the new fault.
        QObject::connect(action, &QAction::triggered, menu,
                         [&printer, fault](bool on) { printer.setFault(on ? fault : PrinterFault::none); });
    }
}

/// A back office failure that lasts while its menu entry is checked.
struct OfficeMishap {
    QString name;
    std::function<void(BackOfficeScenario &, bool on)> apply;
};

const QList<OfficeMishap> &officeMishaps()
{
    using S = BackOfficeScenario;
    static const QList<OfficeMishap> table = {
        {u"VPN Is Down"_s, [](S &s, bool on) { s.unreachable = on; }},
        {u"Deskline Answers Slowly"_s, [](S &s, bool on) { s.answerDelay = std::chrono::milliseconds(on ? 4000 : 0); }},
        {u"Deskline Pages Never Finish"_s, [](S &s, bool on) { s.neverFinishes = on; }},
    };
    return table;
}

void addBackOfficeEntries(QMenu *menu, PracticeDesk &desk)
{
    QMenu *scans = menu->addMenu(u"Scan an Invoice"_s);
    for (const PracticeInvoice &invoice : practiceInvoices()) {
        const QString link = u"https://%1/i%2"_s.arg(desk.platform().deployment.shortLinkHost).arg(invoice.number);
        QObject::connect(
            scans->addAction(u"%1  %2"_s.arg(invoice.number).arg(invoice.about)), &QAction::triggered, menu,
            [&desk, link] { spawn([&desk, link] { return typeLikeAScanner(desk.platform().clock, link); }); });
    }
    const auto scenario = std::make_shared<BackOfficeScenario>();
    for (const OfficeMishap &mishap : officeMishaps()) {
        QAction *action = menu->addAction(mishap.name);
        action->setCheckable(true);
        QObject::connect(action, &QAction::toggled, menu, [&desk, scenario, apply = mishap.apply](bool on) {
            apply(*scenario, on);
            desk.backOffice().setScenario(*scenario);
        });
    }
    QObject::connect(menu->addAction(u"Deskline Session Expires"_s), &QAction::triggered, menu,
                     [&desk] { desk.backOffice().endSessions(); });
}

} // namespace

void addPracticeMenu(Program &program, PracticeDesk &desk)
{
    QMenu *menu = program.window().menuBar()->addMenu(u"&Practice"_s);
    QObject::connect(menu->addAction(u"Fill Today's Log"_s), &QAction::triggered, menu, [&program, &desk] {
        addPracticeDay(program.app(), program.screens().label.purchases, desk.carrier());
    });
    QObject::connect(menu->addAction(u"Another Desk Buys This Recipient's Label"_s), &QAction::triggered, menu,
                     [&program, &desk] { addOtherDesksLabel(program.app().draftTo, desk.carrier()); });
    addBackOfficeEntries(menu, desk);
    menu->addSeparator();
    addScaleEntries(menu, desk.scale());
    menu->addSeparator();
    const auto scenario = std::make_shared<CarrierScenario>();
    for (const Mishap &mishap : mishaps()) {
        QAction *action = menu->addAction(mishap.name);
        action->setCheckable(true);
        QObject::connect(action, &QAction::toggled, menu, [&desk, scenario, apply = mishap.apply](bool on) {
            apply(*scenario, on);
            desk.carrier().setScenario(*scenario);
        });
    }
    menu->addSeparator();
    addPrinterEntries(menu, desk.printer());
}

} // namespace parcelory
