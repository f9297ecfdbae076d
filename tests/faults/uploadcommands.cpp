// Rows: uploads. Short ones, but for faults in the middle: those need more than the line holds by itself.
#include "tests/faults/command.h"

#include <thread>

using namespace std::chrono_literals;

namespace faultmatrix {

namespace {

using enum Ending;
using emulator::CameraType;

constexpr milliseconds announcementTries = 10s;
/// Announcement, the pause of two seconds, the data with three writes that time out, ten reads for a verdict.
constexpr milliseconds throughVerdict = 17s;

/// Success is one only when the camera has the file.
Ending endingOfUpload(Bench& b, bool success) {
    if (!success)
        return fails;
    const auto arrived = [&b] {
        return b.front.withCamera([](emulator::VirtualCamera& camera) {
            const auto& uploads = camera.record().uploads;
            return !uploads.empty() && uploads.back().finished && uploads.back().digestRight;
        });
    };
    for (int wait = 0; wait < 100 && !arrived(); ++wait)
        std::this_thread::sleep_for(10ms);
    return arrived() ? works : otherValue;
}

Command row(const char* method, const char* part, const char* request, CameraType type,
            std::function<Ending(Bench&)> run, milliseconds longest, const Lines& lines, Column cells) {
    Command command;
    command.method = method;
    command.part = part;
    command.family = "Uploads";
    command.request = request;
    command.type = type;
    command.run = std::move(run);
    command.longest = longest;
    command.goodLines = lines.good;
    command.cells = std::move(cells);
    command.dropsGarbage = false; // what an announcement leaves on the line is dropped by a later answer
    command.uploads = true;
    return command;
}

std::vector<std::string> joined(std::vector<std::string> lines, const std::string& more) {
    lines.push_back(more);
    return lines;
}

/// Of an image, in 15 bytes: what stands behind its announcement answer is not read with it.
Column imageCells(const Lines& lines, const std::string& offsetLine, const char* refusedLine,
                  const std::vector<std::string>& noVerdict) {
    Expected lost{fails, joined(lines.good, "command failed:*"), throughVerdict};
    lost.lines.insert(lost.lines.end(), noVerdict.begin(), noVerdict.end());
    const Expected good{works, lines.good, {}};
    const Expected short2{fails, {"command failed:answer too short"}, {}};
    const Expected refused{works, {refusedLine}, {}}; // says that it cannot, and takes it
    return with(frameColumn(lines), {{"glue", good},
                                     {"stray=1", good},
                                     {"delay=1500", good},
                                     {"payload=0", short2},
                                     {"payload=2", short2},
                                     {"result=1", refused},
                                     {"result=0xFF", refused},
                                     {"refuse", short2},
                                     {"upload-hang-up=50", lost},
                                     {"upload-hang-up=100", lost},
                                     {"stall=50,600", {works, lines.good, throughVerdict}},
                                     {"offset=0xFFFFFFFF", {fails, {offsetLine}, {}}}});
}

Command appUpdate() {
    const Lines lines{{"can update,offset is 0"}, {"appupdate queryCanUpdate checkfailed"}};
    const std::vector<std::string> noVerdict = joined(lines.good, "appupdate update-end failed");
    const auto wrongOffset = [](const char* offset) { // the camera finds its digest wrong
        return Expected{fails, {std::string("can update,offset is ") + offset}, throughVerdict};
    };
    return row(
        "appUpdate", "", "appUpdate#1", CameraType::ostra,
        [](Bench& b) {
            b.client.setAppFilePath(b.updateFile);
            return endingOfUpload(b, b.client.appUpdate());
        },
        announcementTries, lines,
        with(imageCells(lines, "can update,offset is ffffffff", "cant update",
                        {"appupdate update-end failed"}),
             {{"offset=100", wrongOffset("64")},
              {"offset=size", wrongOffset("514")},
              {"offset=size+1", wrongOffset("515")},
              {"verdict=1", {fails, lines.good, {}}},
              {"verdict-delay=3000", {works, lines.good, {}}},
              {"verdict-delay=12000", {fails, noVerdict, throughVerdict}},
              {"no-verdict", {fails, noVerdict, throughVerdict}},
              // Three writes time out: what they miss is never made good.
              {"stall=50,3000",
               {fails, joined(noVerdict, "Warning :write length !=targetGap  writeLength:*"),
                throughVerdict + 3s}}}));
}

/// No verdict is awaited: what is written is a success.
Command firewareUpdate() {
    const Lines lines{{"fireware can update,offset is 0"}, {"firewareupdate queryfireware cmd checkfailed"}};
    const auto wrongOffset = [](const char* offset) {
        return Expected{otherValue, {std::string("fireware can update,offset is ") + offset}, {}};
    };
    return row(
        "firewareUpdate", "", "systemUpdate#1", CameraType::ostra,
        [](Bench& b) {
            b.client.setFirewareFilePath(b.updateFile);
            return endingOfUpload(b, b.client.firewareUpdate());
        },
        announcementTries, lines,
        with(imageCells(lines, "fireware can update,offset is -1", "fireware cant update", {}),
             {{"upload-hang-up=100", {works, lines.good, {}}}, // nobody can know of it
              {"offset=100", wrongOffset("100")},
              {"offset=size", wrongOffset("1300")},
              {"offset=size+1", wrongOffset("1301")},
              {"stall=50,3000",
               {otherValue, joined(lines.good, "warning:::::: writeLength:*"), throughVerdict}}}));
}

/// An announcement answer of 16 bytes: one read takes all but its last, the next waits its second.
Command modelUpdate() {
    const std::string accepted = "can update2,offset is 0";
    const auto ended = [&accepted](const char* result) {
        return std::vector<std::string>{accepted, std::string("update end-result:") + result + "  type:\x02"};
    };
    const Lines lines{ended("0"), {"updateModel queryModelInfo checkfailed"}};
    const std::vector<std::string> noVerdict{accepted, "modelupdate update-end failed2"};
    const Expected shortAnswer{fails, {"command failed:answer too short"}, {}};
    const Expected good{works, lines.good, {}};
    const milliseconds patient = throughVerdict + 20s; // 30 reads
    return row(
        "modelUpdate", "", "modelUpdate#1", CameraType::ostra,
        [](Bench& b) {
            b.client.setModelNameAndPath("model_v1", b.updateFile);
            return endingOfUpload(b, b.client.modelUpdate());
        },
        announcementTries, lines,
        with(frameColumn(lines),
             {{"length=-1", good},
              {"delay=1500", good},
              {"payload=0", {fails, {"cant update:*"}, {}}},
              {"payload=2", shortAnswer},
              {"result=1", {fails, {"cant update:1  1"}, {}}},
              {"result=0xFF", {fails, {"cant update:ff  1"}, {}}},
              {"echo=0x63", {fails, {"cant update:0  63"}, {}}},
              {"offset=0xFFFFFFFF", {fails, {accepted}, {}}},
              {"offset=100", {fails, ended("1"), throughVerdict}},
              {"offset=size", {fails, ended("1"), throughVerdict}},
              {"verdict=1", {fails, ended("1"), {}}},
              {"verdict-delay=12000", {works, lines.good, patient}},
              {"no-verdict", {fails, noVerdict, patient}},
              {"upload-hang-up=50", {fails, joined(noVerdict, "command failed:*"), throughVerdict}},
              {"upload-hang-up=100", {fails, joined(noVerdict, "command failed:*"), throughVerdict}},
              {"stall=50,600", {works, lines.good, throughVerdict}},
              {"stall=50,3000",
               {fails, joined(noVerdict, "Warning :write length !=targetGap  writeLength:*"),
                patient + 3s}}}));
}

// --- second protocol: five announcements of which the last counts, eleven closing packets ------------------

const std::vector<std::string> closed{"packageResult:0"};

Ending appUpdateV1(Bench& b) {
    return endingOf(b.client.appUpdateV1("app.bin", b.updateFile));
}

Command rowV1(const char* part, const char* request, milliseconds longest, Column cells) {
    Command command = row("appUpdateV1", part, request, CameraType::salesDynamic, &appUpdateV1, longest,
                          {closed, {}}, std::move(cells));
    return command;
}

Command firstAnnouncement() {
    // The four that follow are answered.
    const std::string unanswered = "appupdateV1 queryCanUpdate checkfailed";
    const Lines lines{closed, joined(closed, unanswered), {"command failed:*", unanswered}};
    Column cells = with(frameColumn(lines), {{"length=-1", {}}, {"result=1", {}}, {"payload=2", {}}});
    for (auto& [fault, expected] : cells) {
        const bool gone = fault.starts_with("hang-up");
        expected.ending = gone ? fails : works;
        if (expected.lines.empty())
            expected.lines = closed;
    }
    // It comes in front of the second one's answer: neither is seen.
    cells["late"].within = 30s;
    Command command = rowV1("first announcement", "appUpdateV1#1", 20s, std::move(cells));
    command.takesLate = true;
    return command;
}

Command lastAnnouncement() {
    const Lines lines{closed, {"appupdateV1 queryCanUpdate checkfailed"}};
    const Expected wantsData{fails, {"data cmd:*"}, {}}; // this version sends no data packets
    const Expected beyond{fails, {"after data-send"}, {}};
    return rowV1("last announcement", "appUpdateV1#5", 16s,
                 with(frameColumn(lines), {{"length=-1", {works, closed, {}}},
                                           {"payload=2", {fails, {}, {}}},
                                           {"result=1", {fails, {"cant update"}, {}}},
                                           {"result=0xFF", {fails, {"cant update"}, {}}},
                                           {"offset=0", wantsData},
                                           {"offset=size-1", wantsData},
                                           {"offset=size+1", {fails, {}, {}}},
                                           {"offset=0xFFFFFFFF", {fails, {}, {}}}}));
}

Command everyAnnouncement() {
    const Expected unanswered{fails, {"appupdateV1 queryCanUpdate checkfailed"}, {}};
    return rowV1("every announcement", "appUpdateV1", 51s, {{"silent", unanswered}, {"glue", unanswered}});
}

Command everyPacket() {
    const std::vector<std::string> missed{"continue last cmd"};
    const Lines lines{closed, missed, {"command failed:*"}};
    Command command = rowV1("every closing packet", "packetV1", 76s,
                            with(frameColumn(lines), {// each answer comes with the next packet's
                                                      {"late", {works, joined(closed, missed.front()), {}}},
                                                      {"result=1", {works, {"packageResult:1"}, {}}},
                                                      {"result=2", {fails, {"now packageResult:2"}, {}}}}));
    return command;
}

Command lastPacket() {
    // The result of the tenth is the last one that came.
    const Lines lines{closed, joined(closed, "continue last cmd"), {"command failed:*"}};
    Column cells = with(frameColumn(lines), {{"result=1", {works, {"packageResult:1"}, {}}},
                                             {"result=2", {fails, {"now packageResult:2"}, {}}}});
    for (auto& [fault, expected] : cells) {
        if (expected.lines == lines.unanswered)
            expected.ending = works;
    }
    return rowV1("last closing packet", "packetV1#11", 16s, std::move(cells));
}

} // namespace

std::vector<Command> uploadCommands() {
    return {appUpdate(),         firewareUpdate(),   modelUpdate(), firstAnnouncement(),
            everyAnnouncement(), lastAnnouncement(), everyPacket(), lastPacket()};
}

} // namespace faultmatrix
