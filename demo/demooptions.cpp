#include "demo/demooptions.h"

QString DemoOptions::complaintOf(const QStringList& arguments) {
    if (QString complaint = program.complaintOf(arguments); !complaint.isEmpty())
        return complaint;
    if (program.isSet(tour) && program.isSet(picture))
        return QStringLiteral("--tour and --picture exclude each other");
    if (program.isSet(lineSeed) && !program.isSet(line))
        return QStringLiteral("--line-seed belongs to --line");
    if (program.isSet(tour) && program.isSet(line))
        return QStringLiteral("--tour and --line exclude each other");
    if (program.isSet(cameraPort) != program.isSet(toolPort))
        return QStringLiteral(
            "--camera-port and --tool-port belong together; give two ports that are joined: "
            "--camera-port COM6 --tool-port COM5");
    if (program.isSet(cameraPort) && program.value(cameraPort) == program.value(toolPort))
        return QStringLiteral("--camera-port and --tool-port are two ports that are joined; name two");
    return {};
}
