// Rows: status and properties.
#include "tests/faults/command.h"

#include <thread>

using namespace std::chrono_literals;

namespace faultmatrix {

namespace {

using enum Ending;

constexpr const char* family = "Status and properties";

/// A row with the column of frames.
Command row(const std::string& method, const std::string& request, std::function<Ending(Bench&)> run,
            milliseconds longest, const Lines& lines, const Column& changed) {
    Command command;
    command.method = method;
    command.family = family;
    command.request = request + "#1";
    command.run = std::move(run);
    command.longest = longest;
    command.goodLines = lines.good;
    command.cells = with(frameColumn(lines), changed);
    return command;
}

/// Commands that log as the generic property read.
const Lines propertyLines{{"end commonproperty"},
                          {"getCommonProperty error2:check failed in getCommonProperty"},
                          {"getCommonProperty error3:*"}};
const Expected propertyRefused{fails, {"getCommonProperty error2:getCommonProperty result !=0x00"}, {}};

/// Cells of the generic property read beyond the column of frames.
Column propertyCells(const Column& more) {
    return with({{"result=1", propertyRefused},
                 {"result=0xFF", propertyRefused},
                 {"echo=0x63", {works, propertyLines.good, {}}},  // its id is not looked at
                 {"payload=2", {fails, propertyLines.good, {}}}}, // an empty value is one, and a failure
                more);
}

const Lines restartLines{{}, {"reset failed"}};

Column restartCells() {
    const Expected refused{fails, {"reset failed2"}, {}};
    return {{"result=1", refused},
            {"result=0xFF", refused},
            {"refuse", refused},
            {"back-at=2", {}},
            {"stay-down", {}}};
}

/// One read, compared whole: nothing before, nothing behind, and the command has to be right.
Command heartbeat() {
    const auto other = [](const char* text) { return Expected{fails, {std::string("hex str:") + text}, {}}; };
    const Expected nothing = other("");
    const Expected goodAndMore = other("AA5A110001?*");
    return row("testHeartBeat", "heartbeat", [](Bench& b) { return endingOf(b.client.testHeartBeat()); },
               200ms, {{"hex str:AA5A110001"}, {"hex str:"}, {"command failed:*"}},
               {{"before=33", other("33AA1110001")},
                {"before=AA", other("AAAA1110001")},
                {"before=AA33", other("AA335A1110001")},
                {"before=335A00AA", other("335AAAAA5A1110001")},
                {"glue", goodAndMore},
                {"stray=1", goodAndMore},
                {"raw=414243", other("41")},
                {"truncate=1", other("AA5A11000")},
                {"truncate=6", other("AA5A")},
                {"length=+1", other("AA5A120001")},
                {"length=-1", other("AA5A100001")},
                {"length=0xFFFFFFFF", other("AA5A1FFFFFFFF1")},
                {"command=0x21", other("AA5A2110001")},
                {"result=0", other("AA5A110000")},
                {"split=9,400", other("AA5A1100")},
                {"delay=400", nothing}});
}

/// One short read of an answer without a frame: all bytes are the value.
Command rawProperty() {
    const std::vector<std::string> end{"end commonpropertyWithoutParse"};
    const Expected empty{fails, end, {}};
    const Expected other{otherValue, end, {}};
    Command command =
        row("getCommonPropertyWithoutParse", "gyroTest",
            [](Bench& b) {
                const auto answer = b.client.getCommonPropertyWithoutParse(3, 0x0F, 200, 100);
                return endingOf(std::string(answer.begin(), answer.end()), std::string("3success"));
            },
            200ms, {end, end, {"command failed:*"}},
            {{"delay=400", empty},
             {"glue", other},
             {"raw=414243", other},
             {"truncate=1", other},
             {"truncate=6", other},
             {"stray=1", other},
             {"before=33", other},
             {"before=AA", other},
             {"before=AA33", other},
             {"before=335A00AA", other},
             {"split=1,400", other}});
    command.cells = without(command.cells, {"length=+1", "length=-1", "length=0xFFFFFFFF", "bad-check",
                                            "zero-check", "address=0x55", "command=0x21"});
    return command;
}

/// The door command reads nothing: it is done when it is written.
Command door() {
    Command command =
        row("opDoor", "door",
            [](Bench& b) {
                const auto events = [&b] {
                    return b.front.withCamera([](auto& camera) { return camera.state().doorLog.size(); });
                };
                const std::size_t before = events();
                b.client.opDoor(true);
                for (int wait = 0; wait < 100 && events() == before; ++wait)
                    std::this_thread::sleep_for(10ms);
                return endingOf(events() == before + 1);
            },
            100ms, {{}, {}, {}}, {{"result=1", {}}});
    for (auto& [fault, expected] : command.cells)
        expected = {};
    command.dropsGarbage = false;
    return command;
}

std::vector<Command> versions() {
    const Expected refusedQv{fails, {"propertyValue error:"}, {}};
    const auto model = [](Ending ending, const char* line) { return Expected{ending, {line}, {}}; };
    const Lines modelLines{{"getModel end"}, {"getModelInfo checkData error"}};
    const Expected unanswered{fails, propertyLines.unanswered, {}};
    const Expected cut{otherValue, propertyLines.good, {}};
    return {
        // 4 reads of 15 bytes; the value ends at a zero byte
        row(
            "getAppVersion", "getAppVersion",
            [](Bench& b) { return endingOf(b.client.getAppVersion(), std::string("2.3.1")); }, 200ms,
            propertyLines,
            propertyCells({{"value-size=48", cut}, {"value-size=49", unanswered}, {"zero-inside=3", cut}})),
        row(
            "getSystemVersion", "getSystemVersion",
            [](Bench& b) { return endingOf(b.client.getSystemVersion(), std::string("5.10.8")); }, 300ms,
            propertyLines,
            propertyCells({{"value-size=48", cut}, {"value-size=49", unanswered}, {"zero-inside=3", cut}})),
        // 5 reads of 15 bytes
        row("getQvVersion", "getQvVersion",
            [](Bench& b) { return endingOf(b.client.getQvVersion(), std::string("qv 1.4.0")); }, 250ms,
            {{}, {"propertyValue error:"}},
            {{"result=1", refusedQv},
             {"result=0xFF", refusedQv},
             {"payload=2", {fails, {}, {}}},
             {"echo=0x63", {}},
             {"value-size=63", {otherValue, {}, {}}},
             {"value-size=64", refusedQv}}),
        // 10 reads of 15 bytes: two of them take all but the last byte of the answer
        row("getModelInfo", "getModelInfo",
            [](Bench& b) { return endingOf(b.client.getModelInfo(), std::string("model_v1 2024-01-31")); },
            500ms, modelLines,
            {{"result=1", model(fails, "getModelInfo result error")},
             {"result=0xFF", model(fails, "getModelInfo result error")},
             {"payload=2", model(fails, "getModel end")},
             {"echo=0x63", model(fails, "getModelInfo id error")},
             {"length=-1", model(otherValue, "getModel end")},
             {"value-size=138", model(otherValue, "getModel end")},
             {"value-size=139", model(fails, "getModelInfo checkData error")}}),
    };
}

std::vector<Command> settings() {
    const auto snWritten = [](const char* result) {
        return std::vector<std::string>{std::string("set sn flag:3  fg2:") + result};
    };
    const auto written = [](const char* result) {
        return std::vector<std::string>{std::string("set CommonProperty flag:15  fg2:") + result};
    };
    const Expected snRefused{fails, {"get sn failed2"}, {}};
    return {
        row("getSn", "getSn", [](Bench& b) { return endingOf(b.client.getSn(), std::string("SHELF000001")); },
            500ms, {{"sn:SHELF000001"}, {"getSnFailed"}},
            {{"result=1", snRefused},
             {"result=0xFF", snRefused},
             {"echo=0x63", snRefused},
             {"refuse", snRefused},
             {"payload=2", {fails, {"sn:"}, {}}}}),
        row("setSn", "setSn", [](Bench& b) { return endingOf(b.client.setSn("SHELF000001")); }, 500ms,
            {snWritten("0"), {"setSnFailed"}},
            {{"result=1", {fails, snWritten("1"), {}}}, {"result=0xFF", {fails, snWritten("255"), {}}}}),
        row(
            "getCommonProperty", "getProperty",
            [](Bench& b) {
                return endingOf(b.client.getCommonProperty(15, 2), std::vector<std::uint8_t>{30});
            },
            500ms, propertyLines,
            propertyCells({{"value-size=988", {otherValue, propertyLines.good, {}}},
                           {"value-size=989", {fails, propertyLines.unanswered, {}}}})),
        row("setCommonProperty", "setProperty",
            [](Bench& b) { return endingOf(b.client.setCommonProperty(15, {30}, 3)); }, 500ms,
            {written("0"), {"setSnFailed"}},
            {{"result=1", {fails, written("1"), {}}}, {"result=0xFF", {fails, written("255"), {}}}}),
    };
}

} // namespace

std::vector<Command> statusCommands() {
    std::vector<Command> rows{heartbeat()};
    for (const auto& part : {settings(), versions()})
        rows.insert(rows.end(), part.begin(), part.end());
    rows.push_back(rawProperty());
    rows.push_back(row(
        "rebootCamera", "reboot", [](Bench& b) { return endingOf(b.client.rebootCamera()); }, 500ms,
        restartLines, restartCells()));
    rows.push_back(row(
        "resetToFactory", "reset", [](Bench& b) { return endingOf(b.client.resetToFactory()); }, 500ms,
        restartLines, restartCells()));
    rows.push_back(door());
    return rows;
}

} // namespace faultmatrix
