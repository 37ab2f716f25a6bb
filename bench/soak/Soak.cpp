// A desk that buys labels for hours, in minutes: `soak FOLDER LABELS` opens the whole program in memory, signs in, buys
// LABELS labels one after another and prints the size of the process every 500 labels. tools/soak runs it and looks at
// what it leaves. The carrier is a process of its own (`soak --carrier`), because it keeps every label it has sold.

#include "core/AppError.h"
#include "core/Platform.h"
#include "core/PrivateFiles.h"
#include "core/Task.h"
#include "platform/SystemProcesses.h"
#include "platform/WebEngineSession.h"
#include "practice/PracticeDesk.h"
#include "practice/backoffice/PracticeBackOffice.h"
#include "practice/carrier/PracticeCarrier.h"
#include "ui/Program.h"
#include "ui/WindowKeyboard.h"
#include "ui/WindowPrompts.h"

#include <QApplication>
#include <QFile>
#include <QProcess>

#include <cstdio>
#ifdef __GLIBC__
#include <malloc.h>
#endif
#include <memory>

namespace parcelory::bench {
using namespace Qt::StringLiterals;

namespace {

const QString password = u"soak-Pass-4711"_s; ///< tools/soak looks for it in the files

/// Sells labels until its input ends.
int runCarrier()
{
    const PracticeCarrier carrier;
    std::printf("%s\n", qUtf8Printable(carrier.baseUrl().toString()));
    std::fflush(stdout);
    while (std::getchar() != EOF) {
    }
    return 0;
}

/// A child process takes each label, and the practice printer answers for the queue.
class Printer : public ProcessRunner {
public:
    explicit Printer(ProcessRunner &practice) : m_practice(practice) {}
    ProcessOutcome run(const QString &program, const QStringList &arguments, const CancelToken &cancel,
                       std::chrono::milliseconds limit) override
    {
        const bool prints = program.endsWith(u"/lpr"_s);
        return prints ? m_system.run(u"/bin/cat"_s, arguments.last(1), cancel, limit)
                      : m_practice.run(program, arguments, cancel, limit);
    }

private:
    ProcessRunner &m_practice;
    SystemProcesses m_system;
};

/// The size of the process without memory that was freed and is kept for later use.
double megabytes()
{
#ifdef __GLIBC__
    malloc_trim(0);
#endif
    QFile status(u"/proc/self/status"_s);
    const QByteArray text = status.open(QIODevice::ReadOnly) ? status.readAll() : QByteArray();
    const QByteArray size = text.mid(text.indexOf("VmRSS:") + 6).trimmed();
    return size.first(size.indexOf(' ')).toDouble() / 1024;
}

Task<> buy(Program &program, int number)
{
    LabelScreen &label = program.screens().label;
    program.app().draftTo = ShippoAddress{.name = u"Parcel %1"_s.arg(number),
                                          .company = {},
                                          .street1 = u"%1 Montford Ave"_s.arg(number),
                                          .city = u"Asheville"_s,
                                          .state = u"NC"_s,
                                          .zip = u"28801"_s,
                                          .country = u"US"_s};
    label.weightLb = u"1"_s;
    label.dimLength = u"9"_s;
    label.dimWidth = u"6"_s;
    label.dimHeight = u"2"_s;
    co_await label.fetchRates(true);
    co_await label.buyAndPrint();
    if (!label.last.label.value() || !label.purchaseComplete())
        throw AppError(u"Parcel %1: %2 %3"_s.arg(QString::number(number),
                                                 label.banner.value() ? label.banner.value()->text : u"no label"_s,
                                                 label.secondLabel));
}

Task<> work(Program &program, int labels)
{
    constexpr int step = 500;
    AppState &app = program.app();
    if (WebEngineSession::obstacle().isEmpty()) {
        co_await app.signIn(PracticeBackOffice::user, password, true);
        if (app.loginError.value())
            throw AppError(*app.loginError.value());
    }
    app.flow = AppFlow::main;
    for (int number = 1; number <= labels; ++number) {
        co_await buy(program, number);
        if (number % step == 0) {
            co_await app.platform.clock.sleep(std::chrono::seconds(2)); // the last label's picture is drawn by then
            std::printf("%d labels: %.1f MB\n", number, megabytes());
            std::fflush(stdout);
        }
    }
    const auto logged = co_await onPool(app.log, &ShipmentLog::labelsOf, app.platform.clock.now().date());
    std::printf("%lld labels in the log\n", static_cast<long long>(logged.orThrow().size()));
}

int soak(const QString &folder, int labels)
{
    QProcess carrier;
    carrier.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    carrier.start(QCoreApplication::applicationFilePath(), {u"--carrier"_s});
    carrier.waitForReadyRead();
    const QUrl address(QString::fromUtf8(carrier.readLine()).trimmed());

    Program::makeLook();
    WindowPrompts prompts;
    WindowKeyboard keyboard;
    makePrivate(QDir(folder));
    PracticeDesk desk(folder, prompts, keyboard);
    desk.backOffice().setPassword(password);
    Printer printer(desk.platform().processes);
    Platform &practice = desk.platform();
    Platform platform{.http = practice.http,
                      .clock = practice.clock,
                      .secrets = practice.secrets,
                      .preferences = practice.preferences,
                      .prompts = prompts,
                      .desktop = practice.desktop,
                      .processes = printer,
                      .hid = practice.hid,
                      .keyboard = keyboard,
                      .web = practice.web,
                      .application = practice.application,
                      .dataFolder = practice.dataFolder,
                      .deployment = practice.deployment,
                      .practice = true};
    platform.deployment.carrierApi = address;
    int status = 1;
    {
        Program program(platform, prompts);
        program.window().show();
        program.start();
        spawn([&]() -> Task<> {
            try {
                co_await work(program, labels);
                status = 0;
            } catch (const std::exception &error) {
                std::fprintf(stderr, "soak: %s\n", qUtf8Printable(describe(error)));
            }
            QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
        });
        QApplication::exec();
    }
    carrier.closeWriteChannel();
    carrier.waitForFinished();
    return status;
}

} // namespace
} // namespace parcelory::bench

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const bool isCarrier = argc == 2 && qstrcmp(argv[1], "--carrier") == 0;
    if (isCarrier) {
        const QCoreApplication application(argc, argv);
        return parcelory::bench::runCarrier();
    }
    parcelory::WebEngineSession::prepareProcess();
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const QStringList arguments = QCoreApplication::arguments();
    return arguments.size() == 3 ? parcelory::bench::soak(arguments[1], arguments[2].toInt()) : 2;
}
