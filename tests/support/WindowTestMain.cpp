#include "support/Afternoon.h"
#include "support/Printing.h"
#include "ui/parts/Accessibility.h"
#include "ui/theme/Theme.h"

#include <QApplication>
#include <QStandardPaths>
#include <gmock/gmock.h>

int main(int argc, char **argv)
{
    parcelory::test::leaveTheNight();
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) // set for windows on a real display
        qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" PARCELORY_TEST_DATA "/screen.json");
    QStandardPaths::setTestModeEnabled(true);
    testing::InitGoogleMock(&argc, argv);
    QApplication app(argc, argv);
    parcelory::Theme::install(false);
    parcelory::installAccessibility();
    return RUN_ALL_TESTS();
}
