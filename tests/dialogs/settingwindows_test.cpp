// Differences of the three writing windows.
#include "dialogs/setpicrate.h"
#include "dialogs/setpwmheat.h"
#include "dialogs/setsn.h"
#include "late/adapters.h"
#include "late/late.h"
#include "tests/dialogs/recordeddialogtest.h"

#include <QComboBox>
#include <QLineEdit>
#include <QRegularExpression>

#include <set>

using SetSNTest = RecordedDialogTest;
using SetPwmHeatTest = RecordedDialogTest;
using SetPicRateTest = RecordedDialogTest;

// --- serial number -------------------------------------------------------------------------------------

TEST_F(SetSNTest, TakesSixteenDigitsOutOfTheMiddleOfTheDigest) {
    EXPECT_EQ(SetSN::serialNumberOf("AA:BB:CC:DD:EE:FF1700000000123456789"), "1b6d75ec602bf5f3");
    EXPECT_EQ(SetSN::serialNumberOf("12345617000000000"), "6fab4679494900b2");
}

TEST_F(SetSNTest, SeedsWithAFixedTextWhenNoAdapterHasAnAddress) {
    EXPECT_EQ(late::textOf({}), "123456");
    EXPECT_EQ(late::textOf({QNetworkInterface()}), "123456");
}

TEST_F(SetSNTest, SeedsWithTheFirstAdapterExceptLoopback) {
    QList<QNetworkInterface> loopbacks;
    QString first;
    for (const QNetworkInterface& adapter : QNetworkInterface::allInterfaces()) {
        if (adapter.flags() & QNetworkInterface::IsLoopBack)
            loopbacks.append(adapter);
        else if (first.isEmpty())
            first = adapter.hardwareAddress();
    }
    const QString expected = first.isEmpty() ? QString("123456") : first;
    EXPECT_EQ(late::textOf(loopbacks), "123456");
    EXPECT_EQ(late::textOf(loopbacks + QNetworkInterface::allInterfaces()), expected);
    EXPECT_EQ(late::adapterText(), expected);
}

TEST_F(SetSNTest, GeneratesAnotherNumberAtEveryPress) {
    const QWidget* const window = open<SetSN>();
    const QRegularExpression form("^[0-9a-f]{16}$");
    std::set<std::string> numbers;
    for (int i = 0; i < 50; ++i) {
        press(window, "btn_gensn");
        EXPECT_TRUE(form.match(QString::fromStdString(textOf(window, "et_setsn"))).hasMatch());
        numbers.insert(textOf(window, "et_setsn"));
    }
    EXPECT_EQ(numbers.size(), 50U);
    EXPECT_TRUE(requests().empty());
}

TEST_F(SetSNTest, SendsNothingBeforeANumberIsGenerated) {
    const QWidget* const window = open<SetSN>();
    part<QLineEdit>(window, "et_setsn2")->setText("never read");
    press(window, "btn_setsn");
    EXPECT_EQ(textOf(window, "label_hint"), "字符串为空,请填写SN后下发");
    EXPECT_TRUE(part<QWidget>(window, "btn_setsn")->isEnabled());
    EXPECT_TRUE(part<QWidget>(window, "btn_getsn")->isEnabled());
    EXPECT_TRUE(part<QWidget>(window, "et_setsn")->isEnabled());
    EXPECT_TRUE(requests().empty());
}

TEST_F(SetSNTest, GeneratesDuringTheCountdownToo) {
    const QWidget* const window = open<SetSN>();
    press(window, "btn_gensn");
    press(window, "btn_setsn");
    const std::string written = textOf(window, "et_setsn");
    press(window, "btn_gensn");
    EXPECT_NE(textOf(window, "et_setsn"), written);
    for (int i = 0; i < 7; ++i)
        tick(window);
    EXPECT_EQ(textOf(window, "label_setsn"), "当前序列号:  " + written);
}

