#include "practice/PracticeRun.h"

#include "app/AppState.h"
#include "app/label/LabelScreen.h"
#include "app/label/LabelTexts.h"
#include "carrier/ShippoRecords.h"
#include "core/AppError.h"
#include "core/SaveFile.h"
#include "core/Task.h"
#include "core/ports/Keyboard.h"
#include "platform/ConsolePrompts.h"
#include "platform/WebEngineSession.h"
#include "practice/PracticeDesk.h"
#include "practice/PracticeOrders.h"
#include "practice/PracticeScale.h"
#include "practice/backoffice/PracticeBackOffice.h"
#include "shell/ErrorLog.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <optional>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

/// The outcome of an order.
struct Shipped {
    QString recipient;
    QString label; ///< the shipment's one-line summary, or why it was not shipped
    bool done = false;
};

void say(const QString &line)
{
    std::printf("%s\n", qUtf8Printable(line));
    std::fflush(stdout);
}

QString bannerText(const LabelScreen &screen)
{
    return screen.banner.value() ? screen.banner.value()->text : QString();
}

/// Puts the order's parcel on the scale and takes its weight from there.
Task<> weigh(AppState &app, LabelScreen &screen, PracticeScale &scale)
{
    const double ounces = screen.totalPounds() * 16;
    screen.weightLb = QString();
    screen.weightOz = QString();
    scale.put(ounces);
    co_await app.platform.clock.sleep(PracticeScale::settling + std::chrono::milliseconds(50));
    screen.weigh();
}

/// Processes an order from draft to log, as a clerk would.
Task<Shipped> ship(AppState &app, LabelScreen &screen, PracticeScale &scale, PracticeOrder order)
{
    co_await compose(order, app, screen);
    Shipped result{.recipient = app.draftTo.value().name};
    co_await weigh(app, screen, scale);
    say(u"\n%1 — %2, %3"_s.arg(result.recipient, LabelTexts::mailpieceName(screen), screen.weightDisplay()));
    co_await screen.validate();
    say(u"  "_s + screen.validationStatus);
    if (screen.showIntlPaperwork)
        co_await screen.fetchRates(true);
    for (const ShippoRate &rate : screen.rates.value()) {
        const bool chosen = screen.selectedRateID.value() == rate.objectId;
        say(u"  %1 %2  $%3  %4"_s.arg(chosen ? u"●"_s : u"○"_s,
                                      rate.servicelevel.name.value_or(QString()).leftJustified(42),
                                      rate.amount.rightJustified(7), LabelTexts::transitText(rate)));
    }
    // An invoice with a tracking number, or an earlier run with the same parcel, makes it a second label: the button
    // changes, takes no press for a moment, and asks for one more.
    for (int press = 0; press < 3 && screen.selectedRate() && (press == 0 || !screen.banner.value()); ++press) {
        if (screen.secondLabelAgreed)
            say(u"  "_s + screen.secondLabel);
        co_await app.platform.clock.sleep(LabelScreen::buyPause);
        co_await screen.buyAndPrint();
    }
    say(u"  "_s + bannerText(screen));
    result.done = screen.last.label.value() && screen.purchaseComplete(); // composing has cleared a label that came out
    const QString reason = screen.banner.value() ? bannerText(screen) : screen.validationStatus.value();
    result.label = result.done ? app.lastShipmentSummary.value() : reason;
    co_return result;
}

Task<int> shipAll(AppState &app, LabelScreen &screen, PracticeScale &scale, QList<PracticeOrder> orders)
{
    QList<Shipped> shipped;
    for (const PracticeOrder &order : orders) {
        Shipped one{.recipient = order.to ? order.to->name : u"Invoice "_s + *order.invoice};
        try {
            one = co_await ship(app, screen, scale, order);
        } catch (const AppError &error) { // for example an unknown word; the other orders go on
            one.label = error.description();
        }
        shipped.append(one);
    }
    say(u"\n%1 orders on the practice desk"_s.arg(shipped.size()));
    int failures = 0;
    for (const Shipped &one : shipped) {
        say(u"  %1 %2 %3"_s.arg(one.done ? u"✓"_s : u"✗"_s, one.recipient.leftJustified(20), one.label));
        failures += one.done ? 0 : 1;
    }
    co_return failures == 0 ? 0 : 1;
}

/// Signs in to the practice back office if an order needs it. Skips these orders if the web engine cannot run.
Task<QList<PracticeOrder>> signIn(AppState &app, QList<PracticeOrder> orders)
{
    const auto invoiced = [](const PracticeOrder &order) { return order.invoice.has_value(); };
    const QString obstacle = WebEngineSession::obstacle();
    if (!obstacle.isEmpty() && orders.removeIf(invoiced) > 0)
        say(obstacle);
    if (std::ranges::any_of(orders, invoiced)) {
        co_await app.signIn(PracticeBackOffice::user, PracticeBackOffice::password, false);
        if (app.loginError.value())
            throw AppError(*app.loginError.value());
        say(u"Signed in to the practice back office as %1."_s.arg(app.signedInUser));
    }
    app.flow = AppFlow::main;
    co_return orders;
}

QString exportLog(const AppState &app)
{
    const QString path = app.platform.dataFolder.absoluteFilePath(u"Mail Log Export.csv"_s);
    if (!saveFile(path, [&app](QIODevice &file) { return app.log.exportEndiciaCSV(file).orThrow(); }))
        throw AppError(u"The mailing log could not be read to its end, so nothing was exported."_s);
    return path;
}

void printPlaces(const AppState &app, const PracticeDesk &desk, const QString &exported)
{
    const QDir folder = app.platform.dataFolder;
    say(u"\nLabels, papers:   "_s + desk.printer().folder().absolutePath());
    say(u"Mailing log:      "_s + folder.absoluteFilePath(u"mailing_log.sqlite"_s));
    say(u"Exported log:     "_s + exported);
    if (folder.exists(u"error_log.json"_s))
        say(u"Error log:        "_s + folder.absoluteFilePath(u"error_log.json"_s));
}

} // namespace

int runPractice(const QString &folder, const QString &ordersFile)
{
    const QList<PracticeOrder> orders = readOrders(ordersFile);
    ConsolePrompts prompts;
    SilentKeyboard keyboard;
    PracticeDesk desk(folder, prompts, keyboard);
    ErrorLog errors(desk.platform());
    AppState app(desk.platform());
    LabelScreen screen(app);
    say(u"Practice desk in "_s + app.platform.dataFolder.absolutePath() + u" — nothing is bought."_s);

    int status = 1;
    spawn([&]() -> Task<> {
        try {
            const QList<PracticeOrder> shippable = co_await signIn(app, orders);
            status = co_await shipAll(app, screen, desk.scale(), shippable);
            printPlaces(app, desk, exportLog(app));
        } catch (const std::exception &error) {
            say(u"parcelory: "_s + describe(error));
            status = 1;
        }
        // Posted, because a run that fails at once ends before the event loop starts.
        QMetaObject::invokeMethod(qApp, [&] { QCoreApplication::exit(status); }, Qt::QueuedConnection);
    });
    return QCoreApplication::exec();
}

} // namespace parcelory
