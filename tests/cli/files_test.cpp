// Files that the program reads and writes, and its output.
#include "tests/cli/tool.h"
#include "tests/support/workingdirectory.h"
#include "trace/recordingfile.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gmock/gmock.h>

#include <sys/resource.h>

namespace clitest {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using testing::UnorderedElementsAre;
namespace fs = std::filesystem;

/// As a full disk: files of programs started meanwhile hold no more bytes.
class FileLimit {
public:
    explicit FileLimit(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit narrow{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &narrow);
    }
    ~FileLimit() { setrlimit(RLIMIT_FSIZE, &m_before); }
    FileLimit(const FileLimit&) = delete;
    FileLimit& operator=(const FileLimit&) = delete;

private:
    rlimit m_before{};
};

// --- pictures ----------------------------------------------------------------------------------------------

TEST(Files, PictureIsThatOfTheCamera) {
    const Camera camera;
    ASSERT_EQ(camera.run("pictures get 33 -o one.jpg").code, done);
    EXPECT_EQ(files::read("one.jpg"), std::vector<std::uint8_t>(3000, 0x5A));
}

TEST(Files, DownloadThatStandsStillEndsAfter10Seconds) {
    Camera camera;
    camera.addFault("silent@read");
    const auto start = std::chrono::steady_clock::now();
    const Ending ending = camera.run("pictures get 33 -o one.jpg");
    const auto duration = std::chrono::steady_clock::now() - start;
    EXPECT_EQ(ending.code, noAnswer);
    EXPECT_GT(duration, 10s);
    EXPECT_LT(duration, 12s);
    EXPECT_THAT(ending.err, HasSubstr("10 s"));
}

TEST(Files, AllPicturesComeIntoTheFolder) {
    const Camera camera;
    ASSERT_EQ(camera.run("capture").code, done);
    ASSERT_EQ(camera.run("pictures get-all -d new/folder").code, done);
    EXPECT_EQ(files::read("new/folder/33.jpg"), std::vector<std::uint8_t>(3000, 0x5A));
    EXPECT_EQ(files::read("new/folder/34.jpg"), files::read("picture.jpg"));
}

TEST(Files, PicturesOfTwoPortsComeIntoTwoFolders) {
    const Camera one;
    const Camera two;
    ASSERT_EQ(run(joined({"-p", two.port()}, one.with("pictures get-all -d all"))).code, done);
    for (const Camera* const camera : {&one, &two})
        EXPECT_TRUE(fs::exists("all/" + fs::path(camera->port()).filename().string() + "/33.jpg"));
}

TEST(Files, DeletedPictureIsGone) {
    Camera camera;
    ASSERT_EQ(camera.run("pictures delete 33").code, done);
    EXPECT_TRUE(camera.front().withCamera([](auto& c) { return c.state().pictures.empty(); }));
}

TEST(Files, DeleteAllEmptiesTheCatalogue) {
    Camera camera;
    ASSERT_EQ(camera.run("capture").code, done);
    ASSERT_EQ(camera.run("pictures delete-all").code, done);
    EXPECT_TRUE(camera.front().withCamera([](auto& c) { return c.state().pictures.empty(); }));
}

TEST(Files, MissingFolderIsToldBeforeTheCameraIsAsked) {
    Camera camera;
    for (const char* const line : {"capture -o no/such/a.jpg", "pictures get 33 -o no/such/a.jpg"}) {
        const Ending ending = camera.run(line);
        EXPECT_EQ(ending.code, file);
        EXPECT_THAT(ending.err, HasSubstr("The folder does not exist or cannot be written: no/such"));
    }
    EXPECT_LE(camera.requests(), 1U) << "get reads the catalogue";
}

TEST(Files, FolderThatIsAFileIsTold) {
    std::ofstream("folder") << "a file";
    const Camera camera;
    const Ending ending = camera.run("pictures get-all -d folder");
    EXPECT_EQ(ending.code, file);
    EXPECT_THAT(ending.err, HasSubstr("cannot be written: folder"));
}

TEST(Files, FullDiskLeavesThePictureOfBefore) {
    std::ofstream("one.jpg") << "old";
    const Camera camera;
    const Ending ending = [&] {
        const FileLimit limit(1000);
        return camera.run("pictures get 33 -o one.jpg");
    }();
    EXPECT_EQ(ending.code, file) << ending.out << ending.err;
    EXPECT_FALSE(ending.err.empty());
    EXPECT_EQ(Process::text("one.jpg"), "old");
    EXPECT_THAT(files::names(), UnorderedElementsAre("one.jpg", "out", "err"));
}

TEST(Files, FullDiskLeavesNoPartOfAPicture) {
    const Camera camera;
    const Ending ending = [&] {
        const FileLimit limit(1000);
        return camera.run("pictures get-all -d all");
    }();
    EXPECT_EQ(ending.code, file) << ending.out << ending.err;
    EXPECT_TRUE(fs::is_empty("all"));
}

// --- uploads -----------------------------------------------------------------------------------------------

TEST(Files, MissingImageIsTold) {
    Camera camera;
    for (const char* const kind : {"app", "system", "model"}) {
        const Ending ending = camera.run(std::string("upload ") + kind + " missing.bin");
        EXPECT_EQ(ending.code, file);
        EXPECT_EQ(ending.err, "There is no file missing.bin\n");
    }
    EXPECT_EQ(camera.requests(), 0U);
}

TEST(Files, FolderIsNoImage) {
    fs::create_directory("folder");
    const Ending ending = Camera().run("upload app folder");
    EXPECT_EQ(ending.code, file);
    EXPECT_EQ(ending.err, "The file cannot be read: folder\n");
}

TEST(Files, BadImageVerdictEndsWithCode1) {
    std::ofstream("image.bin") << "image";
    Camera camera;
    camera.addFault("verdict=1@appUpdate");
    const Ending ending = camera.run("upload app image.bin");
    EXPECT_EQ(ending.code, refused);
    EXPECT_THAT(ending.err, HasSubstr("the camera calls the image bad"));
}

TEST(Files, UploadTellsTheVersionAfterTheRestart) {
    std::ofstream("image.bin") << "image";
    const Camera camera;
    const Ending ending = run(joined({"--json"}, camera.with("upload app image.bin")));
    EXPECT_EQ(ending.code, done);
    EXPECT_EQ(objectsOf(ending.out).at(0)["after"].toString().toStdString(), "2.3.1");
    EXPECT_TRUE(objectsOf(ending.out).at(0)["returned"].toBool());
}

TEST(Files, CameraThatStaysAwayEndsWithCode4) {
    std::ofstream("image.bin") << "image";
    Camera camera;
    camera.addFault("stay-down@appUpdate");
    const Ending ending = run(joined({"--json"}, camera.with("upload app image.bin")));
    EXPECT_EQ(ending.code, noAnswer);
    EXPECT_FALSE(objectsOf(ending.out).at(0)["returned"].toBool());
    EXPECT_EQ(schemaComplaints(ending.out), "");
}

// --- reports -----------------------------------------------------------------------------------------------

class Report : public testing::TestWithParam<const char*> {};

TEST_P(Report, IsWritten) {
    const Camera camera;
    const std::string name = std::string("report") + GetParam();
    const Ending ending = camera.run("check --picture -o " + name);
    EXPECT_EQ(ending.code, done) << ending.out << ending.err;
    EXPECT_GT(fs::file_size(name), 500U);
}

TEST_P(Report, IsNotHalfWrittenOnAFullDisk) {
    const Camera camera;
    const int code = [&] {
        const FileLimit limit(400);
        return Tool(camera.with(std::string("check -o report") + GetParam()),
                    {"/dev/null", "/dev/null", "err"})
            .wait();
    }();
    EXPECT_EQ(code, file);
    EXPECT_THAT(Process::text("err"), HasSubstr(std::string("report") + GetParam()));
    EXPECT_FALSE(fs::exists(std::string("report") + GetParam()));
}

INSTANTIATE_TEST_SUITE_P(All, Report, testing::Values(".html", ".pdf", ".json", ".csv"),
                         [](const auto& extension) { return std::string(extension.param).substr(1); });

TEST(Files, HtmlReportIsChineseAndHoldsThePicture) {
    const Camera camera;
    ASSERT_EQ(camera.run("check --picture -o report.html").code, done);
    const std::string html = Process::text("report.html");
    EXPECT_THAT(html, HasSubstr("摄像头检查报告"));
    EXPECT_THAT(html, HasSubstr("SHELF000001"));
    EXPECT_THAT(html, HasSubstr("src=\"data:image/jpeg;base64,/9j/"));
}

TEST(Files, PdfReportWithAPictureIsOnePage) {
    const Camera camera;
    ASSERT_EQ(camera.run("check --picture -o report.pdf").code, done);
    const std::string pdf = Process::text("report.pdf");
    EXPECT_THAT(pdf, StartsWith("%PDF-"));
    EXPECT_THAT(pdf, HasSubstr("\n/Count 1\n"));
}

TEST(Files, JsonReportHoldsEveryReading) {
    const Camera camera;
    ASSERT_EQ(camera.run("check -o report.json").code, done);
    const QJsonObject report =
        QJsonDocument::fromJson(QByteArray::fromStdString(Process::text("report.json"))).object();
    EXPECT_EQ(report["readings"]["serialNumber"]["value"].toString().toStdString(), "SHELF000001");
    EXPECT_EQ(report["verdict"].toString().toStdString(), "good");
}

TEST(Files, ReportsOfTwoPortsAreTwoFiles) {
    const Camera one;
    const Camera two;
    ASSERT_EQ(run(joined({"-p", two.port()}, one.with("check -o report.csv"))).code, done);
    for (const Camera* const camera : {&one, &two})
        EXPECT_TRUE(fs::exists("report-" + fs::path(camera->port()).filename().string() + ".csv"));
}

// --- recordings --------------------------------------------------------------------------------------------

TEST(Files, RecordingOfASearchHoldsItsHeartbeats) {
    const Camera camera;
    ASSERT_EQ(run(joined({"--record", "a.rec"}, camera.with("find --rates 460800 --addresses 1"))).code,
              done);
    EXPECT_EQ(trace::loadRecording("a.rec").entries.size(), 4U);
}

TEST(Files, ExistingRecordingIsKept) {
    std::ofstream("a.rec") << "precious";
    Camera camera;
    const Ending ending = run(joined({"--record", "a.rec"}, camera.with("heartbeat")));
    EXPECT_EQ(ending.code, file);
    EXPECT_THAT(ending.err, HasSubstr("a.rec is there already"));
    EXPECT_EQ(Process::text("a.rec"), "precious");
    EXPECT_EQ(camera.requests(), 0U);
}

TEST(Files, MissingPortLeavesNoRecording) {
    EXPECT_EQ(run({"-p", "missing", "--record", "a.rec", "heartbeat"}).code, noPort);
    EXPECT_FALSE(fs::exists("a.rec"));
}

TEST(Files, RecordingOnAFullDiskEndsWithCode5) {
    const Camera camera;
    const int code = [&] {
        const FileLimit limit(300); // of the recording, not of the output
        return Tool(joined({"--record", "a.rec"}, camera.with("check")), {"/dev/null", "/dev/null", "err"})
            .wait();
    }();
    EXPECT_EQ(code, file);
    EXPECT_THAT(Process::text("err"), StartsWith("The recording is not complete"));
}

// --- the output --------------------------------------------------------------------------------------------

TEST(Files, FullDiskOfTheOutputEndsWithCode5) {
    const Camera camera;
    const int code = Tool(camera.with("heartbeat"), {"/dev/null", "/dev/full", "err"}).wait();
    EXPECT_EQ(code, file);
    EXPECT_THAT(Process::text("err"), StartsWith("The output is not complete"));
}

TEST(Files, DiagnosticsComeOnlyWithVerboseOnStandardError) {
    const Camera camera;
    EXPECT_EQ(camera.run("sn").err, "");
    const Ending verbose = run(joined({"-v"}, camera.with("sn")));
    EXPECT_THAT(verbose.err, HasSubstr("sn:SHELF000001"));
    EXPECT_EQ(verbose.out, "Serial number: SHELF000001\n");
}

TEST(Files, NoProgressWithoutATerminal) {
    std::ofstream("image.bin") << std::string(3000, 'x');
    const Camera camera;
    EXPECT_EQ(camera.run("upload model image.bin").err, "");
}

} // namespace
} // namespace clitest
