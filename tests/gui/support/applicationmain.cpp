// The main function of tests that need the product's own application object, offscreen.
#include "app/application.h"
#include "tests/support/freshdirectory.h"

#include <gmock/gmock.h>

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    if (GTEST_FLAG_GET(list_tests)) // ctest asks for names: no windows needed
        return RUN_ALL_TESTS();
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const Application application(argc, argv);
    useFreshDirectories();
    return RUN_ALL_TESTS();
}
