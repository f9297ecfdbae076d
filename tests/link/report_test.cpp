// Reasons of failed commands.
#include "tests/link/linktest.h"
#include "tests/link/uploadanswers.h"
#include "tests/support/workingdirectory.h"

#include <functional>
#include <future>

using namespace std::chrono_literals;

using namespace uploadanswers;

namespace {

using CameraCall = std::function<void(CameraSp&)>;

struct Case {
    const char* name;
    CameraCall run;
    std::string good;    ///< an answer that makes it succeed; empty: none does, or none is read
    std::string refused; ///< an answer with a failure in it; empty: there is none
};

void PrintTo(const Case& each, std::ostream* out) {
    *out << each.name;
}

const std::vector<Case>& cases() {
    static const std::vector<Case> all{
        {"heartbeat", [](CameraSp& c) { c.testHeartBeat(); }, "AA 5A 01 01 01 00 00 00 01 7F EA", ""},
        {"property", [](CameraSp& c) { c.getCommonProperty(15, 2); },
         "AA 5A 01 02 03 00 00 00 0F 00 28 00 00", "AA 5A 01 02 03 00 00 00 0F 01 28 00 00"},
        {"write", [](CameraSp& c) { c.setCommonProperty(15, {40}, 3); },
         "AA 5A 01 03 02 00 00 00 0F 00 00 00", "AA 5A 01 03 02 00 00 00 0F 01 00 00"},
        {"qvVersion", [](CameraSp& c) { c.getQvVersion(); }, "AA 5A 01 C2 03 00 00 00 D4 00 31 00 00",
         "AA 5A 01 C2 03 00 00 00 D4 01 31 00 00"},
        {"modelInfo", [](CameraSp& c) { c.getModelInfo(); }, "AA 5A 01 C2 03 00 00 00 CC 00 31 00 00",
         "AA 5A 01 C2 03 00 00 00 CC 01 31 00 00"},
        {"getSn", [](CameraSp& c) { c.getSn(); }, "AA 5A 01 02 03 00 00 00 03 00 31 00 00",
         "AA 5A 01 02 03 00 00 00 03 01 31 00 00"},
        {"setSn", [](CameraSp& c) { c.setSn("1"); }, "AA 5A 01 03 02 00 00 00 03 00 00 00",
         "AA 5A 01 03 02 00 00 00 03 01 00 00"},
        {"reboot", [](CameraSp& c) { c.rebootCamera(); }, "AA 5A 01 05 01 00 00 00 00 FF FC",
         "AA 5A 01 05 01 00 00 00 01 FF FC"},
        {"capture", [](CameraSp& c) { c.originCapture(); }, "AA 5A 01 06 01 00 00 00 00 00 00",
         "AA 5A 01 06 01 00 00 00 01 00 00"},
        {"captureV1", [](CameraSp& c) { c.captureV1(); }, "AA 5A 01 C6 01 00 00 00 00 00 00",
         "AA 5A 01 C6 01 00 00 00 01 00 00"},
        {"deletion", [](CameraSp& c) { c.delOriginPic(1); }, "AA 5A 01 08 01 00 00 00 00 00 00",
         "AA 5A 01 08 01 00 00 00 01 00 00"},
        {"gyro", [](CameraSp& c) { c.getCommonPropertyWithoutParse(3, 15, 50, 100); }, "33", ""},
    };
    return all;
}

class Report : public LinkTest {
protected:
    CommandEnd endOf(const CameraCall& run) {
        const ReportScope scope;
        run(camera);
        return scope.report().end;
    }
};

class EveryReport : public Report, public testing::WithParamInterface<Case> {};
class EveryRefusal : public EveryReport {};

std::vector<Case> refusableCases() {
    std::vector<Case> some = cases();
    std::erase_if(some, [](const Case& each) { return each.refused.empty(); });
    return some;
}

} // namespace

TEST_P(EveryReport, IsDoneAfterAGoodAnswer) {
    answer(GetParam().good);
    EXPECT_EQ(endOf(GetParam().run), CommandEnd::done);
}

TEST_P(EveryReport, ReportsAMissingAnswer) {
    EXPECT_EQ(endOf(GetParam().run), CommandEnd::noAnswer);
}

TEST_P(EveryReport, ReportsAFailedPort) {
    fake_serial::throwOn("write");
    EXPECT_EQ(endOf(GetParam().run), CommandEnd::portFailed);
}

TEST_P(EveryReport, ReportsAStoppedLink) {
    camera.requestStop();
    EXPECT_EQ(endOf(GetParam().run), CommandEnd::stopped);
}