TEST_F(SetSNTest, ShowsTheNumberUpToItsFirstZeroByte) {
    m_camera.hold(3, {{'S', 'N', '1', 0, 'x'}});
    const QWidget* const window = open<SetSN>();
    press(window, "btn_getsn");
    EXPECT_EQ(textOf(window, "label_setsn"), "当前序列号:  SN1");
    EXPECT_EQ(DebugLog::count("sn: SN1"), 1);
}

TEST_F(SetSNTest, ShowsTheBarePrefixAfterAFailedRead) {
    const QWidget* const window = open<SetSN>();
    const std::vector<PropertyCamera::Bytes> payloads{{3, 1, 'S'}, {4, 0, 'S'}, {3}, {}, {3, 0}};
    for (const auto& payload : payloads) {
        SCOPED_TRACE(fake_serial::hex(payload));
        part<QLabel>(window, "label_setsn")->setText("old");
        m_camera.answerReadsWith(3, payload);
        press(window, "btn_getsn");
        EXPECT_EQ(textOf(window, "label_setsn"), "当前序列号:  ");
    }
}

TEST_F(SetSNTest, ShowsCameraTextAsPlainText) {
    m_camera.hold(3, {{'<', 'b', '>', '&', 'a'}});
    const QWidget* const window = open<SetSN>();
    press(window, "btn_getsn");
    EXPECT_EQ(textOf(window, "label_setsn"), "当前序列号:  <b>&a");
    EXPECT_EQ(part<QLabel>(window, "label_setsn")->textFormat(), Qt::PlainText);
}

TEST_F(SetSNTest, ALongNumberDoesNotStretchTheWindow) {
    m_camera.hold(3, {PropertyCamera::Bytes(80, 'W')});
    const QWidget* const window = open<SetSN>();
    press(window, "btn_getsn");
    QTest::qWait(20);
    EXPECT_EQ(textOf(window, "label_setsn"), "当前序列号:  " + std::string(80, 'W'));
    EXPECT_EQ(window->width(), 400);
}

// --- heater --------------------------------------------------------------------------------------------

TEST_F(SetPwmHeatTest, OffersFourDutyCyclesAndSendsTheChosenOne) {
    const QWidget* const window = open<SetPwmHeat>();
    auto* const choice = part<QComboBox>(window, "cb_setheat");
    QStringList offered;
    for (int i = 0; i < choice->count(); ++i)
        offered.append(choice->itemText(i));
    EXPECT_EQ(offered, QStringList({"30", "40", "50", "60"}));
    EXPECT_EQ(choice->currentIndex(), 0);
    EXPECT_FALSE(choice->isEditable());

    part<QLineEdit>(window, "et_setheat")->setText("99"); // never read
    choice->setCurrentIndex(3);
    press(window, "btn_setheat");
    EXPECT_EQ(requests(), std::vector<std::string>{"AA 5A 01 03 02 00 00 00 0F 3C B7 59"});
    EXPECT_EQ(textOf(window, "label_hint"), "开始设置加热丝占空比:60");
}

// --- one-byte reads of both windows --------------------------------------------------------------------

TEST_F(SetPwmHeatTest, ShowsTheFirstByteOfTheAnswerAndLogsAll) {
    const QWidget* const window = open<SetPwmHeat>();
    m_camera.hold(15, {{30}, {30, 1, 2}, {255}});
    for (const char* shown : {"当前占空比:  30", "当前占空比:  30", "当前占空比:  255"}) {
        press(window, "btn_getheat");
        EXPECT_EQ(textOf(window, "label_setheat"), shown);
    }
    EXPECT_EQ(DebugLog::plainLines(),
              (Lines{"resultVector: std::vector(30)", "resultVector: std::vector(30, 1, 2)",
                     "resultVector: std::vector(255)"}));
}

