// Rows: pictures of both generations.
#include "tests/faults/cell.h"
#include "tests/faults/command.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace faultmatrix {

namespace {

using enum Ending;
using emulator::CameraType;

const std::vector<std::string> stopped{"command failed:link is closing"};
const std::vector<std::string> lost{"command failed:*"};

Command row(const std::string& method, const std::string& request, CameraType type,
            std::function<Ending(Bench&)> run, milliseconds longest, const Lines& lines,
            const Column& changed) {
    Command command;
    command.method = method;
    command.family = "Pictures";
    command.request = request + "#1";
    command.type = type;
    command.run = std::move(run);
    command.longest = longest;
    command.goodLines = lines.good;
    command.cells = with(frameColumn(lines), changed);
    return command;
}

/// Captures and deletions say nothing when they are refused.
Column refusals() {
    const Expected refused{fails, {}, {}};
    return {{"result=1", refused}, {"result=0xFF", refused}, {"refuse", refused}};
}

/// The records are counted by the length of the answer; the count byte is logged only.
Ending endingOfCatalogue(const std::vector<protocol::RecordBytes>& records, const protocol::Bytes& good) {
    if (records.empty())
        return fails;
    const bool same = records.size() == 1 && std::equal(good.begin(), good.end(), records.front().get());
    return same ? works : otherValue;
}

protocol::PictureInfo storedInfo(Bench& b) {
    return b.front.withCamera([](auto& camera) { return camera.state().pictures.front().info; });
}

Command catalogue(const std::string& method, const std::string& request, CameraType type,
                  std::function<Ending(Bench&)> run, milliseconds longest, const std::string& failureText,
                  int mostRecords) {
    const Expected unanswered{fails, {failureText + "*"}, {}};
    const auto counted = [](Ending ending, int count) {
        return Expected{ending, {"pic num:" + std::to_string(count & 0xFF)}, {}};
    };
    return row(method, request, type, std::move(run), longest, {counted(works, 1).lines, unanswered.lines},
               {{"count=200", counted(works, 200)},
                {"payload=2", counted(fails, 1)},
                {"records=0", counted(fails, 0)},
                {"records=" + std::to_string(mostRecords), counted(otherValue, mostRecords)},
                {"records=" + std::to_string(mostRecords + 1), unanswered}});
}

// --- transfers: blocks are read until size + 11 bytes are there, and nothing but the result is looked at

Column transferColumn(const Lines& lines, const Expected& refused) {
    const Expected good{works, lines.good, {}};
    const Expected shifted{otherValue, lines.good, {}}; // the picture starts too early in the answer
    const Expected waits{endless, stopped, {}};
    Column column = frameColumn(lines);
    for (const char* const fault : {"silent", "late", "raw=414243", "truncate=1", "truncate=6", "payload=2",
                                    "refuse", "picture-size=-50"})
        column[fault] = waits;
    for (const char* const fault :
         {"glue", "stray=1", "length=+1", "length=-1", "length=0xFFFFFFFF", "picture-size=+20", "delay=400"})
        column[fault] = good;
    for (const char* const fault : {"before=33", "before=AA", "before=AA33"})
        column[fault] = shifted;
    column["before=335A00AA"] = refused; // the length stands where the result is looked for
    column["result=1"] = column["result=0xFF"] = refused;
    column["hang-up=50"] = {fails, lost, {}};
    return column;
}

Command transfer(const std::string& method, const std::string& request, CameraType type,
                 std::function<void(Bench&)> read, const Column& changed, const Expected& refused) {
    const Lines lines{{"read over"}, {}};
    Command command = row(method, request, type,
                          [read = std::move(read)](Bench& b) {
                              read(b);
                              return endingOfFile(std::to_string(b.id) + ".jpg", storedPicture());
                          },
                          900ms, lines, {});
    command.cells = with(transferColumn(lines, refused), changed);
    command.dropsGarbage = false;
    return command;
}

std::vector<Command> transfers() {
    const Expected refused{fails, {"read result error"}, {}};
    const Expected taken{works, {"read over"}, {}}; // V1 logs the result and goes on
    const Expected shifted{otherValue, {"read over"}, {}};
    return {
        transfer(
            "getOriginTargetPic", "read", CameraType::ostra,
            [](Bench& b) { b.client.getOriginTargetPic(b.id, pictureBytes); }, {}, refused),
        transfer(
            "getTargetPicV1", "readV1", CameraType::salesDynamic,
            [](Bench& b) { b.client.getTargetPicV1(b.id, pictureBytes); }, {{"before=335A00AA", shifted}},
            taken),
    };
}

// --- takePic: five exchanges of a second each, with a second between them ----------------------------------

constexpr auto takePicUsual = 9s;

Ending takePic(Bench& b) {
    if (!b.client.takePic())
        return fails;
    return endingOfFile("a.jpg", storedPicture());
}

const std::vector<std::string> taken{"end of takepic result is:0"};

Command takePicRow(const char* part, const std::string& request, const Lines& lines, milliseconds longest,
                   const Column& changed) {
    Command command = row("takePic", request, CameraType::ostra, &takePic, longest, lines, changed);
    command.part = part;
    command.request = request;
    command.patience = takePicUsual + 1500ms;
    return command;
}

std::vector<Command> takePicRows() {
    const auto alsoLogged = [](const std::string& line) {
        return Expected{works, {taken.front(), line}, {}};
    };
    const Expected nothingFound{endless, {"size-trans:1  1  1  1", stopped.front()}, {}};
    const Lines deleteLines{taken, {"error in takepic deletepic"}};
    const Lines captureLines{taken, {"error in takepic cmd 0x06"}};
    const Lines catalogueLines{taken, {"error in takepic cmd 0x07"}};
    const Lines readLines{taken, {}};

    Command first = takePicRow("first deletion", "delete#1", deleteLines, takePicUsual + 2s,
                               {{"result=1", alsoLogged("start of takepic delete result is:1")}});
    // Without an id the catalogue holds no such picture: 0x01010101 bytes are asked for.
    Command capture =
        takePicRow("capture", "capture#1", captureLines, takePicUsual + 4s,
                   {{"result=1", alsoLogged("error in takepic cmd 0x06 parse error")},
                    {"refuse",
                     {endless,
                      {"error in takepic cmd 0x06 parse error", nothingFound.lines.front(), stopped.front()},
                      {}}},
                    {"payload=1", nothingFound}});
    Command list = takePicRow("catalogue", "catalogue#1", catalogueLines, takePicUsual + 6s,
                              {{"count=200", alsoLogged("pic num:200")},
                               {"hide-newest", nothingFound},
                               {"records=0", nothingFound},
                               {"payload=2", nothingFound}});
    Command read = takePicRow("read", "read#1", readLines, takePicUsual + 2s, {});
    const Expected anyResult = alsoLogged("readResult:1");
    read.cells = with(transferColumn(readLines, {works, {taken.front(), "readResult:255"}, {}}),
                      {{"result=1", anyResult}, {"before=335A00AA", {otherValue, taken, {}}}});
    read.dropsGarbage = false;
    Command last = takePicRow("last deletion", "delete#2", deleteLines, takePicUsual + 10s,
                              {{"result=1", {works, {"end of takepic result is:1"}, {}}}});
    last.leavesFile = true;
    return {first, capture, list, read, last};
}

} // namespace

