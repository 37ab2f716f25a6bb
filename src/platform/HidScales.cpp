#include "platform/HidScales.h"

#include "platform/HidEventQueue.h"

#include <hidapi.h>
#ifdef Q_OS_MACOS
#include <hidapi_darwin.h>
#endif

#include <algorithm>
#include <chrono>
#include <csignal>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

constexpr unsigned short scalePage = 0x8D;
constexpr std::chrono::milliseconds readEvery{40}; // the system buffers about 30 reports or more meanwhile
constexpr int mostReads = 64;                      // per scale and pass: a chatty scale must not block the others

/// The open scales. All hidapi calls are on one thread, because hidapi on macOS requires it.
class OpenScales {
public:
    explicit OpenScales(HidEventQueue &inbox) : m_inbox(inbox)
    {
        hid_init();
#ifdef Q_OS_MACOS
        hid_darwin_set_open_exclusive(0); // other programs may read the scale, too
#endif
    }
    ~OpenScales()
    {
        m_open.clear();
        hid_exit();
    }

    bool isEmpty() const { return m_open.empty(); }
    /// Opens newly plugged-in scales.
    void look();
    /// Reads the pending reports and closes unplugged scales.
    void read();

private:
    struct Closer {
        void operator()(hid_device *device) const { hid_close(device); }
    };
    struct Device {
        int number = 0;
        std::unique_ptr<hid_device, Closer> handle;
    };

    void open(const hid_device_info &info);
    /// False if the device is gone.
    bool drain(const Device &device);

    HidEventQueue &m_inbox;
    std::map<std::string, Device> m_open; ///< by path
    std::map<std::string, int> m_refusals;
    int m_lastNumber = 0;
};

void OpenScales::look()
{
    std::set<std::string> seen; // hidapi lists a scale once per usage
    hid_device_info *const all = hid_enumerate(0, 0);
    for (const hid_device_info *info = all; info; info = info->next) {
        if (info->usage_page == scalePage && info->path && !m_open.contains(info->path) &&
            seen.insert(info->path).second)
            open(*info);
    }
    hid_free_enumeration(all);
}

void OpenScales::open(const hid_device_info &info)
{
    std::unique_ptr<hid_device, Closer> handle(hid_open_path(info.path));
    if (!handle) {
        if (++m_refusals[info.path] == 2) // at the first attempt the device may not be ready yet
            qWarning("the scale at %s is there, but this user may not read it", info.path);
        return;
    }
    m_refusals.erase(info.path);
    m_inbox.attached(++m_lastNumber,
                     QString::fromWCharArray(info.product_string ? info.product_string : L"").trimmed());
    m_open[info.path] = {m_lastNumber, std::move(handle)};
}

void OpenScales::read()
{
    std::erase_if(m_open, [this](const auto &entry) {
        const bool gone = !drain(entry.second);
        if (gone)
            m_inbox.removed(entry.second.number);
        return gone;
    });
}

bool OpenScales::drain(const Device &device)
{
    unsigned char report[64];
    for (int reads = 0; reads < mostReads; ++reads) {
        const int size = hid_read_timeout(device.handle.get(), report, sizeof report, 0);
        if (size <= 0)
            return size == 0;
        m_inbox.report(device.number, QByteArray(reinterpret_cast<const char *>(report), size));
    }
    return true;
}

/// A signal on this thread would look like an unplugged scale.
void blockSignals()
{
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, nullptr);
}

} // namespace

void HidScales::start(Listener listener)
{
    stop();
    m_listener = std::move(listener);
    m_stopping = false;
    m_thread = std::thread(&HidScales::run, this);
}

void HidScales::stop()
{
    if (!m_thread.joinable())
        return;
    {
        const std::lock_guard lock(m_access);
        m_stopping = true;
    }
    m_woken.notify_all();
    m_thread.join();
    m_inbox.fetch(); // discard undelivered events
    m_listener = {};
}

void HidScales::run()
{
    using std::chrono::steady_clock;
    blockSignals();
    OpenScales scales(m_inbox);
    steady_clock::time_point nextLook = steady_clock::now(), wake;
    do {
        if (steady_clock::now() >= nextLook) {
            scales.look();
            nextLook = steady_clock::now() + m_lookEvery;
        }
        scales.read();
        if (m_inbox.needsFetching())
            QMetaObject::invokeMethod(&m_receiver, [this] { deliver(); }, Qt::QueuedConnection);
        wake = scales.isEmpty() ? nextLook : std::min(nextLook, steady_clock::now() + readEvery);
    } while (!waitForStop(wake));
}

bool HidScales::waitForStop(std::chrono::steady_clock::time_point until)
{
    std::unique_lock lock(m_access);
    return m_woken.wait_until(lock, until, [this] { return m_stopping; });
}

void HidScales::deliver()
{
    for (const HidEventQueue::Event &event : m_inbox.fetch()) {
        switch (event.kind) {
        case HidEventQueue::Event::Kind::attached:
            m_listener.attached(event.device, event.product);
            break;
        case HidEventQueue::Event::Kind::removed:
            m_listener.removed(event.device);
            break;
        case HidEventQueue::Event::Kind::report:
            m_listener.report(event.device, event.bytes);
            break;
        }
    }
}

} // namespace parcelory