TEST_F(SetPwmHeatTest, ShowsAFailedReadAndLogsNothing) {
    const QWidget* const window = open<SetPwmHeat>();
    const std::vector<PropertyCamera::Bytes> payloads{{15, 1, 30}, {15}, {}, {15, 0}};
    for (const auto& payload : payloads) {
        SCOPED_TRACE(fake_serial::hex(payload));
        m_camera.answerReadsWith(15, payload);
        press(window, "btn_getheat");
        EXPECT_EQ(textOf(window, "label_setheat"), "获取占空比失败");
    }
    EXPECT_TRUE(DebugLog::plainLines().empty());
}

TEST_F(SetPicRateTest, ShowsTheFirstByteOfTheAnswerAndLogsAll) {
    const QWidget* const window = open<SetPicRate>();
    m_camera.hold(6, {{85, 7}});
    press(window, "btn_getsn");
    EXPECT_EQ(textOf(window, "label_setsn"), "当前图片压缩率:  85");
    EXPECT_EQ(DebugLog::plainLines(), Lines{"resultVector: std::vector(85, 7)"});
    m_camera.answerReadsWith(6, {6, 2});
    press(window, "btn_getsn");
    EXPECT_EQ(textOf(window, "label_setsn"), "获取图片压缩率失败");
    EXPECT_EQ(DebugLog::plainLines().size(), 1U);
}

// --- compression rate ----------------------------------------------------------------------------------

TEST_F(SetPicRateTest, SendsNothingForAnEmptyText) {
    const QWidget* const window = open<SetPicRate>();
    press(window, "btn_setsn");
    EXPECT_EQ(textOf(window, "label_hint"), "字符串为空,请填写后下发");
    for (const char* name : {"btn_setsn", "btn_getsn", "et_setsn"})
        EXPECT_TRUE(part<QWidget>(window, name)->isEnabled());
    EXPECT_TRUE(requests().empty());
}

TEST_F(SetPicRateTest, SendsTheLowByteOfAnyInput) {
    const std::string zero = "AA 5A 01 03 02 00 00 00 06 00 F0 14";
    const std::vector<std::pair<QString, std::string>> rows{
        {"85", "AA 5A 01 03 02 00 00 00 06 55 A0 1E"},
        {"300", "AA 5A 01 03 02 00 00 00 06 2C 1E F1"},
        {"-1", "AA 5A 01 03 02 00 00 00 06 FF 00 0A"},
        {"256", zero},
        {"abc", zero},
        {"8 5", zero},
        {" ", zero},
        {"0x55", zero},
        {"８５", zero},
        {"八十五", zero},
        {"2147483648", zero},
        {QString(400, '9'), zero},
    };
    for (const auto& [typed, request] : rows) {
        SCOPED_TRACE(typed.toStdString());
        forgetRequests();
        const QWidget* const window = open<SetPicRate>();
        part<QLineEdit>(window, "et_setsn")->setText(typed);
        press(window, "btn_setsn");
        EXPECT_EQ(requests(), std::vector<std::string>{request});
        EXPECT_EQ(textOf(window, "label_hint"), "开始设置图片压缩率:" + typed.toStdString());
        QTest::qWait(0);
        EXPECT_EQ(window->width(), 400);
    }
}

TEST_F(SetPicRateTest, ReturnInTheLineEditSetsTheRate) {
    const QWidget* const window = open<SetPicRate>();
    auto* const edit = part<QLineEdit>(window, "et_setsn");
    edit->setFocus();
    QTest::keyClicks(edit, "85");
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_EQ(requests(), std::vector<std::string>{"AA 5A 01 03 02 00 00 00 06 55 A0 1E"});
    edit->setEnabled(true); // even then a second Return has no button to press
    QTest::keyClick(edit, Qt::Key_Return);
    EXPECT_EQ(requests().size(), 1U);
}

TEST_F(SetSNTest, EachWindowLogsItsEnd) {
    delete open<SetSN>();
    delete open<SetPwmHeat>();
    delete open<SetPicRate>();
    EXPECT_EQ(DebugLog::plainLines(), (Lines{"snUi destroyed", "pwmHeatUi destroyed", "picrate destroyed"}));
}
