#include "platform/WebEngineSession.h"

#include <QApplication>
#include <benchmark/benchmark.h>

int main(int argc, char **argv)
{
#ifdef Q_OS_LINUX
    // As in the program: otherwise every conversion of a time reads the zone's file.
    if (!qEnvironmentVariableIsSet("TZ"))
        qputenv("TZ", ":/etc/localtime");
#endif
    parcelory::WebEngineSession::prepareProcess();
    // Labels need fonts, but no display; the programs that the benchmarks start choose their own.
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication app(argc, argv);
    if (platform.isNull())
        qunsetenv("QT_QPA_PLATFORM");
    else
        qputenv("QT_QPA_PLATFORM", platform);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
