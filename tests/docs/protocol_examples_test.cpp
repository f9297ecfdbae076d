// The byte examples of docs/protocol.md against what the client sends and what the layouts make of them.
#include "link/camerasp.h"
#include "link/protocol/commands.h"
#include "link/protocol/crc16.h"
#include "link/protocol/door.h"
#include "link/protocol/frame.h"
#include "link/protocol/jsonenvelope.h"
#include "link/protocol/uploads.h"
#include "tests/fake/fakeserial.h"
#include "tests/support/markdown.h"
#include "tests/support/stdoutcapture.h"
#include "tests/support/testclock.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <map>
#include <numeric>
#include <set>

using fake_serial::bytes;
using fake_serial::hex;
using namespace protocol;

namespace {

/// An example of the document: its name and the origin of its bytes.
using Examples = std::map<std::string, std::function<Bytes()>>;

constexpr std::uint32_t exampleTime = 0x65A0B1C2;
const std::string orderedBytes = "00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13";
const std::string orderedDigest = "15 49 D1 AA E2 02 14 E0 65 AB 4B 76 AA AC 89 A8";

/// Writes of a new client, without sleeping. The call scripts the answers.
std::vector<Bytes> writesOf(const std::function<void(CameraSp&)>& call) {
    fake_serial::reset();
    const StdoutCapture quiet;
    TestClock clock;
    clock.skipPauses();
    {
        CameraSp camera("COM9", 460800, clock);
        call(camera);
    }
    return fake_serial::writes();
}

/// The nth write of a call.
std::function<Bytes()> sent(std::function<void(CameraSp&)> call, std::size_t number = 0) {
    return [call = std::move(call), number] { return writesOf(call).at(number); };
}

/// A frame for address 1 with this payload.
std::function<Bytes()> frame(Command command, const std::string& payload) {
    return [command, payload] { return buildFrame(code(command), bytes(payload), 1); };
}

Bytes envelopeAnswer(const std::string& text, const Bytes& data = {}) {
    constexpr std::size_t overhead = 12 + 2; // before the text, and the check code
    const std::size_t size = text.size() + data.size() + overhead;
    const std::size_t textSize = size - overhead;
    Bytes answer{0x01, 0x17, 0, static_cast<std::uint8_t>(size - 6), 0xFD, 0xFC, 0xFB, 0xFA, 0x64, 0x00};
    put(answer, Field<std::uint16_t>{answer.size()}, static_cast<std::uint16_t>(textSize));
    append(answer, bytesOf(text));
    append(answer, data);
    put(answer, Field<std::uint16_t>{answer.size()}, crc16Modbus(answer));
    return answer;
}

// --- what the examples are ---------------------------------------------------------------------------------

void addStatusRequests(Examples& examples) {
    for (const auto& [name, address] : std::map<std::string, int>{{"1", 1}, {"2", 2}, {"3", 3}, {"238", 238}})
        examples["testHeartBeat, addr " + name] = sent([address = address](CameraSp& camera) {
            camera.setSlaveAddress(address);
            camera.testHeartBeat();
        });
    examples["getAppVersion"] = sent([](CameraSp& camera) { camera.getAppVersion(); });
    examples["getSystemVersion"] = sent([](CameraSp& camera) { camera.getSystemVersion(); });
    examples["getQvVersion"] = sent([](CameraSp& camera) { camera.getQvVersion(); });
    examples["getModelInfo"] = sent([](CameraSp& camera) { camera.getModelInfo(); });
    examples["gyro test"] = sent([](CameraSp& camera) {
        camera.getCommonPropertyWithoutParse(0x03, code(Command::gyroTest), 50, 100);
    });
    examples["getSn"] = sent([](CameraSp& camera) { camera.getSn(); });
    examples["getSn, addr 0xEE"] = sent([](CameraSp& camera) {
        camera.setSlaveAddress(0xEE);
        camera.getSn();
    });
    examples["rebootCamera"] = sent([](CameraSp& camera) { camera.rebootCamera(); });
    examples["rebootCamera, addr 0xEE"] = sent([](CameraSp& camera) {
        camera.setSlaveAddress(0xEE);
        camera.rebootCamera();
    });
    examples["resetToFactory"] = sent([](CameraSp& camera) { camera.resetToFactory(); });
    for (const char* const sn : {"0123456789abcdef", "A1", ""})
        examples["setSn(\"" + std::string(sn) + "\")"] = sent([sn](CameraSp& camera) { camera.setSn(sn); });
}

/// The frame of the nth door command of a client, with the example's time in place of now.
std::function<Bytes()> doorFrame(bool open, int number) {
    return [open, number] {
        const auto doors = [open, number](CameraSp& camera) {
            for (int command = 0; command <= number; ++command)
                camera.opDoor(open);
        };
        Bytes door = writesOf(doors).at(static_cast<std::size_t>(number));
        put(door, inFrame(door_layout::secondsSinceEpoch), exampleTime);
        const ByteView payload =
            ByteView(door).range(frame_layout::headerSize, door.size() - frame_layout::checkCodeSize);
        return buildFrame(ByteView(door).get(frame_layout::command), payload,
                          ByteView(door).get(frame_layout::address));
    };
}

void addDoorRequests(Examples& examples) {
    examples["opDoor(true), sequence 0, time 0x65A0B1C2"] = doorFrame(true, 0);
    examples["opDoor(false), sequence 1, time 0x65A0B1C2"] = doorFrame(false, 1);
    examples["opDoor(true), sequence 255, time 0x65A0B1C2"] = doorFrame(true, 255);
}

void addPropertyRequests(Examples& examples) {
    for (const int id : {6, 10, 11, 12, 13, 15, 16})
        examples["getCommonProperty(" + std::to_string(id) + ",2)"] =
            sent([id](CameraSp& camera) { camera.getCommonProperty(static_cast<std::uint8_t>(id), 2); });

    struct Setting {
        std::uint8_t id;
        Bytes value;
    };
    const std::vector<Setting> settings{{15, {30}},    {15, {40}}, {15, {50}}, {15, {60}}, {6, {85}},
                                        {6, {44}},     {6, {255}}, {6, {0}},   {11, {1}},  {10, {30, 60}},
                                        {10, {44, 0}}, {11, {0}},  {13, {1}},  {13, {0}}};
    for (const Setting& setting : settings) {
        std::string values;
        for (const std::uint8_t byte : setting.value)
            values += (values.empty() ? "" : ",") + std::to_string(byte);
        examples["setCommonProperty(" + std::to_string(setting.id) + ",{" + values + "},3)"] =
            sent([setting](CameraSp& camera) { camera.setCommonProperty(setting.id, setting.value, 3); });
    }
}

void addPictureRequests(Examples& examples) {
    const auto withOffset = [](std::uint8_t offset, const std::function<void(CameraSp&)>& call) {
        return sent([offset, call](CameraSp& camera) {
            camera.setOriginPicCmdExtraAdd(offset);
            call(camera);
        });
    };
    const auto capture = [](CameraSp& camera) { camera.originCapture(); };
    const auto list = [](CameraSp& camera) { camera.getOriginPicInfos(); };
    const auto deleteAll = [](CameraSp& camera) { camera.delOriginPic(0xFF); };
    const auto read = [](CameraSp& camera) {
        fake_serial::willThrowOnRead(); // otherwise it waits for the picture
        camera.getOriginTargetPic(5, 12345);
    };
    examples["originCapture, offset 0"] = withOffset(0, capture);
    examples["originCapture, offset 1"] = withOffset(1, capture);
    examples["originCapture, offset 0xFA"] = withOffset(0xFA, capture);
    examples["getOriginPicInfos, offset 0"] = withOffset(0, list);
    examples["getOriginPicInfos, offset 0xFA"] = withOffset(0xFA, list);
    examples["delOriginPic(0xFF), offset 0"] = withOffset(0, deleteAll);
    examples["delOriginPic(0xFF), offset 0xFA"] = withOffset(0xFA, deleteAll);
    examples["delOriginPic(5), offset 0"] = withOffset(0, [](CameraSp& camera) { camera.delOriginPic(5); });
    examples["getOriginTargetPic(5,12345), offset 0"] = withOffset(0, read);
    examples["getOriginTargetPic(5,12345), offset 0xFA"] = withOffset(0xFA, read);
    examples["takePic, read of an id 5 that the catalogue does not list"] = sent(
        [](CameraSp& camera) {
            fake_serial::willRead(buildFrame(code(Command::originDelete), Bytes{0}, 1));
            fake_serial::willRead(buildFrame(code(Command::originCapture), Bytes{0, 5}, 1));
            fake_serial::willRead(buildFrame(code(Command::originCatalogue), Bytes{0}, 1));
            fake_serial::willThrowOnRead();
            camera.takePic();
        },
        3);
}

void addV1PictureRequests(Examples& examples) {
    const auto read = [](std::uint16_t id) {
        return sent([id](CameraSp& camera) {
            fake_serial::willThrowOnRead();
            camera.getTargetPicV1(id, 12345);
        });
    };
    examples["captureV1"] = sent([](CameraSp& camera) { camera.captureV1(); });
    examples["getPicInfosV1"] = sent([](CameraSp& camera) { camera.getPicInfosV1(); });
    examples["delPicV1(255,0,0)"] = sent([](CameraSp& camera) { camera.delPicV1(255, 0, 0); });
    examples["delPicV1(0xFFFF,0,0)"] = sent([](CameraSp& camera) { camera.delPicV1(0xFFFF, 0, 0); });
    examples["delPicV1(258,20240131,7)"] = sent([](CameraSp& camera) { camera.delPicV1(258, 20240131, 7); });
    examples["getTargetPicV1(258,12345)"] = read(258);
    examples["getTargetPicV1(2,12345)"] = read(2);
}

void addAnnouncements(Examples& examples) {
    Bytes counting(1300);
    std::iota(counting.begin(), counting.end(), std::uint8_t{0});
    const std::vector<std::pair<std::string, std::string>> files{
        {"empty file", ""}, {"file \"abc\"", "abc"}, {"counting file", {counting.begin(), counting.end()}}};
    for (const auto& [name, content] : files) {
        // Only the first write is looked at: nothing answers.
        const auto announced = [content = content](const std::function<void(CameraSp&)>& upload) {
            return sent([content, upload](CameraSp& camera) {
                std::ofstream("app.bin", std::ios::binary) << content;
                upload(camera);
            });
        };
        examples["appUpdate announcement, " + name] = announced([](CameraSp& camera) {
            camera.setAppFilePath("app.bin");
            camera.appUpdate();
        });
        examples["firewareUpdate announcement, " + name] = announced([](CameraSp& camera) {
            camera.setFirewareFilePath("app.bin");
            camera.firewareUpdate();
        });
        for (const char* const model : {"model_v1", ""})
            examples["modelUpdate announcement, name \"" + std::string(model) + "\", " + name] =
                announced([model](CameraSp& camera) {
                    camera.setModelNameAndPath(model, "app.bin");
                    camera.modelUpdate();
                });
        examples["appUpdateV1 announcement, name \"app.bin\", " + name] =
            announced([](CameraSp& camera) { camera.appUpdateV1("app.bin", "app.bin"); });
    }
    // The model without a name is shown with one file only.
    examples.erase("modelUpdate announcement, name \"\", empty file");
    examples.erase("modelUpdate announcement, name \"\", " + files.back().first);
}

/// The closing packet for a file of this many bytes that the camera says it holds.
std::function<Bytes()> closingPacket(std::uint32_t size) {
    constexpr int announcements = 5;
    return sent(
        [size](CameraSp& camera) {
            std::ofstream("held.bin", std::ios::binary) << std::string(size, 'x');
            Bytes payload{1, 0};
            put(payload, Field<std::uint32_t>{2}, size);
            for (int announcement = 0; announcement < announcements; ++announcement)
                fake_serial::willRead(buildFrame(code(Command::appV1Announce), payload, 1));
            camera.appUpdateV1("held.bin", "held.bin");
        },
        announcements);
}

void addPackets(Examples& examples) {
    for (const std::uint32_t size : {0U, 3U, 1300U})
        examples["appUpdateV1 closing packet, size " + std::to_string(size)] = closingPacket(size);
    examples["appUpdateV1 data packet, file \"abc\", offset 0 (logged, never sent)"] = [] {
        return buildFrame(code(Command::appV1Packet), buildPacket(0, bytesOf("abc")), 1);
    };
}

void addStatusAnswers(Examples& examples) {
    const Bytes good{1};
    examples["heartbeat good answer, addr 1"] = frame(Command::heartbeat, "01");
    examples["heartbeat good answer, addr 0xEE"] = [good] {
        return buildFrame(code(Command::heartbeat), good, 0xEE);
    };
    examples["heartbeat bad answer, payload 00"] = frame(Command::heartbeat, "00");
    examples["property answer id 15 value 30"] = frame(Command::getProperty, "0F 00 1E");
    examples["property answer id 15 result 1"] = frame(Command::getProperty, "0F 01");
    examples["property answer id 10 value 30,60"] = frame(Command::getProperty, "0A 00 1E 3C");
    examples["property answer id 16 value 45"] = frame(Command::getProperty, "10 00 2D 00 00 00");
    examples["property answer id 16 sentinel"] = frame(Command::getProperty, "10 00 00 FF FF 7F");
    examples["version answer id 2 \"1.2.3\", a zero byte, \"x\""] =
        frame(Command::getProperty, "02 00 31 2E 32 2E 33 00 78");
    examples["serial-number answer \"A1\""] = frame(Command::getProperty, "03 00 41 31");
    examples["set answer id 15, success"] = frame(Command::setProperty, "0F 00");
    examples["set answer id 15, failure"] = frame(Command::setProperty, "0F 01");
    examples["reboot answer, success"] = frame(Command::reboot, "00");
    examples["reset answer, success"] = frame(Command::resetToFactory, "00");
}

void addPictureAnswers(Examples& examples) {
    PictureInfo info;
    info.id = 5;
    info.triggerType = 1;
    info.triggerAngle = 45;
    info.creationTime = 1700000000;
    info.fileSize = 20;
    info.digest = bytes(orderedDigest);
    PictureInfo v1 = info;
    v1.id = 258;
    v1.date = 20240131;
    v1.gid = 7;
    const std::string origin = hex(buildOriginRecord(info));
    examples["capture answer, success, id 5"] = frame(Command::originCapture, "00 05");
    examples["catalogue answer 07, one record: id 5, trigger 1, angle 45, time 1700000000, size 20"] =
        frame(Command::originCatalogue, "01 " + origin);
    examples["catalogue answer 07, none"] = frame(Command::originCatalogue, "00");
    examples["catalogue answer C7, one record: id 258, date 20240131, gid 7, the rest the same"] =
        frame(Command::catalogueV1, "01 " + hex(buildV1Record(v1)));
    examples["transfer answer 09, 20 data bytes 00..13"] = frame(Command::originRead, "00 " + orderedBytes);
    examples["transfer answer C9, result 1, 20 data bytes"] = frame(Command::readV1, "01 " + orderedBytes);
}

void addUploadAnswers(Examples& examples) {
    const std::string image = "appUpdate announcement answer: ";
    examples[image + "ready, offset 0"] = frame(Command::appAnnounce, "00 00 00 00 00");
    examples[image + "ready, offset 512"] = frame(Command::appAnnounce, "00 00 02 00 00");
    examples[image + "not ready, offset 512"] = frame(Command::appAnnounce, "01 00 02 00 00");
    examples[image + "ready, offset 0x80000000"] = frame(Command::appAnnounce, "00 00 00 00 80");
    examples["firewareUpdate announcement answer: ready, offset 0"] =
        frame(Command::firewareAnnounce, "00 00 00 00 00");
    examples["appUpdate verdict: success"] = frame(Command::appAnnounce, "00");
    examples["appUpdate verdict: failure"] = frame(Command::appAnnounce, "01");
    const std::string model = "modelUpdate announcement answer: ";
    examples[model + "ready, offset 0"] = frame(Command::modelAnnounce, "01 00 00 00 00 00");
    examples[model + "refused by type 0"] = frame(Command::modelAnnounce, "00 00 00 00 00 00");
    examples[model + "refused by result 1"] = frame(Command::modelAnnounce, "01 01 00 00 00 00");
    examples["modelUpdate verdict: success"] = frame(Command::modelAnnounce, "02 00");
    examples["modelUpdate verdict: failure"] = frame(Command::modelAnnounce, "02 01");
    const std::string v1 = "appUpdateV1 announcement answer: ";
    examples[v1 + "ready, offset 3"] = frame(Command::appV1Announce, "01 00 03 00 00 00");
    examples[v1 + "ready, offset 0"] = frame(Command::appV1Announce, "01 00 00 00 00 00");
    examples[v1 + "not ready"] = frame(Command::appV1Announce, "01 01 00 00 00 00");
    for (const std::string result : {"0", "1", "2"})
        examples["appUpdateV1 packet answer, result " + result] = frame(Command::appV1Packet, "0" + result);
}

void addJson(Examples& examples) {
    /// The nth request of a download from a camera whose picture has so many bytes.
    const auto piece = [](const std::string& total, std::size_t number) {
        return sent(
            [total](CameraSp& camera) {
                fake_serial::willRead(envelopeAnswer("{\"size\":" + total + "}"));
                fake_serial::willRead(envelopeAnswer("{}"));
                fake_serial::willRead(envelopeAnswer("{}"));
                camera.getQuentaModbusPic(1);
            },
            number);
    };
    examples["JSON property query"] = sent([](CameraSp& camera) { camera.getQuentaModbusProperty(""); });
    examples["JSON picture request, offset 0, length 500"] = piece("500", 0);
    examples["JSON picture request, offset 500, length 6500"] = piece("7001", 1);
    examples["JSON picture request, offset 7000, length 1"] = piece("7001", 2);
    examples["JSON picture request, offset 500, length 1"] = piece("501", 1);
    examples[R"(JSON property answer {"result":0,"version":"1.0.3"})"] = [] {
        return envelopeAnswer(R"({"result":0,"version":"1.0.3"})");
    };
    examples[R"(JSON picture answer {"result":0,"size":3} and data FF D8 FF)"] = [] {
        return envelopeAnswer(R"({"result":0,"size":3}<<BINARY>>)", {0xFF, 0xD8, 0xFF});
    };
}

Examples allExamples() {
    Examples examples;
    for (const auto add : {&addStatusRequests, &addDoorRequests, &addPropertyRequests, &addPictureRequests,
                           &addV1PictureRequests, &addAnnouncements, &addPackets, &addStatusAnswers,
                           &addPictureAnswers, &addUploadAnswers, &addJson})
        add(examples);
    return examples;
}

// --- what the document shows -------------------------------------------------------------------------------

/// A row of the document's tables.
struct Shown {
    std::string what;
    std::string size;
    std::string text; ///< hexadecimal digits with points between the fields
    Bytes bytes;
};

/// Bytes of hexadecimal digits; points are skipped.
Bytes bytesIn(std::string text) {
    std::erase(text, '.');
    std::string spaced;
    for (std::size_t at = 0; at < text.size(); at += 2)
        spaced += text.substr(at, 2) + ' ';
    return bytes(spaced);
}

/// The bytes as the document shows them: points between fields of these sizes, and before the check code.
std::string withPoints(const Bytes& all, const std::vector<std::size_t>& sizes) {
    std::string text;
    std::size_t end = 0;
    auto size = sizes.begin();
    for (std::size_t at = 0; at < all.size(); ++at) {
        const bool fieldBegins = at == end && size != sizes.end();
        if (at > 0 && (fieldBegins || at + frame_layout::checkCodeSize == all.size() || at == end))
            text += '.';
        if (fieldBegins)
            end += *size++;
        text += hex({all[at]});
    }
    return text;
}

std::vector<Shown> shownUnder(std::string_view heading) {
    const std::string document = markdown::contentOf(markdown::sourceFolder() / "docs/protocol.md");
    const std::string examples = markdown::section(document, "## Byte examples");
    std::vector<Shown> shown;
    for (const markdown::Row& row : markdown::tableRows(markdown::section(examples, heading)))
        shown.push_back({row.at(0), row.at(1), row.at(2), bytesIn(row.at(2))});
    return shown;
}

} // namespace

