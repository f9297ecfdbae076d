// shelf-camera-practice: the tool and a virtual camera in one process, with lessons.
#include "app/application.h"
#include "app/consoleoutput.h"
#include "app/programoptions.h"
#include "practice/practicewindow.h"

using emulator::Lesson;

namespace {

/// Empty, or why there is no such lesson.
QString lessonComplaint(const QString& number) {
    if (emulator::findLesson(number.toStdString()) != nullptr)
        return {};
    return QStringLiteral("--lesson: there is no lesson \"%1\"; known: %2")
        .arg(number, QString::fromStdString(emulator::knownLessons()));
}

} // namespace

int main(int argumentCount, char* arguments[]) {
    const ConsoleOutput console;
    const QCommandLineOption lesson(QStringLiteral("lesson"), QStringLiteral("Start with this lesson."),
                                    QStringLiteral("N"));
    ProgramOptions options(QStringLiteral("shelf-camera-practice"),
                           QStringLiteral("The camera tool and a virtual camera, with lessons."), {lesson});
    if (options.answersOnTerminal(argumentCount, arguments))
        return 0;
    const Application application(argumentCount, arguments);
    Application::setDesktopFileName(QStringLiteral("shelf-camera-practice"));
    QString complaint = options.complaint();
    if (complaint.isEmpty() && options.isSet(lesson))
        complaint = lessonComplaint(options.value(lesson));
    if (!complaint.isEmpty())
        return options.refuse(complaint);
    PracticeWindow window;
    window.show();
    if (options.isSet(lesson))
        window.start(options.value(lesson).toInt() - 1);
    return Application::exec();
}
