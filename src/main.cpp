#include "app/logs/VerifyTexts.h"
#include "app/records/CopyRecords.h"
#include "carrier/ShippoKeys.h"
#include "core/AppError.h"
#include "core/SettingsKeys.h"
#include "core/ports/Preferences.h"
#include "devices/LabelPrinter.h"
#include "platform/ConsolePrompts.h"
#include "platform/RunningProgram.h"
#include "platform/SystemPlatform.h"
#include "practice/PracticeRun.h"
#include "practice/PracticeScreens.h"
#include "practice/PracticeWindow.h"
#include "records/RecordCopies.h"
#include "records/RestoreStage.h"
#include "records/ShipmentLog.h"
#include "shell/CommandLine.h"
#include "ui/Program.h"
#include "ui/WindowKeyboard.h"

#include <QApplication>
#include <QTextStream>

#include <cstdio>
#include <memory>

namespace parcelory {
using namespace Qt::StringLiterals;

namespace {

int printStatus(Platform &platform)
{
    ShippoKeys keys(platform.secrets, platform.preferences);
    LabelPrinter printer(platform);
    QTextStream out(stdout);
    out << "Carrier:        " << platform.deployment.carrierApi.toString() << '\n'
        << "API key:        " << keys.statusText(keys.activeToken().value_or(QString())) << '\n'
        << "Records:        " << platform.dataFolder.absolutePath() << '\n'
        << "Print queues:   " << Qt::flush;
    try {
        const LabelPrinter::Queues found = printer.listQueues();
        out << found.all.join(u", "_s) << "\nLabel printers: " << found.zebras.join(u", "_s) << '\n';
    } catch (const AppError &error) {
        out << "not listed — "_L1 << error.description() << '\n';
    }
    return 0;
}

int verifyLog(Platform &platform)
{
    if (!platform.dataFolder.exists(u"mailing_log.sqlite"_s))
        throw AppError(u"There is no mailing log in %1."_s.arg(platform.dataFolder.absolutePath()));
    if (RestoreStage::isInterrupted(platform.dataFolder))
        throw AppError(u"A restore is not complete. Start Parcelory once, then verify."_s);
    ShipmentLog log(platform.dataFolder);
    const QList<LogChain::Head> known =
        RecordCopies::headsOf(RecordCopies(platform.dataFolder, copiesFolder(platform)).list());
    if (!log.sealOlder(known))
        throw AppError(u"The mailing log could not be written — "_s + log.lastError() + u'.');
    const LogChain::Report report = log.verify(known).orThrow();
    QTextStream out(stdout);
    out << VerifyTexts::summaryOf(report) << '\n';
    for (const LogChain::Finding &finding : report.findings)
        out << VerifyTexts::sentenceOf(finding) << '\n';
    return report.findings.isEmpty() ? 0 : 1;
}

int addKey(Platform &platform, const QString &typedName)
{
    const QString name = typedName.trimmed();
    const QString token = QTextStream(stdin).readLine().trimmed();
    if (name.isEmpty() || token.isEmpty())
        throw AppError(u"Pass the key's name, and its token on standard input."_s);
    if (name.size() > ShippoKeys::longestName)
        throw AppError(ShippoKeys::tooLong);
    ShippoKeys keys(platform.secrets, platform.preferences);
    if (!keys.store(token, name))
        throw AppError(ShippoKeys::notKept);
    if (!platform.preferences.synchronize())
        throw AppError(settings::notStored);
    QTextStream(stdout) << keys.statusText(keys.activeToken().value_or(QString())) << '\n';
    return 0;
}

/// Drops what libraries say about a missing display or runtime folder: on a console it stands between our own lines.
void quietLibraries()
{
    static QtMessageHandler usual = nullptr;
    usual = qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &context, const QString &text) {
        const bool isOwn = text.startsWith(u"Parcelory:");
        if (isOwn || type == QtCriticalMsg || type == QtFatalMsg)
            usual(type, context, text);
    });
}

int runWindow()
{
    Program::makeLook();
    WindowPrompts prompts;
    WindowKeyboard keyboard;
    SystemPlatform system(prompts, keyboard);
    RunningProgram running(system.platform().dataFolder);
    if (running.handOver())
        return 0;
    Program program(system.platform(), prompts);
    program.window().show();
    running.accept([&program] { program.window().comeToFront(); });
    program.start();
    const int status = QApplication::exec();
    running.stop(); // a start during the end opens its own window
    // Work that hangs, as on a dead network disk, would keep the purchase journal locked for the next start.
    system.platform().application.quitWithin(Program::longestEnd);
    return status;
}

int run(const CommandLine &line, bool window)
{
    if (line.screenshots)
        return drawScreens(*line.screenshots);
    if (line.practice && window)
        return runPracticeWindow(line.practiceFolder);
    if (line.practice)
        return runPractice(line.practiceFolder, line.orders.value_or(QString()));
    if (!line.status && !line.verify && !line.keyName) {
        if (!window)
            throw AppError(u"No display is available. See parcelory --help for commands that need none."_s);
        return runWindow();
    }
    ConsolePrompts prompts;
    SilentKeyboard keyboard;
    SystemPlatform system(prompts, keyboard);
    if (line.verify)
        return verifyLog(system.platform());
    return line.keyName ? addKey(system.platform(), *line.keyName) : printStatus(system.platform());
}

} // namespace
} // namespace parcelory

int main(int argc, char **argv)
{
#ifdef Q_OS_LINUX
    // Without TZ, the C library checks the time zone file at every conversion, which takes a third of an import's time.
    if (!qEnvironmentVariableIsSet("TZ"))
        qputenv("TZ", ":/etc/localtime");
#endif
    const parcelory::Display display = parcelory::CommandLine::display(argc, argv);
    if (display == parcelory::Display::memory)
        qputenv("QT_QPA_PLATFORM", "offscreen");
    parcelory::WebEngineSession::prepareProcess();
    const bool window = display == parcelory::Display::screen;
    if (!window)
        parcelory::quietLibraries();
    std::unique_ptr<QCoreApplication> app;
    if (display != parcelory::Display::none)
        app = std::make_unique<QApplication>(argc, argv);
    else
        app = std::make_unique<QCoreApplication>(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("parcelory"));
    QCoreApplication::setApplicationVersion(QStringLiteral(PARCELORY_VERSION));
    try {
        return parcelory::run(parcelory::CommandLine::parse(QCoreApplication::arguments()), window);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "parcelory: %s\n", qUtf8Printable(parcelory::describe(error)));
        return 1;
    }
}