TEST(ProtocolExamples, ExistForEveryCommandAndNothingElse) {
    std::set<std::string> expected;
    for (const auto& [what, make] : allExamples())
        expected.insert(what);
    std::set<std::string> documented;
    for (const Shown& shown : shownUnder("## Byte examples"))
        EXPECT_TRUE(documented.insert(shown.what).second) << "twice: " << shown.what;
    EXPECT_EQ(documented, expected);
}

TEST(ProtocolExamples, MatchClientAndLayouts) {
    const Examples examples = allExamples();
    for (const Shown& shown : shownUnder("## Byte examples")) {
        const auto example = examples.find(shown.what);
        ASSERT_NE(example, examples.end()) << shown.what;
        EXPECT_EQ(hex(shown.bytes), hex(example->second())) << shown.what;
    }
}

TEST(ProtocolExamples, StateTheirSizes) {
    for (const Shown& shown : shownUnder("## Byte examples"))
        EXPECT_EQ(shown.size, std::to_string(shown.bytes.size())) << shown.what;
}

TEST(ProtocolExamples, SeparateFieldsByPoints) {
    for (const char* const heading : {"### Requests", "### Answers"}) {
        for (const Shown& shown : shownUnder(heading))
            EXPECT_EQ(shown.text, withPoints(shown.bytes, {4, 4})) << shown.what;
    }
    for (const Shown& shown : shownUnder("### JSON envelopes")) {
        const bool isAnswer = shown.what.find("answer") != std::string::npos;
        EXPECT_EQ(shown.text, withPoints(shown.bytes, {isAnswer ? 12U : 20U})) << shown.what;
    }
}

