// Properties and pictures over JSON.
#include "tests/link/linktest.h"
#include "tests/support/answers.h"
#include "tests/support/workingdirectory.h"

namespace {

constexpr const char* propertyQuery =
    "01 17 00 00 00 00 00 00 00 00 00 3A FD FC FB FA 64 00 32 00 7B 22 74 69 6D 65 73 74 61 6D 70 22 3A 31 "
    "2C 22 73 65 "
    "71 4E 75 6D 22 3A 31 2C 22 63 6D 64 54 79 70 65 22 3A 31 34 35 2C 22 69 6E 66 6F 22 3A 22 22 7D 2B 55";
constexpr const char* firstChunk = "01 17 00 00 00 00 00 00 00 00 00 77 FD FC FB FA 64 00 6F 00 7B 22 74 69 "
                                   "6D 65 73 74 61 6D 70 22 3A 30 2C 22 73 65 "
                                   "71 4E 75 6D 22 3A 30 2C 22 63 6D 64 54 79 70 65 22 3A 31 35 36 2C 22 73 "
                                   "75 62 54 79 70 65 22 3A 30 2C 22 69 6E 66 "
                                   "6F 22 3A 7B 22 6F 70 65 6E 5F 63 6F 75 6E 74 22 3A 31 30 2C 22 61 6E 67 "
                                   "6C 65 22 3A 39 2C 22 6F 66 66 73 65 74 22 "
                                   "3A 30 2C 22 6C 65 6E 67 74 68 22 3A 35 30 30 7D 7D B9 25";
constexpr const char* chunk500of6500 = "01 17 00 00 00 00 00 00 00 00 00 7A FD FC FB FA 64 00 72 00 7B 22 74 "
                                       "69 6D 65 73 74 61 6D 70 22 3A 30 2C 22 73 65 "
                                       "71 4E 75 6D 22 3A 30 2C 22 63 6D 64 54 79 70 65 22 3A 31 35 36 2C 22 "
                                       "73 75 62 54 79 70 65 22 3A 30 2C 22 69 6E 66 "
                                       "6F 22 3A 7B 22 6F 70 65 6E 5F 63 6F 75 6E 74 22 3A 31 30 2C 22 61 6E "
                                       "67 6C 65 22 3A 39 2C 22 6F 66 66 73 65 74 22 "
                                       "3A 35 30 30 2C 22 6C 65 6E 67 74 68 22 3A 36 35 30 30 7D 7D 8E D5";
constexpr const char* chunk7000of1 = "01 17 00 00 00 00 00 00 00 00 00 78 FD FC FB FA 64 00 70 00 7B 22 74 "
                                     "69 6D 65 73 74 61 6D 70 22 3A 30 2C 22 73 65 "
                                     "71 4E 75 6D 22 3A 30 2C 22 63 6D 64 54 79 70 65 22 3A 31 35 36 2C 22 "
                                     "73 75 62 54 79 70 65 22 3A 30 2C 22 69 6E 66 "
                                     "6F 22 3A 7B 22 6F 70 65 6E 5F 63 6F 75 6E 74 22 3A 31 30 2C 22 61 6E "
                                     "67 6C 65 22 3A 39 2C 22 6F 66 66 73 65 74 22 "
                                     "3A 37 30 30 30 2C 22 6C 65 6E 67 74 68 22 3A 31 7D 7D CE 6C";
constexpr const char* chunk500of1 = "01 17 00 00 00 00 00 00 00 00 00 77 FD FC FB FA 64 00 6F 00 7B 22 74 69 "
                                    "6D 65 73 74 61 6D 70 22 3A 30 2C 22 73 65 "
                                    "71 4E 75 6D 22 3A 30 2C 22 63 6D 64 54 79 70 65 22 3A 31 35 36 2C 22 73 "
                                    "75 62 54 79 70 65 22 3A 30 2C 22 69 6E 66 "
                                    "6F 22 3A 7B 22 6F 70 65 6E 5F 63 6F 75 6E 74 22 3A 31 30 2C 22 61 6E 67 "
                                    "6C 65 22 3A 39 2C 22 6F 66 66 73 65 74 22 "
                                    "3A 35 30 30 2C 22 6C 65 6E 67 74 68 22 3A 31 7D 7D 3A A7";
constexpr const char* propertyAnswer = "01 17 00 26 FD FC FB FA 64 00 1E 00 7B 22 72 65 73 75 6C 74 22 3A 30 "
                                       "2C 22 76 65 72 73 69 6F 6E 22 3A 22 31 2E 30 "
                                       "2E 33 22 7D C5 05";
constexpr const char* pictureOf3Bytes = "01 17 00 2A FD FC FB FA 64 00 22 00 7B 22 72 65 73 75 6C 74 22 3A "
                                        "30 2C 22 73 69 7A 65 22 3A 33 7D 3C 3C 42 49 4E "
                                        "41 52 59 3E 3E FF D8 FF 4E 3C";

class JsonPictures : public LinkTest {
protected:
    static void answerBody(const std::string& body) { fake_serial::willRead(answers::json(body)); }
};

TEST_F(JsonPictures, PropertyQueryIsSentAsTheseBytes) {
    answer(propertyAnswer);
    EXPECT_EQ(camera.getQuentaModbusProperty(""), R"({"result":0,"version":"1.0.3"})");
    EXPECT_EQ(calls(), (Lines{timeouts(50), "flush", std::string("write ") + propertyQuery, "read 1000"}));
}

TEST_F(JsonPictures, UnansweredPropertyQueryIsReadTenTimes) {
    EXPECT_EQ(camera.getQuentaModbusProperty(""), "");
    EXPECT_EQ(fake_serial::count("read"), 10);
    EXPECT_EQ(out.lines(), Lines{"error"});
}

TEST_F(JsonPictures, ARequestOfTheCallersIsSentInsteadOfTheQuery) {
    camera.getQuentaModbusProperty("{}");
    EXPECT_EQ(hex(fake_serial::writes().back()).substr(0, 65),
              "01 17 00 00 00 00 00 00 00 00 00 0A FD FC FB FA 64 00 02 00 7B 7D");
}

TEST_F(JsonPictures, AddressIsNoPartOfTheEnvelope) {
    camera.setSlaveAddress(3);
    camera.getQuentaModbusProperty("");
    EXPECT_EQ(hex(fake_serial::writes().back()), propertyQuery);
}

TEST_F(JsonPictures, AnswersTooShortForABodyAreEmptyText) {
    for (std::size_t size = 9; size <= 13; ++size) {
        fake_serial::Bytes tiny(size, 0);
        tiny[0] = 0x01;
        tiny[1] = 0x17;
        tiny[3] = static_cast<std::uint8_t>(size - 6);
        fake_serial::willRead(tiny);
        EXPECT_EQ(camera.getQuentaModbusProperty(""), "") << size;
        EXPECT_EQ(out.lines(), Lines{}) << "accepted, but empty";
    }
}

TEST_F(JsonPictures, AcceptsOnlyTheExactLengthAfterGarbage) {
    answer("33 01 33");
    answer(propertyAnswer);
    EXPECT_FALSE(camera.getQuentaModbusProperty("").empty());
    EXPECT_EQ(out.lines(), (Lines{"check data51", "check data1", "check data51"}));
    answer(std::string(propertyAnswer) + " 00");
    EXPECT_EQ(camera.getQuentaModbusProperty(""), "");
}

TEST_F(JsonPictures, ALoneFirstByteIsKeptForTheNextRead) {
    fake_serial::Bytes whole = bytes(propertyAnswer);
    fake_serial::willRead({whole.front()});
    fake_serial::willRead({whole.begin() + 1, whole.end()});
    EXPECT_FALSE(camera.getQuentaModbusProperty("").empty());
}

TEST_F(JsonPictures, AcceptanceCanBeAskedForDirectly) {
    answer(propertyAnswer);
    std::vector<std::uint8_t> buffer;
    EXPECT_TRUE(camera.checkQuentaData(buffer, 1000, 1));
    EXPECT_EQ(hex(buffer), propertyAnswer);
    EXPECT_FALSE(camera.checkQuentaData(buffer, 1000, 0));
}

TEST_F(JsonPictures, APictureOfOneChunkIsWritten) {
    answer(pictureOf3Bytes);
    EXPECT_TRUE(camera.getQuentaModbusPic(1));
    EXPECT_EQ(calls(), (Lines{timeouts(50), "flush", std::string("write ") + firstChunk, "read 1000"}));
    EXPECT_EQ(files::read("1.jpg"), (std::vector<std::uint8_t>{0xFF, 0xD8, 0xFF}));
    EXPECT_EQ(out.lines(), Lines{"first end"});
}

TEST_F(JsonPictures, ChunksAreOf500Then6500ThenTheRest) {
    answerBody(R"({"size":7001}<<BINARY>>)" + std::string(500, 'a'));
    answerBody("{}<<BINARY>>" + std::string(6500, 'b'));
    answerBody("{}<<BINARY>>c");
    EXPECT_TRUE(camera.getQuentaModbusPic(7));
    const auto writes = fake_serial::writes();
    ASSERT_EQ(writes.size(), 3U);
    EXPECT_EQ(hex(writes[1]), chunk500of6500);
    EXPECT_EQ(hex(writes[2]), chunk7000of1);
    EXPECT_EQ(fake_serial::count("setTimeout"), 1);
    const auto picture = files::read("7.jpg");
    ASSERT_TRUE(picture);
    EXPECT_EQ(std::string(picture->begin(), picture->end()),
              std::string(500, 'a') + std::string(6500, 'b') + "c");
}

TEST_F(JsonPictures, A501stByteIsAChunkOfItsOwnAnd7000NeedTwo) {
    answerBody(R"({"size":501}<<BINARY>>)" + std::string(500, 'a'));
    answerBody("{}<<BINARY>>b");
    EXPECT_TRUE(camera.getQuentaModbusPic(1));
    EXPECT_EQ(hex(fake_serial::writes().back()), chunk500of1);
    answerBody(R"({"size":7000}<<BINARY>>)" + std::string(500, 'a'));
    answerBody("{}<<BINARY>>" + std::string(6500, 'b'));
    EXPECT_TRUE(camera.getQuentaModbusPic(1));
    EXPECT_EQ(fake_serial::writes().size(), 4U);
}

TEST_F(JsonPictures, SmallAndNegativeSizesEndAfterTheFirstChunk) {
    for (const char* size : {"500", "0", "-1"}) {
        answerBody(std::string(R"({"size":)") + size + "}<<BINARY>>x");
        EXPECT_TRUE(camera.getQuentaModbusPic(1)) << size;
        EXPECT_EQ(files::read("1.jpg"), std::vector<std::uint8_t>{'x'});
    }
    EXPECT_EQ(fake_serial::writes().size(), 3U);
}

TEST_F(JsonPictures, AnswerWithoutMarkerAddsNothing) {
    answerBody(R"({"size":501} no picture here)");
    answerBody("{}<<BINARY>>z");
    EXPECT_TRUE(camera.getQuentaModbusPic(1));
    EXPECT_EQ(files::read("1.jpg"), std::vector<std::uint8_t>{'z'});
}

TEST_F(JsonPictures, AMissingOrMalformedSizeFailsWithoutAFile) {
    for (const char* body : {R"({"result":0}<<BINARY>>x)", R"({"size":"x"}<<BINARY>>x)",
                             R"({"size":99999999999}<<BINARY>>x)", "not json at all"}) {
        answerBody(body);
        EXPECT_FALSE(camera.getQuentaModbusPic(1)) << body;
    }
    EXPECT_EQ(files::names(), Lines{});
}

TEST_F(JsonPictures, AMissingFirstChunkIsReadFiftyTimes) {
    EXPECT_FALSE(camera.getQuentaModbusPic(1));
    EXPECT_EQ(fake_serial::count("read"), 50);
    EXPECT_EQ(out.lines(), Lines{"error"});
}

TEST_F(JsonPictures, AMissingLaterChunkLeavesTheOldFileAlone) {
    files::write("1.jpg", {1});
    answerBody(R"({"size":501}<<BINARY>>)" + std::string(500, 'a'));
    EXPECT_FALSE(camera.getQuentaModbusPic(1));
    EXPECT_EQ(fake_serial::count("read"), 1 + 5000);
    EXPECT_EQ(out.lines(), (Lines{"first end", "check2 failed", "read failed"}));
    EXPECT_EQ(files::read("1.jpg"), std::vector<std::uint8_t>{1});
}

} // namespace
