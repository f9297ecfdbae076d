// The command line of shelf-camera-demo.
#pragma once

#include "app/programoptions.h"

struct DemoOptions {
    /// Empty, or why the arguments, the program's name first, cannot be used.
    [[nodiscard]] QString complaintOf(const QStringList& arguments);

    const QCommandLineOption tour{
        QStringLiteral("tour"),
        QStringLiteral("Drive the window through all it can do, leave screenshots in "
                       "FOLDER and exit; 0 if everything was as it must be."),
        QStringLiteral("FOLDER")};
    const QCommandLineOption cameraPort{
        QStringLiteral("camera-port"),
        QStringLiteral("Put the cameras on this serial port instead of pseudo-terminals, one at a time."),
        QStringLiteral("PORT")};
    const QCommandLineOption toolPort{
        QStringLiteral("tool-port"),
        QStringLiteral("The port that a null-modem line joins to the cameras'; the window opens it."),
        QStringLiteral("PORT")};
    const QCommandLineOption line{
        QStringLiteral("line"),
        QStringLiteral("The cameras' lines: a preset or traits, as virtual-camera takes them."),
        QStringLiteral("MODEL")};
    const QCommandLineOption lineSeed{
        QStringLiteral("line-seed"), QStringLiteral("Another line of this --line (1)."), QStringLiteral("N")};
    const QCommandLineOption picture{
        QStringLiteral("picture"),
        QStringLiteral("Open the link, save the window as FILE and exit; 0 if the camera answered."),
        QStringLiteral("FILE")};
    const QCommandLineOption dark{QStringLiteral("dark"), QStringLiteral("Show everything in a dark style.")};
    ProgramOptions program{QStringLiteral("shelf-camera-demo"),
                           QStringLiteral("The camera tool with virtual cameras attached."),
                           {tour, picture, dark, cameraPort, toolPort, line, lineSeed}};
};
