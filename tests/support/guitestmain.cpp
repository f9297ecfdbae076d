// The main function of test programs with windows: offscreen, unless the environment names a platform.
#include "tests/support/freshdirectory.h"

#include <QApplication>

#include <gmock/gmock.h>

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    if (GTEST_FLAG_GET(list_tests)) // ctest asks for names: no windows needed
        return RUN_ALL_TESTS();
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    useFreshDirectories();
    return RUN_ALL_TESTS();
}
