// shelf-camera-practice: the tool and a virtual camera in one process, with lessons.
#include "app/application.h"
#include "app/consoleoutput.h"
#include "practice/practiceoptions.h"
#include "practice/practicewindow.h"

int main(int argumentCount, char* arguments[]) {
    const ConsoleOutput console;
    PracticeOptions options;
    if (options.program.answersOnTerminal(argumentCount, arguments))
        return 0;
    const Application application(argumentCount, arguments);
    Application::setDesktopFileName(QStringLiteral("shelf-camera-practice"));
    if (const QString complaint = options.complaintOf(Application::arguments()); !complaint.isEmpty())
        return options.program.refuse(complaint);
    PracticeWindow window;
    window.show();
    if (options.program.isSet(options.lesson))
        window.start(options.program.value(options.lesson).toInt() - 1);
    return Application::exec();
}
