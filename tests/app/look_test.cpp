// The windows on a small screen, at twice the size of texts, and in a dark style.
#include "app/mainwindow.h"
#include "tests/support/guitest.h"
#include "tests/support/recordedwindow.h"

#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QPalette>
#include <QPushButton>
#include <QStyleFactory>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

using namespace guitest;

namespace {

constexpr QSize smallScreen(1280, 680);  // without title and task bar
constexpr QSize scaledScreen(1092, 535); // 1366 x 768 at 125 %, likewise
constexpr double readableContrast = 4.5; // of texts on their ground
constexpr double visibleContrast = 3;    // of hints

/// From 0 (black) to 1, as the eye weighs colours.
double luminance(const QColor& color) {
    const auto channel = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(color.redF()) + 0.7152 * channel(color.greenF()) +
           0.0722 * channel(color.blueF());
}

/// Between the lightest and the darkest pixel of a widget that shows a text.
double contrast(QWidget* widget) {
    const QImage image = widget->grab().toImage();
    double lightest = 0;
    double darkest = 1;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const double here = luminance(image.pixelColor(x, y));
            lightest = std::max(lightest, here);
            darkest = std::min(darkest, here);
        }
    }
    return (lightest + 0.05) / (darkest + 0.05);
}

class Look : public RecordedPorts {};

} // namespace

TEST_F(Look, FitsASmallScreenAt125PerCentAtFirst) {
    const MainWindow window;
    EXPECT_LE(window.width(), scaledScreen.width());
    EXPECT_LE(window.height(), scaledScreen.height());
}

TEST_F(Look, ColumnsLineUpFromTopToBottom) {
    MainWindow window;
    window.show();
    for (const QSize size : {QSize(728, 520), QSize(1060, 528), QSize(1601, 900)}) {
        window.resize(size);
        QApplication::processEvents();
        ASSERT_EQ(window.size(), size);
        const auto left = [&window](const char* name) {
            return find<QWidget>(window, name)->mapTo(&window, QPoint()).x();
        };
        EXPECT_EQ(left("frame"), left("label"));
        EXPECT_NEAR(left("frame_3"), left("frame_7"), 1) << size.width();
        EXPECT_NEAR(left("btn_apppath"), left("btn_modelinfo"), 1) << size.width();
        EXPECT_NEAR(left("hint_nopath"), left("btn_modelpath"), 2) << size.width();
    }
}

TEST_F(Look, ButtonsAreOfOneHeightAndWiderThanTheirTexts) {
    const QFont systemFont = QApplication::font();
    for (const double size : {1.0, 1.5, 2.0}) {
        QFont font = systemFont;
        font.setPointSizeF(systemFont.pointSizeF() * size);
        QApplication::setFont(font);
        MainWindow window;
        window.resize(728, 520); // or as small as it gets
        window.show();
        const int height = find<QWidget>(window, "btn_open")->height();
        for (const QPushButton* const button : window.centralWidget()->findChildren<QPushButton*>()) {
            EXPECT_EQ(button->height(), height) << button->objectName().toStdString() << " at " << size;
            EXPECT_GE(button->height(), button->fontMetrics().height() + 4);
            EXPECT_GE(button->width(), button->fontMetrics().horizontalAdvance(button->text()) + 18)
                << button->objectName().toStdString() << " at " << size;
        }
    }
    QApplication::setFont(systemFont);
}

TEST_F(Look, ChosenFilesMoveNoOtherPanel) {
    MainWindow window;
    window.show();
    const std::array panels{"label", "frame_7", "frame", "frame_2", "frame_3"};
    std::vector<QRect> places;
    for (const char* const name : panels)
        places.push_back(find<QWidget>(window, name)->geometry());
    find<QWidget>(window, "frame_nopath")->hide();
    find<QWidget>(window, "frame_path")->show();
    for (const char* const name : {"label_apppath", "label_firewarepath", "label_modelpath"}) {
        find<QLabel>(window, name)->setText("/a/rather/long/path/" + QString(300, 'x'));
        find<QLabel>(window, name)->show();
    }
    QApplication::processEvents();
    for (std::size_t index = 0; index < panels.size(); ++index)
        EXPECT_EQ(find<QWidget>(window, panels.at(index))->geometry(), places[index]) << panels.at(index);
}

TEST_F(Look, EveryWindowFitsASmallScreen) {
    MainWindow window;
    window.show();
    for (const char* const entry : menuWindows)
        trigger(window, entry);
    std::size_t looked = 0;
    for (const QWidget* const top : QApplication::topLevelWidgets()) {
        if (!top->isVisible())
            continue;
        EXPECT_LE(top->width(), smallScreen.width()) << top->metaObject()->className();
        EXPECT_LE(top->height(), smallScreen.height()) << top->metaObject()->className();
        EXPECT_LE(top->minimumSizeHint().height(), smallScreen.height()) << top->metaObject()->className();
        ++looked;
    }
    EXPECT_EQ(looked, 1 + menuWindows.size());
}

TEST_F(Look, PictureTakesTheHeightThatIsLeft) {
    MainWindow window;
    window.resize(1120, 640);
    window.show();
    const auto* const picture = find<QLabel>(window, "label");
    const QSize small = picture->size();
    window.resize(1270, 680);
    QApplication::processEvents();
    EXPECT_EQ(picture->size(), small + QSize(75, 40));
}

TEST_F(Look, PictureKeepsItsPlaceWhenEmpty) {
    MainWindow window;
    window.resize(1270, 680);
    window.show();
    const auto* const picture = find<QLabel>(window, "label");
    QApplication::processEvents();
    const QRect place = picture->geometry();
    find<QLabel>(window, "label")->setPixmap(QPixmap(2000, 2000));
    QApplication::processEvents();
    EXPECT_EQ(picture->geometry(), place);
    find<QLabel>(window, "label")->clear();
    QApplication::processEvents();
    EXPECT_EQ(picture->geometry(), place);
}

TEST_F(Look, TextsStayReadableInALightAndInADarkStyle) {
    QApplication::setStyle(QStyleFactory::create("Fusion"));
    for (const QColor& ground : {QColor(0xf0, 0xf0, 0xf0), QColor(0x2b, 0x2b, 0x2b)}) {
        QApplication::setPalette(QPalette(ground));
        MainWindow window;
        window.show();
        click(window, "btn_open");
        for (const char* const name : {"btn_open", "btn_heartbeat", "label_slaveinfo", "label_link"})
            EXPECT_GT(contrast(find<QWidget>(window, name)), readableContrast)
                << name << " on " << ground.name().toStdString();
        EXPECT_GT(contrast(find<QWidget>(window, "label")), visibleContrast) << ground.name().toStdString();
        const QImage image = window.grab().toImage();
        const double corner = luminance(image.pixelColor(3, image.height() - 3));
        EXPECT_EQ(corner > 0.5, ground.lightness() > 128) << "the window follows the style";
    }
}
