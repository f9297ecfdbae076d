// A check-up as JSON, table and page.
#include "service/report.h"
#include "tests/support/workingdirectory.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>

#include <gmock/gmock.h>

namespace {

using service::Checkup;
using service::Verdict;
using testing::HasSubstr;

Checkup checkup() {
    Checkup checkup;
    checkup.at = QDateTime(QDate(2026, 11, 21), QTime(9, 0, 5));
    checkup.port = "COM9";
    checkup.baudRate = 460800;
    checkup.address = 1;
    checkup.lines = {
        {service::readingOf("heartbeat"), {Verdict::good, true, "有应答", {}, CommandEnd::done}},
        {service::readingOf("serialNumber"), {Verdict::good, "A\"<1", "A\"<1", {}, CommandEnd::done}},
    };
    return checkup;
}

TEST(Report, VerdictIsTheWorstOfTheLines) {
    Checkup one = checkup();
    EXPECT_EQ(one.verdict(), Verdict::good);
    one.lines[0].value.verdict = Verdict::odd;
    EXPECT_EQ(one.verdict(), Verdict::odd);
    one.lines[1].value.verdict = Verdict::failed;
    EXPECT_EQ(one.verdict(), Verdict::failed);
}

TEST(Report, OddLineMakesTheVerdictOdd) {
    Checkup one = checkup();
    one.line.late = 1;
    EXPECT_EQ(one.verdict(), Verdict::odd);
}

TEST(Report, FailedPictureMakesTheVerdictOdd) {
    Checkup one = checkup();
    one.pictureFailure = "没有应答";
    EXPECT_EQ(one.verdict(), Verdict::odd);
    EXPECT_EQ(service::checkupJson(one)["pictureFailure"].toString(), one.pictureFailure);
}

TEST(Report, JsonHasKeysAndVerdicts) {
    const QJsonObject json = service::checkupJson(checkup());
    EXPECT_EQ(json["time"].toString().toStdString(), "2026-11-21T09:00:05");
    EXPECT_EQ(json["verdict"].toString().toStdString(), "good");
    EXPECT_EQ(json["readings"]["serialNumber"]["value"].toString().toStdString(), "A\"<1");
}

TEST(Report, CsvIsQuotedAndBeginsWithAMark) {
    const std::string csv = service::checkupCsv(checkup()).toStdString();
    EXPECT_THAT(csv, testing::StartsWith("\xEF\xBB\xBF\"时间\",\"串口\""));
    EXPECT_THAT(
        csv,
        HasSubstr(
            "\"2026-11-21 09:00:05\",\"COM9\",\"460800\",\"1\",\"序列号\",\"A\"\"<1\",\"正常\",\"\"\r\n"));
}

TEST(Report, HtmlIsEscaped) {
    const std::string html = service::checkupHtml(checkup()).toStdString();
    EXPECT_THAT(html, HasSubstr("<td>A&quot;&lt;1</td>"));
    EXPECT_THAT(html, HasSubstr("结论：正常"));
    EXPECT_THAT(html, testing::Not(HasSubstr("<img")));
}

TEST(Report, HtmlHoldsThePicture) {
    Checkup one = checkup();
    one.picture = "abc";
    EXPECT_THAT(service::checkupHtml(one).toStdString(), HasSubstr("src=\"data:image/jpeg;base64,YWJj\""));
}

TEST(Report, PictureKeepsItsAspectRatio) {
    Checkup one = checkup();
    QImage image(640, 480, QImage::Format_RGB32);
    image.fill(Qt::green);
    QBuffer buffer(&one.picture);
    buffer.open(QIODevice::WriteOnly);
    ASSERT_TRUE(image.save(&buffer, "JPG"));
    EXPECT_THAT(service::checkupHtml(one).toStdString(), HasSubstr("width=\"380\" height=\"285\""));
}

TEST(Report, NamesDecideTheFormat) {
    for (const char* const name : {"a.json", "a.csv", "a.html", "a.PDF"})
        EXPECT_TRUE(service::isReportName(name)) << name;
    for (const char* const name : {"a", "a.doc", "pdf"})
        EXPECT_FALSE(service::isReportName(name)) << name;
}

TEST(Report, FileIsWritten) {
    EXPECT_TRUE(service::writeReport(checkup(), "a.csv").isEmpty());
    const QByteArray csv = service::checkupCsv(checkup());
    EXPECT_EQ(files::read("a.csv"), std::vector<std::uint8_t>(csv.begin(), csv.end()));
}

TEST(Report, MissingFolderIsTold) {
    EXPECT_THAT(service::writeReport(checkup(), "no/such/a.csv").toStdString(),
                HasSubstr("报告没有写入 no/such/a.csv，请换一个文件夹"));
}

TEST(Report, SeveralAreOneDocument) {
    std::vector<Checkup> two{checkup(), checkup()};
    two[1].port = "COM4";
    const std::string page = service::checkupHtml(two).toStdString();
    EXPECT_THAT(page, HasSubstr("COM9"));
    EXPECT_THAT(page, HasSubstr("COM4"));
    EXPECT_THAT(page, HasSubstr("page-break-before"));
    EXPECT_EQ(service::checkupCsv(two).count("\"读数\""), 1);
    EXPECT_EQ(service::writeReport(two, "two.json"), "");
    QFile file("two.json");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(QJsonDocument::fromJson(file.readAll()).array().size(), 2);
}

TEST(Report, TextHasOneLineAReading) {
    EXPECT_EQ(service::checkupText(checkup()).toStdString(),
              "心跳\t有应答\t正常\n序列号\tA\"<1\t正常\n通信\t请求 0，应答 0，无应答 0，迟到 0，损坏 0，"
              "杂散字节 0，最慢 0 毫秒\t正常\n结论：正常\n");
}

} // namespace
