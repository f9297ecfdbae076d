// The main function of the simulation's own tests.
#include "app/application.h"
#include "tests/simulation/runner.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    simulation::prepareProcess(argv, false);
    testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests))
        return RUN_ALL_TESTS();
    const Application application(argc, argv);
    simulation::warmUp();
    simulation::startServers();
    return RUN_ALL_TESTS();
}
