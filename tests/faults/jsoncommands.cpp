// Rows: the camera that speaks JSON.
#include "tests/faults/cell.h"
#include "tests/faults/command.h"

using namespace std::chrono_literals;

namespace faultmatrix {

namespace {

using enum Ending;

Command row(const char* method, const char* part, const char* request, std::function<Ending(Bench&)> run,
            milliseconds longest, const Lines& lines, const Column& changed) {
    Command command;
    command.method = method;
    command.part = part;
    command.family = "JSON";
    command.request = request;
    command.type = emulator::CameraType::quenta;
    command.run = std::move(run);
    command.longest = longest;
    command.goodLines = lines.good;
    // The envelope has no address and another start.
    command.cells = with(without(frameColumn(lines), {"address=0x55", "command=0x21"}), changed);
    return command;
}

Ending download(Bench& b) {
    if (!b.client.getQuentaModbusPic(b.id))
        return fails;
    return endingOfFile(std::to_string(b.id) + ".jpg", storedJsonPicture());
}

Command property() {
    const Expected empty{fails, {}, {}};
    return row("getQuentaModbusProperty", "", "jsonProperty#1",
               [](Bench& b) {
                   return endingOf(b.client.getQuentaModbusProperty({}),
                                   std::string(R"({"result":0,"version":"1.0.3"})"));
               },
               500ms, {{}, {"error"}},
               {{"invalid-json", {otherValue, {}, {}}}, {"short-json=9", empty}, {"short-json=13", empty}});
}

/// 50 reads of 50 ms.
Command firstPiece() {
    const Lines lines{{"first end"}, {"error"}};
    const Expected sizeless{fails, {"first end", "picture size missing"}, {}};
    const Expected other{otherValue, lines.good, {}};
    return row("getQuentaModbusPic", "first piece", "jsonPicture#1", &download, 2500ms, lines,
               {{"no-marker", other}, // adds nothing and does not fail
                {"hang-up=200", {fails, lines.whenLost(), {}}},
                {"no-size", sizeless},
                {"size-text=\"x\"", sizeless},
                {"size-text=99999999999", sizeless},
                {"size-text=-1", other}, // the first piece was the whole picture
                {"short-json=9", sizeless},
                {"short-json=13", sizeless},
                {"invalid-json", {works, lines.good, {}}}});
}

/// 5000 reads of 50 ms: silence in the middle keeps the command waiting for four minutes.
Command laterPiece() {
    const Lines lines{{"first end"}, {"first end", "check2 failed", "read failed"}};
    const Expected other{otherValue, lines.good, {}};
    return row("getQuentaModbusPic", "later piece", "jsonPicture#2", &download, 250s, lines,
               {{"no-marker", other},
                {"hang-up=200", {fails, lines.whenLost(), {}}},
                {"short-json=13", other},
                {"invalid-json", {works, lines.good, {}}}});
}

} // namespace

std::vector<Command> jsonCommands() {
    return {property(), firstPiece(), laterPiece()};
}

} // namespace faultmatrix