TEST(ProtocolExamples, AreFramesWithARightLengthAndCheckCode) {
    for (const char* const heading : {"### Requests", "### Answers"}) {
        const std::vector<Shown> all = shownUnder(heading);
        EXPECT_FALSE(all.empty()) << heading;
        for (const Shown& shown : all) {
            const ByteView view(shown.bytes);
            ASSERT_TRUE(isWholeAnswer(view, frameForm)) << shown.what;
            const ByteView payload =
                view.range(frame_layout::headerSize, view.size() - frame_layout::checkCodeSize);
            EXPECT_EQ(
                hex(buildFrame(view.get(frame_layout::command), payload, view.get(frame_layout::address))),
                hex(shown.bytes))
                << shown.what;
        }
    }
}

TEST(ProtocolExamples, AreEnvelopesWithRightCountsAndCheckCode) {
    const std::vector<Shown> all = shownUnder("### JSON envelopes");
    EXPECT_FALSE(all.empty());
    for (const Shown& shown : all) {
        const ByteView view(shown.bytes);
        ASSERT_GE(view.size(), std::size_t{14}) << shown.what;
        const std::size_t end = view.size() - frame_layout::checkCodeSize;
        EXPECT_EQ(view.get(Field<std::uint16_t>{end}), crc16Modbus(view.range(0, end))) << shown.what;
        const bool isAnswer = shown.what.find("answer") != std::string::npos;
        if (isAnswer) {
            EXPECT_TRUE(isWholeAnswer(view, jsonForm)) << shown.what;
            continue;
        }
        const std::size_t textSize = view.size() - 22;
        EXPECT_EQ(view.get(Field<std::uint16_t>{18}), textSize) << shown.what;
        EXPECT_EQ(view.begin()[10] * 256U + view.begin()[11], textSize + 8) << shown.what;
    }
}

