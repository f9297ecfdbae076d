// A file that vanishes between the window's check and the upload ends the tool, with the reason on stderr.
#include <QProcess>

#include <gtest/gtest.h>

namespace {

struct Ending {
    const char* upload;
    const char* text;
};

void PrintTo(const Ending& ending, std::ostream* out) {
    *out << ending.upload;
}

class VanishedFile : public testing::TestWithParam<Ending> {};

// The model shares the application's text.
INSTANTIATE_TEST_SUITE_P(Of, VanishedFile,
                         testing::Values(Ending{"app", "file cant open in appUpdate"},
                                         Ending{"system", "file cant open in firewareUpdate"},
                                         Ending{"model", "file cant open in appUpdate"}),
                         [](const auto& test) { return std::string(test.param.upload); });

TEST_P(VanishedFile, EndsTheProcessWithItsText) {
    QProcess tool;
    tool.start(VANISHED_FILE_TOOL, {GetParam().upload});
    ASSERT_TRUE(tool.waitForFinished(50000)) << "still running";
    const QByteArray errors = tool.readAllStandardError();
    EXPECT_TRUE(errors.contains("started\n")) << errors.toStdString();
    EXPECT_TRUE(errors.contains(QByteArray(GetParam().text) + "\n")) << errors.toStdString();
    EXPECT_EQ(tool.exitStatus(), QProcess::CrashExit) << tool.exitCode();
}

} // namespace
