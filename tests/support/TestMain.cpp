#include "support/Printing.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QStandardPaths>

int main(int argc, char **argv)
{
    QStandardPaths::setTestModeEnabled(true);
    testing::InitGoogleMock(&argc, argv);
    QCoreApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
