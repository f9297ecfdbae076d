// Picture area, lamp and labels of the main window, and which camera they are of.
#include "app/heartbeatlamp.h"
#include "app/mainwindow.h"
#include "app/panellabels.h"
#include "app/picturearea.h"
#include "linkaccess/valuelabel.h"
#include "tests/support/answers.h"
#include "tests/support/guitest.h"
#include "tests/support/printing.h"
#include "tests/support/recordedwindow.h"
#include "tests/support/windowactions.h"

#include <QClipboard>
#include <QMessageBox>
#include <QPainter>

#include <gtest/gtest.h>

using namespace guitest;
using namespace std::chrono_literals;

namespace {

constexpr const char* answeredHeartbeat = "AA 5A 01 01 01 00 00 00 01 7F EA";
constexpr const char* acceptedReboot = "AA 5A 01 05 01 00 00 00 00 FF FC";

/// Black and white columns of one pixel each.
QImage stripes(QSize size) {
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x)
            image.setPixelColor(x, y, x % 2 == 0 ? Qt::black : Qt::white);
    }
    return image;
}

TakenPicture pictureOf(const QImage& image) {
    return {33, QByteArray(2048, 'x'), image, QDateTime(QDate(2024, 1, 31), QTime(14, 5, 32))};
}

/// The area as painted on a screen of this device pixel ratio.
QImage painted(PictureArea& area, double ratio) {
    QImage image(area.size() * ratio, QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::red);
    area.render(&image, {}, {}, QWidget::DrawChildren);
    return image;
}

/// The part that is not red.
QRect shownPart(const QImage& image, int height) {
    QRect shown;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) != QColor(Qt::red))
                shown |= QRect(x, y, 1, 1);
        }
    }
    return shown;
}

class PictureAreaTest : public testing::Test {
protected:
    PictureAreaTest() { area.resize(300, 200); }

    void show(const QImage& image) {
        area.setPixmap(QPixmap(10, 10));
        area.setTaken(pictureOf(image));
    }
    /// Height of the area above the caption.
    [[nodiscard]] int height() const { return area.height() - area.fontMetrics().height() - 4; }

    PictureArea area;
};

class PanelValues : public RecordedWindow {
protected:
    PanelValues() { click(*window, "btn_open"); }

    void heartbeat(bool answered = true) const {
        if (answered)
            fake_serial::willRead(fake_serial::bytes(answeredHeartbeat));
        click(*window, "btn_heartbeat");
    }
    [[nodiscard]] HeartbeatLamp& lamp() const {
        return static_cast<HeartbeatLamp&>(*find<QRadioButton>(*window, "rb_heartbeat"));
    }
    [[nodiscard]] bool isVisible(const char* name) const { return find<QWidget>(*window, name)->isVisible(); }
    void readModel() const {
        fake_serial::willRead(answers::property(0xC2, 0xCC, "model_v7"));
        click(*window, "btn_modelinfo");
    }
};

} // namespace

// --- picture area ------------------------------------------------------------------------------------------

TEST_F(PictureAreaTest, KeepsTheAspectRatioInEverySize) {
    QImage image(160, 120, QImage::Format_RGB32);
    image.fill(Qt::blue);
    show(image);
    for (const QSize size : {QSize(300, 200), QSize(900, 200), QSize(200, 600)}) {
        area.resize(size);
        const QRect shown = shownPart(painted(area, 1), height());
        EXPECT_NEAR(shown.width() * 3, shown.height() * 4, 6);
        EXPECT_TRUE(shown.width() == size.width() || shown.height() == height());
    }
}

TEST_F(PictureAreaTest, PaintsEveryPixelAtTwiceTheSize) {
    const QSize pixels = QSize(300, height()) * 2;
    show(stripes(pixels));
    const QImage image = painted(area, 2);
    for (int x = 0; x < pixels.width(); ++x)
        EXPECT_EQ(image.pixelColor(x, 50), x % 2 == 0 ? QColor(Qt::black) : QColor(Qt::white)) << x;
}

TEST_F(PictureAreaTest, TellsWhichPictureItIs) {
    show(stripes({160, 120}));
    EXPECT_EQ(area.caption(), "图片 33，14:05:32，160 × 120，2048 字节");
    EXPECT_TRUE(area.toolTip().startsWith(area.caption()));
    EXPECT_EQ(area.accessibleDescription(), area.caption());
    area.forget();
    EXPECT_EQ(area.toolTip(), "");
}

TEST_F(PictureAreaTest, GreysThePictureOfAnotherCamera) {
    QImage image(160, 120, QImage::Format_RGB32);
    image.fill(Qt::blue);
    show(image);
    area.setOfPreviousCamera(true);
    EXPECT_TRUE(area.caption().startsWith("上一台摄像头：图片 33"));
    EXPECT_LT(painted(area, 1).pixelColor(150, 80).blue(), 100); // red shows through
    area.setOfPreviousCamera(false);
    EXPECT_EQ(painted(area, 1).pixelColor(150, 80), QColor(Qt::blue));
}

TEST_F(PictureAreaTest, OpensThePictureByDoubleClick) {
    unsigned opened = 0;
    area.setViewer([&opened](const TakenPicture& picture) { opened = picture.id; });
    QTest::mouseDClick(&area, Qt::LeftButton);
    EXPECT_EQ(opened, 0U) << "there is none";
    show(stripes({160, 120}));
    QTest::mouseDClick(&area, Qt::LeftButton);
    EXPECT_EQ(opened, 33U);
}

// --- lamp --------------------------------------------------------------------------------------------------

