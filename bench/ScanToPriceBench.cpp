// From the last key of a scan to the priced Buy button: the practice desk with its real window, drawn in memory.

#include "Compare.h"
#include "practice/PracticeDesk.h"
#include "practice/backoffice/PracticeBackOffice.h"
#include "ui/Program.h"
#include "ui/WindowKeyboard.h"
#include "ui/WindowPrompts.h"
#include "ui/label/BuyBlock.h"

#include <QApplication>
#include <QKeyEvent>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <memory>

namespace parcelory::bench {
using namespace Qt::StringLiterals;

namespace {

/// Keeps the requests that a price waits for, to send them again the plain way.
class WatchedServices : public HttpTransport {
public:
    explicit WatchedServices(HttpTransport &services) : m_services(services) {}

    Task<HttpAnswer> send(HttpRequest request) override
    {
        if (request.method != "GET") // the lists of other desks' labels load beside the rates
            requests += request;
        return m_services.send(std::move(request));
    }
    QList<HttpRequest> requests;

private:
    HttpTransport &m_services;
};

/// Notes when the first page is asked for, and how long its script runs.
class WatchedPage : public WebSession {
public:
    explicit WatchedPage(WebSession &page) : m_page(page) {}

    void setDelegate(Delegate delegate) override { m_page.setDelegate(std::move(delegate)); }
    void load(const QUrl &url, std::chrono::milliseconds timeout) override
    {
        onLoad();
        m_page.load(url, timeout);
    }
    Task<QVariant> evaluate(QString expression) override
    {
        const bool reads = expression.contains(u"profileUserID"_s);
        const auto start = std::chrono::steady_clock::now();
        const QVariant value = co_await m_page.evaluate(expression);
        if (reads)
            scriptSeconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        co_return value;
    }
    bool hasCrashed() const override { return m_page.hasCrashed(); }
    void clear() override { m_page.clear(); }

    std::function<void()> onLoad = [] {};
    double scriptSeconds = 0;

private:
    WebSession &m_page;
};

class ScanDesk : public QObject {
public:
    /// The stages of a scan, by the event that ends them.
    enum Stage { asked, filled, checking, checked, rating, rated, painted, stageCount };

    ScanDesk()
    {
        page.onLoad = [this] { note(asked); };
        program.window().show();
        program.start();
        spawn([this] { return program.app().signIn(PracticeBackOffice::user, PracticeBackOffice::password, false); });
        wait([this] { return program.app().flow == AppFlow::main; });
        buy()->installEventFilter(this);
    }
    ~ScanDesk() override { idle(); }

    /// A clerk has weighed and packed the parcel, and scans its invoice.
    void scan()
    {
        idle();
        LabelScreen &label = program.screens().label;
        label.clearDraft();
        label.weightLb = u"1"_s;
        label.mailpiece = PresetMailpiece{u"uline-s-5148"_s};
        idle();
        for (const QChar letter : u"https://%1/i48214"_s.arg(platform.deployment.shortLinkHost))
            press(letter.toUpper().unicode(), letter);
        services.requests.clear();
        page.scriptSeconds = 0;
        std::ranges::fill(at, 0);
        m_start = std::chrono::steady_clock::now();
        press(Qt::Key_Return, u"\r"_s);
        wait([this] { return at[painted] > 0; });
    }
    /// Asks the services the same, and shows nothing.
    void askPlainly()
    {
        for (const HttpRequest &request : std::as_const(services.requests)) {
            bool answered = false;
            spawn([&]() -> Task<> {
                co_await desk.platform().http.send(request);
                answered = true;
            });
            wait([&answered] { return answered; });
        }
    }
    double secondsOf(Stage stage) const { return at[stage] - (stage == asked ? 0 : at[stage - 1]); }

