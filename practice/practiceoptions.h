// The command line of shelf-camera-practice.
#pragma once

#include "app/programoptions.h"

struct PracticeOptions {
    /// Empty, or why the arguments, the program's name first, cannot be used.
    [[nodiscard]] QString complaintOf(const QStringList& arguments);

    const QCommandLineOption lesson{QStringLiteral("lesson"), QStringLiteral("Start with this lesson."),
                                    QStringLiteral("N")};
    ProgramOptions program{QStringLiteral("shelf-camera-practice"),
                           QStringLiteral("The camera tool and a virtual camera, with lessons."),
                           {lesson}};
};