std::vector<Command> pictureCommands() {
    using enum CameraType;
    std::vector<Command> rows{
        row(
            "originCapture", "capture", ostra, [](Bench& b) { return endingOf(b.client.originCapture()); },
            10000ms, {{}, {"error in originCapture"}}, refusals()),
        row(
            "captureV1", "captureV1", salesDynamic, [](Bench& b) { return endingOf(b.client.captureV1()); },
            2500ms, {{}, {"error in captureV1"}}, refusals()),
        catalogue(
            "getOriginPicInfos", "catalogue", ostra,
            [](Bench& b) {
                const protocol::Bytes good = protocol::buildOriginRecord(storedInfo(b));
                return endingOfCatalogue(b.client.getOriginPicInfos(), good);
            },
            500ms, "error in getOriginPicInfos cmd 0x07  ", 378),
        catalogue(
            "getPicInfosV1", "catalogueV1", salesDynamic,
            [](Bench& b) {
                const protocol::Bytes good = protocol::buildV1Record(storedInfo(b));
                return endingOfCatalogue(b.client.getPicInfosV1(), good);
            },
            50s, "error in getPicInfos cmd 0xc7  ", 1551),
        row(
            "delOriginPic", "delete", ostra, [](Bench& b) { return endingOf(b.client.delOriginPic(0xFF)); },
            2000ms, {{}, {"error in delOriginPic deletepic"}}, refusals()),
        row(
            "delPicV1", "deleteV1", salesDynamic,
            [](Bench& b) { return endingOf(b.client.delPicV1(0xFFFF, 0, 0)); }, 2000ms,
            {{}, {"error in delPicV1 deletepic"}}, refusals()),
    };
    for (const auto& part : {transfers(), takePicRows()})
        rows.insert(rows.end(), part.begin(), part.end());
    return rows;
}

} // namespace faultmatrix