    QTemporaryDir folder;
    WindowPrompts prompts;
    WindowKeyboard keyboard;
    PracticeDesk desk{folder.path(), prompts, keyboard};
    WatchedServices services{desk.platform().http};
    WatchedPage page{desk.platform().web};
    Platform platform = watched(desk.platform());
    Program program{platform, prompts};
    double at[stageCount] = {}; ///< seconds since the last key

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        const std::optional<ShippoRate> rate = program.screens().label.selectedRate();
        if (event->type() == QEvent::Paint && rate && buy()->isEnabled() && shows(u'$' + rate->amount))
            note(painted);
        return QObject::eventFilter(watched, event);
    }

private:
    Platform watched(const Platform &real)
    {
        return {.http = services,
                .clock = real.clock,
                .secrets = real.secrets,
                .preferences = real.preferences,
                .prompts = real.prompts,
                .desktop = real.desktop,
                .processes = real.processes,
                .hid = real.hid,
                .keyboard = real.keyboard,
                .web = page,
                .application = real.application,
                .dataFolder = real.dataFolder,
                .deployment = real.deployment,
                .practice = true};
    }
    Button *buy() { return program.window().findChild<BuyBlock *>()->findChild<Button *>(); }
    bool shows(const QString &price)
    {
        const QList<QLabel *> texts = program.window().findChild<BuyBlock *>()->findChildren<QLabel *>();
        return std::ranges::any_of(texts,
                                   [&](const QLabel *text) { return text->isVisible() && text->text() == price; });
    }
    void press(int key, const QString &letters)
    {
        for (const auto type : {QEvent::KeyPress, QEvent::KeyRelease}) {
            QKeyEvent event(type, key, Qt::NoModifier, letters);
            QCoreApplication::sendEvent(program.window().windowHandle(), &event);
        }
    }
    void note(Stage stage)
    {
        if (at[stage] == 0)
            at[stage] = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
    }
    template <class Done>
    void wait(Done done)
    {
        QTimer tooLong;
        tooLong.callOnTimeout([this] {
            const std::optional<Banner> banner = program.screens().label.banner;
            qFatal("no price: %s %s", qPrintable(program.app().scanLine()), banner ? qPrintable(banner->text) : "");
        });
        tooLong.start(std::chrono::seconds(60));
        while (!done())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    /// Until nothing that the program does by itself is left.
    void idle()
    {
        for (int turn = 0; turn < 4; ++turn) {
            workPool().waitForDone();
            QCoreApplication::processEvents();
        }
    }

    std::chrono::steady_clock::time_point m_start;
    LabelScreen &m_label = program.screens().label;
    QPropertyNotifier m_fill = program.app().scannedInvoice.addNotifier([this] { note(filled); });
    QPropertyNotifier m_check =
        m_label.validating.addNotifier([this] { note(m_label.validating ? checking : checked); });
    QPropertyNotifier m_rating = m_label.rating.addNotifier([this] { note(m_label.rating ? rating : rated); });
};

void scanToThePrice(benchmark::State &state)
{
    ScanDesk desk;
    desk.scan(); // on a working desk, the fonts and the engine's caches are warm
    double plain = 0, total = 0, script = 0, stages[ScanDesk::stageCount] = {};
    for ([[maybe_unused]] auto _ : state) {
        desk.scan();
        state.SetIterationTime(desk.at[ScanDesk::painted]);
        plain += secondsFor([&] { desk.askPlainly(); });
        total += desk.at[ScanDesk::painted];
        script += desk.page.scriptSeconds;
        for (int stage = 0; stage < ScanDesk::stageCount; ++stage)
            stages[stage] += desk.secondsOf(ScanDesk::Stage(stage));
    }
    const auto show = [&state](const char *name, double seconds) {
        state.counters[name] = seconds * 1000 / double(state.iterations());
    };
    show("plain_ms", plain);
    show("own_ms", total - plain);
    show("1_reach_ms", stages[ScanDesk::asked]);
    show("2_engine_ms", stages[ScanDesk::filled] - script);
    show("3_script_ms", script);
    show("4_fill_ms", stages[ScanDesk::checking]);
    show("5_check_ms", stages[ScanDesk::checked]);
    show("6_rates_ms", stages[ScanDesk::rating] + stages[ScanDesk::rated]);
    show("7_paint_ms", stages[ScanDesk::painted]);
}

BENCHMARK(scanToThePrice)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(10);

} // namespace
} // namespace parcelory::bench
