#include "practice/PracticeMenu.h"

#include "practice/PracticeDesk.h"

#include <QMenuBar>

#include <functional>
#include <memory>

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
        {u"Label Link Has Expired"_s,
         [](S &s, bool on) { s.labelAnswer = on ? LabelAnswer::expired : LabelAnswer::normal; }},
        {u"Label Comes as PDF"_s, [](S &s, bool on) { s.labelFileType = on ? u"PDF"_s : QString(); }},
    };
    return table;
}

} // namespace

void addPracticeMenu(QMenuBar *bar, PracticeDesk &desk)
{
    QMenu *menu = bar->addMenu(u"&Practice"_s);
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
    QAction *paused = menu->addAction(u"Label Printer Is Paused"_s);
    paused->setCheckable(true);
    QObject::connect(paused, &QAction::toggled, menu, [&desk](bool on) {
        if (on)
            desk.printer().pause(true);
        else
            desk.printer().resume();
    });
}

} // namespace parcelory