INSTANTIATE_TEST_SUITE_P(Link, EveryReport, testing::ValuesIn(cases()),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(EveryRefusal, IsReported) {
    answer(GetParam().refused);
    EXPECT_EQ(endOf(GetParam().run), CommandEnd::refused);
}

INSTANTIATE_TEST_SUITE_P(Link, EveryRefusal, testing::ValuesIn(refusableCases()),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(Report, ReportsUnusableAnswers) {
    const std::string half = "AA 5A 01 02 03 00 00 00 0F";
    answer(half);
    EXPECT_EQ(endOf([](CameraSp& c) { c.getCommonProperty(15, 2); }), CommandEnd::unusable);
    answer("AA 5A 01 01 01 00 00 00 00 00 00");
    EXPECT_EQ(endOf([](CameraSp& c) { c.testHeartBeat(); }), CommandEnd::unusable);
    answer("AA 5A 01 C2 03 00 00 00 CD 00 31 00 00");
    EXPECT_EQ(endOf([](CameraSp& c) { c.getModelInfo(); }), CommandEnd::unusable);
}

TEST_F(Report, ReportsAMissingPort) {
    CameraSp none("", 9600);
    const ReportScope scope;
    none.testHeartBeat();
    EXPECT_EQ(scope.report().end, CommandEnd::portNotOpen);
}

TEST_F(Report, DoorCommandIsOnlySent) {
    EXPECT_EQ(endOf([](CameraSp& c) { c.opDoor(true); }), CommandEnd::sent);
}

TEST_F(Report, EmptyCatalogueIsNoFailure) {
    answer("AA 5A 01 07 01 00 00 00 00 00 00");
    EXPECT_EQ(endOf([](CameraSp& c) { c.getOriginPicInfos(); }), CommandEnd::noPictures);
    EXPECT_EQ(endOf([](CameraSp& c) { c.getOriginPicInfos(); }), CommandEnd::noAnswer);
}

TEST_F(Report, EmptyValueIsNoFailure) {
    answer("AA 5A 01 02 02 00 00 00 03 00 00 00");
    EXPECT_EQ(endOf([](CameraSp& c) { c.getSn(); }), CommandEnd::empty);
}

TEST_F(Report, DownloadReportsWhetherItWroteTheFile) {
    const CameraCall download = [](CameraSp& c) { c.getOriginTargetPic(7, 1); };
    answer("AA 5A 01 09 02 00 00 00 00 55 00 00");
    EXPECT_EQ(endOf(download), CommandEnd::done);
    answer("AA 5A 01 09 02 00 00 00 01 55 00 00");
    EXPECT_EQ(endOf(download), CommandEnd::refused);
    std::filesystem::create_directory("8.jpg");
    answer("AA 5A 01 09 02 00 00 00 00 55 00 00");
    EXPECT_EQ(endOf([](CameraSp& c) { c.getOriginTargetPic(8, 1); }), CommandEnd::fileUnusable);
}

TEST_F(Report, V1DownloadWritesTheFileWhateverTheResult) {
    answer("AA 5A 01 C9 02 00 00 00 01 55 00 00");
    EXPECT_EQ(endOf([](CameraSp& c) { c.getTargetPicV1(7, 1); }), CommandEnd::done);
}

TEST_F(Report, ScopeKeepsTheFirstFailureOfSeveralCommands) {
    const ReportScope scope;
    answer("AA 5A 01 01 01 00 00 00 01 7F EA");
    camera.testHeartBeat();
    EXPECT_EQ(scope.report().end, CommandEnd::done);
    answer("AA 5A 01 05 01 00 00 00 01 FF FC");
    camera.rebootCamera();
    camera.testHeartBeat();
    EXPECT_EQ(scope.report().end, CommandEnd::refused);
}

TEST_F(Report, InnerScopeHearsOnlyItsOwnCommands) {
    const ReportScope outer;
    camera.testHeartBeat();
    const ReportScope inner;
    EXPECT_EQ(inner.report().end, CommandEnd::done);
    camera.requestStop();
    camera.testHeartBeat();
    EXPECT_EQ(inner.report().end, CommandEnd::stopped);
    EXPECT_EQ(outer.report().end, CommandEnd::noAnswer);
}

TEST_F(Report, NamesTheJobThatHoldsTheLine) {
    const LineTurn::Hold versions = camera.takeLine(LineUser::versions);
    const CommandReport report = std::async(std::launch::async, [this] {
                                     const ReportScope scope;
                                     EXPECT_FALSE(camera.testHeartBeat());
                                     return scope.report();
                                 }).get();
    EXPECT_EQ(report.end, CommandEnd::lineBusy);
    EXPECT_EQ(report.busyWith, LineUser::versions);
    EXPECT_TRUE(fake_serial::writes().empty());
}

// --- uploads ---------------------------------------------------------------------------------------------

namespace {

class UploadReport : public Report {
protected:
    UploadReport() {
        files::write("file.bin", {'a', 'b', 'c'});
        camera.setAppFilePath("file.bin");
        camera.setFirewareFilePath("file.bin");
        camera.setModelNameAndPath("m", "file.bin");
    }

    static inline const CameraCall app = [](CameraSp& c) { c.appUpdate(); };
    static inline const CameraCall system = [](CameraSp& c) { c.firewareUpdate(); };
    static inline const CameraCall model = [](CameraSp& c) { c.modelUpdate(); };
    static inline const CameraCall v1 = [](CameraSp& c) { c.appUpdateV1("file.bin", "file.bin"); };
};

} // namespace

TEST_F(UploadReport, IsDoneAfterAGoodVerdict) {
    answer(appFromZero);
    answer(appGood);
    EXPECT_EQ(endOf(app), CommandEnd::done);
}

TEST_F(UploadReport, ReportsAnUnansweredAnnouncement) {
    for (const CameraCall& upload : {app, system, model, v1})
        EXPECT_EQ(endOf(upload), CommandEnd::noAnswer);
}

TEST_F(UploadReport, ReportsARefusedModel) {
    answer("AA 5A 01 CB 06 00 00 00 00 01 00 00 00 00 00 00");
    EXPECT_EQ(endOf(model), CommandEnd::refused);
}

TEST_F(UploadReport, ReportsAnOffsetBeyondTheFile) {
    answer(appFrom512);
    answer(appBad);
    EXPECT_EQ(endOf(app), CommandEnd::offsetBeyondFile);
    answer("AA 5A 01 0B 05 00 00 00 00 00 02 00 00 00 00");
    EXPECT_EQ(endOf(system), CommandEnd::offsetBeyondFile);
}

TEST_F(UploadReport, ReportsABadOrMissingVerdict) {
    answer(appFromZero);
    answer(appBad);
    EXPECT_EQ(endOf(app), CommandEnd::verdictBad);
    answer(appFromZero);
    EXPECT_EQ(endOf(app), CommandEnd::noVerdict);
}

TEST_F(UploadReport, ReportsAShortWriteOfASystemImage) {
    fake_serial::willWriteOnly(30);
    fake_serial::willWriteOnly(2);
    answer(firewareFromZero);
    EXPECT_EQ(endOf(system), CommandEnd::writtenShort);
}

TEST_F(UploadReport, ReportsAShortWriteInFrontOfABadVerdict) {
    for (const bool bad : {true, false}) {
        fake_serial::willWriteOnly(30);
        fake_serial::willWriteOnly(2);
        answer(appFromZero);
        if (bad)
            answer(appBad);
        EXPECT_EQ(endOf(app), CommandEnd::writtenShort);
    }
}

TEST_F(UploadReport, TrustsAGoodVerdictAfterAShortWrite) {
    fake_serial::willWriteOnly(30);
    fake_serial::willWriteOnly(2);
    answer(appFromZero);
    answer(appGood);
    EXPECT_EQ(endOf(app), CommandEnd::done);
}

TEST_F(UploadReport, ReportsUnreadableFiles) {
    camera.setAppFilePath("nothing.bin");
    EXPECT_EQ(endOf([](CameraSp& c) { EXPECT_THROW(c.appUpdate(), const char*); }), CommandEnd::fileMissing);
    std::filesystem::create_directory("folder");
    camera.setAppFilePath("folder");
    EXPECT_EQ(endOf(app), CommandEnd::fileUnreadable);
    std::ofstream("large.bin").close();
    std::filesystem::resize_file("large.bin", std::uintmax_t{1} << 31U);
    camera.setAppFilePath("large.bin");
    EXPECT_EQ(endOf(app), CommandEnd::fileTooLarge);
}

TEST_F(UploadReport, ReportsThatTheSecondProtocolSendsNoData) {
    for (int i = 0; i < 5; ++i)
        answer(v1FromZero);
    EXPECT_EQ(endOf(v1), CommandEnd::dataNotSupported);
}

TEST_F(UploadReport, ReportsAMissingPackageResult) {
    for (int i = 0; i < 5; ++i)
        answer(v1HoldsAll);
    EXPECT_EQ(endOf(v1), CommandEnd::noVerdict);
}

TEST_F(UploadReport, ReportsAFailedPort) {
    answer(appFromZero);
    fake_serial::willThrowOnRead();
    EXPECT_EQ(endOf(app), CommandEnd::portFailed);
}