TEST(ProtocolExamples, AnswersHaveTheMeaningOfTheirNames) {
    const auto answerNamed = [](const std::string& what) {
        for (const Shown& shown : shownUnder("### Answers")) {
            if (shown.what == what)
                return shown.bytes;
        }
        ADD_FAILURE() << what;
        return Bytes();
    };
    EXPECT_TRUE(isHeartbeatAnswer(answerNamed("heartbeat good answer, addr 0xEE")));
    EXPECT_FALSE(isHeartbeatAnswer(answerNamed("heartbeat bad answer, payload 00")));
    writesOf([&](CameraSp& camera) {
        fake_serial::willRead(answerNamed("property answer id 10 value 30,60"));
        EXPECT_EQ(camera.getCommonProperty(10, 2), (Bytes{30, 60}));
        fake_serial::willRead(answerNamed("property answer id 15 result 1"));
        EXPECT_TRUE(camera.getCommonProperty(15, 2).empty());
        fake_serial::willRead(answerNamed("version answer id 2 \"1.2.3\", a zero byte, \"x\""));
        EXPECT_EQ(camera.getAppVersion(), "1.2.3");
        fake_serial::willRead(answerNamed("serial-number answer \"A1\""));
        EXPECT_EQ(camera.getSn(), "A1");
        fake_serial::willRead(answerNamed("set answer id 15, failure"));
        EXPECT_FALSE(camera.setCommonProperty(15, {30}, 3));
        fake_serial::willRead(answerNamed("reboot answer, success"));
        EXPECT_TRUE(camera.rebootCamera());
    });
}
