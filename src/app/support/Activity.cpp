#include "app/support/Activity.h"

#include "app/purchase/Purchases.h"
#include "shell/ErrorLog.h"

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

QLatin1StringView nameOf(MainTab tab)
{
    switch (tab) {
    case MainTab::newLabel:
        return "New Label"_L1;
    case MainTab::mailingLog:
        return "My Mailing Log"_L1;
    case MainTab::masterLog:
        return "Master Log"_L1;
    case MainTab::settings:
        break;
    }
    return "Settings"_L1;
}

QLatin1StringView nameOf(UpdatePhase phase)
{
    return phase == UpdatePhase::idle ? "idle"_L1 : phase == UpdatePhase::downloading ? "downloading"_L1 : "ready"_L1;
}

} // namespace

Activity::Activity(AppState &app, LabelScreen &label, AddressBook &book, MailingLogScreen &mailingLog,
                   UpdateChecker &updates)
    : trace(app.platform.clock, app.platform.dataFolder)
{
    trace.note("program"_L1, "started"_L1);
    watchApp(app);
    watchLabel(label);
    watchWork(book.importing, "address import"_L1);
    watchWork(book.exporting, "address export"_L1);
    watchWork(mailingLog.busy, "mailing log operation"_L1);
    watch(updates.phase, [this](UpdatePhase phase) { trace.note("update"_L1, nameOf(phase)); });
}

template <class T, class Note>
void Activity::watch(QProperty<T> &field, Note note)
{
    m_notifiers.push_back(field.addNotifier([&field, note] { note(field.value()); }));
}

void Activity::watchWork(QProperty<bool> &field, QLatin1StringView operation)
{
    watch(field, [this, operation](bool isBegin) { trace.note(operation, isBegin ? "begins"_L1 : "ends"_L1); });
}

void Activity::watchApp(AppState &app)
{
    watch(app.flow,
          [this](AppFlow flow) { trace.note("session"_L1, flow == AppFlow::main ? "signed in"_L1 : "signed out"_L1); });
    watch(app.tab, [this](MainTab tab) { trace.note("tab"_L1, nameOf(tab)); });
    watchWork(app.loginBusy, "sign-in"_L1);
    watchWork(app.scanBusy, "invoice"_L1);
    watchWork(app.scanFormBusy, "SCAN form"_L1);
    watch(app.draftFillCount, [this](int) { trace.note("form"_L1, "filled in"_L1); });
    watch(app.keyChanges, [this](int) { trace.note("keys"_L1, "changed"_L1); });
    watch(app.copyCount, [this](int) { trace.note("copy of the records"_L1, "made"_L1); });
    watch(app.scale.connected, [this](bool is) { trace.note("scale"_L1, is ? "connected"_L1 : "gone"_L1); });
    watch(app.printWatch.notice, [this](const QString &notice) {
        trace.note("printer"_L1, notice.isEmpty() ? "no notice"_L1 : "notice shown"_L1);
    });
    connect(&app.errors, &ErrorLog::entriesChanged, this,
            [this, &app] { trace.note("error log"_L1, "entries"_L1, app.errors.entries().size()); });
    connect(&app, &AppState::labelLogged, this, [this] { trace.note("label"_L1, "bought and logged"_L1); });
}

void Activity::watchLabel(LabelScreen &label)
{
    watchWork(label.validating, "validation"_L1);
    watch(label.rating, [this, &label](bool isBegin) {
        if (isBegin)
            trace.note("rates"_L1, "asked"_L1);
        else
            trace.note("rates"_L1, "offered"_L1, label.rates.value().size());
    });
    watch(label.buying, [this, &label](bool isBegin) {
        trace.note("purchase"_L1, isBegin                    ? "begins"_L1
                                  : label.purchaseComplete() ? "complete"_L1
                                                             : "ends, not complete"_L1);
    });
    watch(label.purchases.unresolved,
          [this](const QList<UnresolvedPurchase> &open) { trace.note("purchases"_L1, "unresolved"_L1, open.size()); });
}

} // namespace parcelory
