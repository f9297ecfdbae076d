// The main function of all test programs. For programs with windows the build names the class and header of
// the application object: Qt's or the product's own.
#include "tests/support/workingdirectory.h"

#ifdef CAMERA_VIRTUAL_TIME
#include "tests/simulation/world/scheduler.h"
#endif

#ifdef TEST_APPLICATION
#include TEST_APPLICATION_HEADER
#ifdef CAMERA_VIRTUAL_TIME
#include "tests/support/screenrefresh.h"
#endif

#include <QTemporaryDir>
#include <QThreadPool>
#endif

#include <gmock/gmock.h>

int main(int argc, char** argv) {
    testing::InitGoogleMock(&argc, argv);
#ifdef TEST_APPLICATION
    if (GTEST_FLAG_GET(list_tests)) // ctest asks for names: no windows needed
        return RUN_ALL_TESTS();
    // File dialogs lock their settings; in virtual time a wait for another process would be over at once.
    const QTemporaryDir settings;
    qputenv("XDG_CONFIG_HOME", settings.path().toUtf8());
#ifdef CAMERA_VIRTUAL_TIME
    qputenv("QT_NO_GLIB", "1"); // Qt's own event loop waits where virtual time is
#endif
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const TEST_APPLICATION application(argc, argv);
#ifdef CAMERA_VIRTUAL_TIME
    const ScreenRefresh screen;
    QThreadPool::globalInstance(); // with the threads that it has on all processors: Qt paints with them
#endif
#endif
#ifdef CAMERA_VIRTUAL_TIME
    world::stayOnProcessor();
#endif
    useFreshDirectories();
    const int result = RUN_ALL_TESTS();
#ifdef TEST_APPLICATION
    // Results of jobs that outlived their window.
    QThreadPool::globalInstance()->waitForDone();
    QCoreApplication::sendPostedEvents();
#endif
    return result;
}
