// The main function of test programs without windows.
#include "tests/support/freshdirectory.h"

#include <gmock/gmock.h>

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
    useFreshDirectories();
    return RUN_ALL_TESTS();
}
