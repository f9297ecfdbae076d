// The main function of the simulation's own tests.
#include "app/application.h"
#include "tests/simulation/runner.h"
#include "tests/simulation/world/scheduler.h"

#include <QThreadPool>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    simulation::prepareProcess(argv, false);
    testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests))
        return RUN_ALL_TESTS();
    const Application application(argc, argv);
    QThreadPool::globalInstance(); // with the threads that it has on all processors: Qt paints with them
    world::stayOnProcessor();
    simulation::warmUp();
    simulation::startServers();
    return RUN_ALL_TESTS();
}
