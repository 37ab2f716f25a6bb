// Measures a start, from the process to its window on the display. Needs an X server without a window manager, such as
// xvfb-run provides.

#include "Compare.h"
#include "LargeLog.h"

#include <QProcess>
#include <QTemporaryDir>
#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace parcelory::bench {
using namespace Qt::StringLiterals;

namespace {

/// Watches which windows appear on the display.
class Display {
public:
    Display() : m_connection(xcb_connect(nullptr, nullptr), &xcb_disconnect)
    {
        if (xcb_connection_has_error(m_connection.get()))
            throw std::runtime_error("needs a display: xvfb-run -a build/release/bench/parcelory_bench");
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())).data->root;
        const uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_connection.get(), root, XCB_CW_EVENT_MASK, &events);
        xcb_flush(m_connection.get());
    }
    /// Returns when a window of the size of a main window is on the display; toolkits also map tiny windows.
    void waitForWindow()
    {
        while (const Event event = next()) {
            const auto *shown = reinterpret_cast<const xcb_map_notify_event_t *>(event.get());
            if ((event->response_type & ~0x80) == XCB_MAP_NOTIFY && widthOf(shown->window) >= 1000)
                return;
        }
        throw std::runtime_error("the display is gone");
    }
    void forgetEvents()
    {
        while (Event(xcb_poll_for_event(m_connection.get()), &std::free)) {
        }
    }

private:
    using Event = std::unique_ptr<xcb_generic_event_t, decltype(&std::free)>;

    Event next() { return {xcb_wait_for_event(m_connection.get()), &std::free}; }
    int widthOf(xcb_window_t window)
    {
        auto *answer =
            xcb_get_geometry_reply(m_connection.get(), xcb_get_geometry(m_connection.get(), window), nullptr);
        const int width = answer ? answer->width : 0;
        std::free(answer);
        return width;
    }

    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> m_connection;
};

/// Starts a program and waits for its window.
class Start {
public:
    explicit Start(Display &display) : m_display(display) {}

    void operator()(const QString &program, const QStringList &arguments)
    {
        m_display.forgetEvents();
        m_process = std::make_unique<QProcess>();
        m_process->start(program, arguments);
        if (!m_process->waitForStarted())
            throw std::runtime_error("cannot be started");
        m_display.waitForWindow();
    }
    void end()
    {
        m_process->kill();
        m_process->waitForFinished();
    }

private:
    Display &m_display;
    std::unique_ptr<QProcess> m_process;
};

void start(benchmark::State &state, const QString &folder)
{
    try {
        Display display;
        Start program(display);
        compare(
            state, [&] { program(QStringLiteral(PARCELORY_PROGRAM), {u"--practice"_s, u"--data"_s, folder}); },
            [&] { program(QStringLiteral(PARCELORY_EMPTY_WINDOW), {}); }, [&] { program.end(); });
    } catch (const std::exception &error) {
        state.SkipWithError(error.what());
    }
}

void startOfANewDesk(benchmark::State &state)
{
    const QTemporaryDir folder;
    start(state, folder.path());
}

void startWithALargeLog(benchmark::State &state)
{
    start(state, largeLog().path());
    state.counters["rows"] = rowCount();
}

BENCHMARK(startOfANewDesk)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(15);
BENCHMARK(startWithALargeLog)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(15);

} // namespace
} // namespace parcelory::bench
