#include "practice/practiceoptions.h"

#include "emulator/lessons/lessons.h"

QString PracticeOptions::complaintOf(const QStringList& arguments) {
    QString text = program.complaintOf(arguments);
    if (!text.isEmpty() || !program.isSet(lesson))
        return text;
    const QString number = program.value(lesson);
    if (emulator::findLesson(number.toStdString()) != nullptr)
        return {};
    return QStringLiteral("--lesson: there is no lesson \"%1\"; known: %2")
        .arg(number, QString::fromStdString(emulator::knownLessons()));
}
