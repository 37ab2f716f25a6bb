#include "support/Afternoon.h"
#include "support/Printing.h"

#include <QGuiApplication>
#include <QStandardPaths>
#include <gmock/gmock.h>

int main(int argc, char **argv)
{
    parcelory::test::leaveTheNight();
    QStandardPaths::setTestModeEnabled(true);
    testing::InitGoogleMock(&argc, argv);
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv); // documents need its fonts
    return RUN_ALL_TESTS();
}