TEST(HeartbeatLamp, DiffersInShapeNotOnlyInColour) {
    HeartbeatLamp lamp;
    lamp.resize(40, 40);
    std::vector<QByteArray> shapes; // opaque pixels
    const auto keep = [&] {
        QImage shape(lamp.size(), QImage::Format_ARGB32_Premultiplied);
        shape.fill(Qt::transparent);
        lamp.render(&shape, {}, {}, QWidget::DrawChildren);
        QByteArray opaque;
        for (int y = 0; y < shape.height(); ++y) {
            for (int x = 0; x < shape.width(); ++x)
                opaque.append(shape.pixelColor(x, y).alpha() > 127 ? '#' : ' ');
        }
        shapes.push_back(opaque);
    };
    keep();
    lamp.showResult(true, {14, 5, 32}, 12ms);
    keep();
    lamp.showResult(false, {14, 5, 40}, 200ms);
    keep();
    EXPECT_NE(shapes[0], shapes[1]);
    EXPECT_NE(shapes[1], shapes[2]);
    EXPECT_NE(shapes[0], shapes[2]);
}

TEST(HeartbeatLamp, TellsTimeAndDuration) {
    HeartbeatLamp lamp;
    EXPECT_EQ(lamp.toolTip(), "还没有测试心跳");
    lamp.showResult(true, {14, 5, 32}, 12ms);
    EXPECT_EQ(lamp.toolTip(), "14:05:32 有应答，用时 12 ms");
    lamp.showResult(false, {14, 5, 40}, 200ms);
    EXPECT_EQ(lamp.toolTip(), "14:05:40 没有应答");
    EXPECT_EQ(lamp.accessibleDescription(), lamp.toolTip());
}

TEST_F(PanelValues, LampShowsThreeStates) {
    EXPECT_EQ(lamp().state(), HeartbeatLamp::State::notTested);
    heartbeat();
    EXPECT_EQ(lamp().state(), HeartbeatLamp::State::answered);
    heartbeat(false);
    EXPECT_EQ(lamp().state(), HeartbeatLamp::State::silent);
    EXPECT_EQ(find<QWidget>(*window, "frame_4")->toolTip(), lamp().toolTip()); // the mouse reaches that
}

TEST_F(PanelValues, LampIsNotTestedAfterAnotherAddress) {
    for (const bool answered : {true, false}) {
        heartbeat(answered);
        chooseCameraType(*window, "rb_dvl");
        EXPECT_EQ(lamp().state(), HeartbeatLamp::State::notTested);
        chooseCameraType(*window, "rb_ost");
    }
}

TEST_F(PanelValues, LampIsNotTestedAfterARestart) {
    heartbeat();
    fake_serial::willRead(fake_serial::bytes(acceptedReboot));
    const BoxAnswerer boxes(QMessageBox::Yes);
    trigger(*window, "actionReboot");
    EXPECT_EQ(lamp().state(), HeartbeatLamp::State::notTested);
}

TEST_F(PanelValues, LampIsNotTestedWithoutALink) {
    heartbeat(false);
    click(*window, "btn_open");
    EXPECT_EQ(lamp().state(), HeartbeatLamp::State::notTested);
}

TEST_F(PanelValues, LampKeepsItsResultForTheSameSettings) {
    heartbeat();
    chooseCameraType(*window, "rb_ost");
    EXPECT_EQ(lamp().state(), HeartbeatLamp::State::answered);
}

// --- values ------------------------------------------------------------------------------------------------

TEST_F(PanelValues, MarksTheModelOfAnotherAddress) {
    readModel();
    EXPECT_FALSE(isVisible("mark_model"));
    chooseCameraType(*window, "rb_dvl");
    EXPECT_TRUE(isVisible("mark_model"));
    EXPECT_EQ(text(*window, "label_modelinfo"), "模型信息:model_v7");
    chooseCameraType(*window, "rb_ost");
    EXPECT_FALSE(isVisible("mark_model")) << "the same camera again";
}

TEST_F(PanelValues, MarksTheModelOfAnotherType) {
    readModel();
    chooseCameraType(*window, "rb_dx"); // of the same address
    EXPECT_TRUE(isVisible("mark_model"));
}

TEST_F(PanelValues, MarksTheModelOfAnEarlierLink) {
    readModel();
    click(*window, "btn_open");
    EXPECT_FALSE(isVisible("mark_model"));
    click(*window, "btn_open");
    EXPECT_TRUE(isVisible("mark_model"));
    readModel();
    EXPECT_FALSE(isVisible("mark_model"));
}

TEST_F(PanelValues, MarksVersionsOfAnotherAddress) {
    click(*window, "btn_appversion");
    ASSERT_TRUE(eventually([this] { return text(*window, "tv_appversion").startsWith("SDK"); }));
    EXPECT_FALSE(isVisible("mark_versions"));
    chooseCameraType(*window, "rb_dvl");
    EXPECT_TRUE(isVisible("mark_versions"));
}

// --- paths -------------------------------------------------------------------------------------------------

TEST(PathLabel, ShowsALongPathWithoutItsMiddle) {
    PathLabel label;
    label.setText("/firmware/" + QString(300, 'x') + "/app.bin");
    label.resize(200, 40);
    EXPECT_TRUE(label.shownPath().contains(QChar(u'…')));
    EXPECT_TRUE(label.shownPath().startsWith("/firm"));
    EXPECT_TRUE(label.shownPath().endsWith("app.bin"));
}

TEST(PathLabel, CopiesTheWholePath) {
    PathLabel label;
    label.setText("/firmware/app.bin");
    ASSERT_EQ(label.actions().size(), 1);
    EXPECT_EQ(label.actions().front()->text(), "复制路径");
    label.actions().front()->trigger();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), "/firmware/app.bin");
}
