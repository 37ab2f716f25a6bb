// Preloaded into the programs under test by `tools/stress-tests -d`: holds back the work of thread pools and new
// connections to a server for random times, up to PARCELORY_DELAY milliseconds. A test that races them then fails, also
// on a fast machine. Other programs that the tests start are left alone.
#include <QFileInfo>
#include <QRunnable>
#include <QThread>
#include <QThreadPool>

#include <dlfcn.h>
#include <sys/socket.h>

#include <random>

namespace {

int longestDelay()
{
    static const int milliseconds = [] {
        const QString program = QFileInfo(QStringLiteral("/proc/self/exe")).symLinkTarget();
        const bool isTested =
            program.endsWith(QStringLiteral("_tests")) || program.endsWith(QStringLiteral("/parcelory"));
        return isTested ? qEnvironmentVariableIntValue("PARCELORY_DELAY") : 0;
    }();
    return milliseconds;
}

void holdBack()
{
    constexpr int promptShare = 3; // one of three is not held back, so that the order changes
    static thread_local std::mt19937 random{std::random_device{}()};
    if (longestDelay() > 0 && random() % promptShare != 0)
        QThread::msleep(random() % unsigned(longestDelay()));
}

template <class Function>
Function next(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

class LateWork : public QRunnable {
public:
    explicit LateWork(QRunnable *work) : m_work(work) {}
    void run() override
    {
        const bool isOurs = m_work->autoDelete();
        holdBack();
        m_work->run();
        if (isOurs)
            delete m_work;
    }

private:
    QRunnable *m_work;
};

} // namespace

// These replace the functions of the same name.

void QThreadPool::start(QRunnable *work, int priority)
{
    using Start = void (*)(QThreadPool *, QRunnable *, int);
    static const auto start = next<Start>("_ZN11QThreadPool5startEP9QRunnablei");
    start(this, longestDelay() > 0 ? new LateWork(work) : work, priority);
}

extern "C" int accept4(int server, sockaddr *peer, socklen_t *size, int flags)
{
    static const auto accept = next<int (*)(int, sockaddr *, socklen_t *, int)>("accept4");
    const int connection = accept(server, peer, size, flags);
    holdBack();
    return connection;
}

extern "C" int accept(int server, sockaddr *peer, socklen_t *size)
{
    static const auto accept = next<int (*)(int, sockaddr *, socklen_t *)>("accept");
    const int connection = accept(server, peer, size);
    holdBack();
    return connection;
}
