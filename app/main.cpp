#include "app/application.h"
#include "app/consoleoutput.h"
#include "app/mainwindow.h"
#include "link/guarded.h"

#include <cstdlib>
#include <exception>
#include <iostream>

namespace {

/// Prints the exception that leaves a thread and ends the program.
[[noreturn]] void printAndAbort() {
    if (const std::exception_ptr failure = std::current_exception()) {
        try {
            std::rethrow_exception(failure);
        } catch (...) {
            std::cerr << exceptionText() << std::endl;
        }
    }
    std::abort();
}

} // namespace

int main(int argumentCount, char* arguments[]) {
    const ConsoleOutput console;
    std::set_terminate(printAndAbort);
    Application application(argumentCount, arguments);
    MainWindow window;
    window.show();
    return Application::exec();
}
