// The actions of the picture view: zoom, save, copy.
#include "pictures/imgdialog.h"
#include "tests/support/guitest.h"
#include "tests/support/scriptedcamera.h"

#include <QAction>
#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QToolButton>
#include <QWheelEvent>
#include <QtTest/qtestspontaneevent.h>

#include <gtest/gtest.h>

#include <map>
#include <utility>

namespace {

using protocol::Bytes;
using scripted::jpeg;

const QStringList buttonNames{"btn_previous", "btn_next",    "btn_zoom_in", "btn_zoom_out",
                              "btn_fit",      "btn_save_as", "btn_copy"};

/// A picture whose colour tells the place: red from left to right, green from top to bottom.
QImage placesPicture(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        auto* const line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < width; ++x)
            line[x] = qRgb(x * 255 / (width - 1), y * 255 / (height - 1), 0);
    }
    return image;
}

/// The same picture as a file. Kept: drawing and packing it take longer than a test.
QByteArray placesFile(int width, int height) {
    static std::map<std::pair<int, int>, QByteArray> files;
    QByteArray& content = files[{width, height}];
    if (content.isEmpty()) {
        QBuffer buffer(&content);
        buffer.open(QIODevice::WriteOnly);
        EXPECT_TRUE(placesPicture(width, height).save(&buffer, "PNG"));
    }
    return content;
}

/// Of a picture, per mille of its width and height.
struct Section {
    int left;
    int top;
    int right;
    int bottom;
};

class PictureView : public testing::Test {
protected:
    PictureView() { dialog.setAttribute(Qt::WA_DeleteOnClose, false); }

    void showPlaces(int width = 1200, int height = 800) {
        QFile file("5.png");
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(placesFile(width, height));
        file.close();
        dialog.showPicture("5");
        dialog.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    }
    [[nodiscard]] QLabel* label() const { return dialog.findChild<QLabel*>(); }
    [[nodiscard]] QImage shown() const { return label()->pixmap().toImage(); }
    void press(const char* name, int times = 1) {
        for (int i = 0; i < times; ++i)
            guitest::click(dialog, name);
    }
    void type(Qt::Key key, int times = 1) {
        for (int i = 0; i < times; ++i)
            QTest::keyClick(&dialog, key);
    }
    void turnWheel(QPoint place, int angle, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QWheelEvent event(place, label()->mapToGlobal(place), {}, {0, angle}, Qt::NoButton, modifiers,
                          Qt::NoScrollPhase, false);
        QSpontaneKeyEvent::setSpontaneous(&event); // others do not reach the dialog
        qApp->notify(label(), &event);
    }
    [[nodiscard]] bool enabled(const char* name) const { return guitest::isEnabled(dialog, name); }

    /// The label shows this part of the picture of places.
    void expectSection(const Section& expected) const {
        const QImage image = shown();
        const QColor first = image.pixelColor(0, 0);
        const QColor last = image.pixelColor(image.width() - 1, image.height() - 1);
        constexpr double tolerance = 6; // one level of colour, and a picture's edge
        EXPECT_NEAR(first.red() * 1000 / 255, expected.left, tolerance);
        EXPECT_NEAR(first.green() * 1000 / 255, expected.top, tolerance);
        EXPECT_NEAR(last.red() * 1000 / 255, expected.right, tolerance);
        EXPECT_NEAR(last.green() * 1000 / 255, expected.bottom, tolerance);
    }

    ImgDialog dialog;
};

constexpr Section whole{0, 0, 1000, 1000};
constexpr Section middleHalf{250, 250, 750, 750};

} // namespace

TEST_F(PictureView, AddsToolButtonsOnly) {
    EXPECT_EQ(dialog.findChildren<QLabel*>().size(), 1);
    EXPECT_TRUE(dialog.findChildren<QPushButton*>().isEmpty());
    QStringList names;
    for (const QToolButton* const button : dialog.findChildren<QToolButton*>()) {
        names.append(button->objectName());
        EXPECT_FALSE(button->toolTip().isEmpty());
        EXPECT_EQ(button->accessibleName(), button->text());
    }
    EXPECT_EQ(names, buttonNames);
}

TEST_F(PictureView, ButtonsLieOnTheLowerEdge) {
    showPlaces();
    EXPECT_EQ(label()->geometry().size(), QSize(600, 400));
    for (const QString& name : buttonNames) {
        const auto* const button = dialog.findChild<QToolButton*>(name);
        const QRect place(button->mapTo(&dialog, QPoint()), button->size());
        EXPECT_TRUE(dialog.rect().contains(place)) << name.toStdString();
        EXPECT_GT(place.top(), 350) << name.toStdString();
        EXPECT_EQ(dialog.childAt(place.center()), button) << name.toStdString();
    }
}

TEST_F(PictureView, MenuHasTheActionsOfTheButtons) {
    showPlaces();
    QContextMenuEvent event(QContextMenuEvent::Mouse, {30, 30}, dialog.mapToGlobal(QPoint(30, 30)));
    QApplication::sendEvent(&dialog, &event);
    auto* const menu = dialog.findChild<QMenu*>();
    ASSERT_NE(menu, nullptr);
    EXPECT_TRUE(menu->isVisible());
    QList<QAction*> actions;
    for (const QString& name : buttonNames)
        actions.append(dialog.findChild<QToolButton*>(name)->defaultAction());
    EXPECT_EQ(menu->actions(), actions);
    menu->close();
    EXPECT_TRUE(guitest::eventually([this] { return dialog.findChild<QMenu*>() == nullptr; }));
}

TEST_F(PictureView, ButtonsZoom) {
    showPlaces();
    expectSection(whole);
    press("btn_zoom_in", 2);
    EXPECT_EQ(shown().size(), QSize(600, 400));
    expectSection(middleHalf);
    press("btn_zoom_in", 2);
    expectSection({375, 375, 625, 625});
    press("btn_zoom_out", 2);
    expectSection(middleHalf);
}

TEST_F(PictureView, KeysZoom) {
    showPlaces();
    for (const auto& [larger, smaller] :
         {std::pair{Qt::Key_Plus, Qt::Key_Minus}, {Qt::Key_Equal, Qt::Key_Minus}}) {
        type(larger, 2);
        expectSection(middleHalf);
        type(smaller, 2);
        expectSection(whole);
    }
    type(Qt::Key_Plus, 5);
    type(Qt::Key_0);
    expectSection(whole);
}

TEST_F(PictureView, WheelKeepsThePlaceUnderTheMouse) {
    for (const auto modifiers : {Qt::NoModifier, Qt::ControlModifier}) {
        showPlaces();
        turnWheel({0, 0}, 240, modifiers);
        expectSection({0, 0, 500, 500});
        turnWheel({599, 399}, 240, modifiers);
        expectSection({250, 250, 500, 500});
        turnWheel({300, 200}, -480, modifiers);
        expectSection(whole);
    }
}

TEST_F(PictureView, SmallTurnsOfTheWheelAddUp) {
    showPlaces();
    for (int i = 0; i < 15; ++i)
        turnWheel({300, 200}, 15);
    expectSection({146, 146, 854, 854});
    turnWheel({300, 200}, 15);
    expectSection(middleHalf);
}

TEST_F(PictureView, FitShowsThePictureAsAtFirst) {
    showPlaces();
    const QImage before = shown();
    press("btn_zoom_in", 3);
    EXPECT_NE(shown(), before);
    press("btn_fit");
    EXPECT_EQ(shown(), before);
}

TEST_F(PictureView, ZoomEndsAtSixteenTimes) {
    showPlaces();
    EXPECT_FALSE(enabled("btn_zoom_out"));
    EXPECT_FALSE(enabled("btn_fit"));
    press("btn_zoom_in", 8);
    EXPECT_FALSE(enabled("btn_zoom_in"));
    expectSection({469, 469, 531, 531});
    turnWheel({0, 0}, 1200);
    expectSection({469, 469, 531, 531});
    turnWheel({0, 0}, -12000);
    expectSection(whole);
    EXPECT_TRUE(enabled("btn_zoom_in"));
}

TEST_F(PictureView, ArrowsPanUpToTheEdges) {
    showPlaces();
    press("btn_zoom_in", 2);
    type(Qt::Key_Right, 3); // 40 of 1200 each
    expectSection({350, 250, 850, 750});
    type(Qt::Key_Down);
    expectSection({350, 300, 850, 800});
    type(Qt::Key_Left, 40);
    type(Qt::Key_Up, 40);
    expectSection({0, 0, 500, 500});
    type(Qt::Key_Right, 40);
    type(Qt::Key_Down, 40);
    expectSection({500, 500, 1000, 1000});
}

TEST_F(PictureView, DragMovesThePictureUpToTheEdges) {
    showPlaces();
    press("btn_zoom_in", 2);
    QTest::mousePress(label(), Qt::LeftButton, {}, {300, 200});
    QTest::mouseMove(label(), {360, 240});
    expectSection({200, 200, 700, 700});
    QTest::mouseMove(label(), {2000, 2000});
    expectSection({0, 0, 500, 500});
    QTest::mouseRelease(label(), Qt::LeftButton, {}, {2000, 2000});
    QTest::mousePress(label(), Qt::MiddleButton, {}, {300, 200});
    QTest::mouseMove(label(), {100, 100});
    QTest::mouseRelease(label(), Qt::MiddleButton, {}, {100, 100});
    expectSection({0, 0, 500, 500});
}

TEST_F(PictureView, WholePictureCannotBeDragged) {
    showPlaces();
    const QImage before = shown();
    QTest::mousePress(label(), Qt::LeftButton, {}, {300, 200});
    QTest::mouseMove(label(), {100, 100});
    QTest::mouseRelease(label(), Qt::LeftButton, {}, {100, 100});
    type(Qt::Key_Right);
    EXPECT_EQ(shown(), before);
}

TEST_F(PictureView, SectionOfATallPictureFillsTheHeight) {
    showPlaces(400, 800);
    EXPECT_EQ(shown().size(), QSize(200, 400));
    press("btn_zoom_in", 2);
    EXPECT_EQ(shown().size(), QSize(400, 400));
    expectSection({0, 250, 1000, 750});
    press("btn_zoom_in", 2);
    EXPECT_EQ(shown().size(), QSize(600, 400));
}

TEST_F(PictureView, SectionFillsALargerWindow) {
    showPlaces();
    press("btn_zoom_in", 2);
    dialog.resize(900, 600);
    EXPECT_EQ(shown().size(), QSize(900, 600));
    expectSection({125, 125, 875, 875});
    dialog.resize(600, 400);
    EXPECT_EQ(dialog.size(), QSize(600, 400));
    expectSection(middleHalf);
}

TEST_F(PictureView, SectionHasThePixelsOfTheScreen) {
    PictureZoom zoom;
    zoom.setPicture(QPixmap::fromImage(placesPicture(1200, 800)));
    zoom.zoom(2, {}, {600, 400});
    const QPixmap section = zoom.visible({600, 400}, 2);
    EXPECT_EQ(section.size(), QSize(1200, 800));
    EXPECT_EQ(section.deviceIndependentSize(), QSizeF(600, 400));
    EXPECT_NEAR(section.toImage().pixelColor(1199, 0).red(), 191, 2);
}

TEST_F(PictureView, NextPictureIsShownWhole) {
    showPlaces();
    press("btn_zoom_in", 4);
    files::write("6.jpg", jpeg(300, 200, Qt::blue));
    dialog.showPicture("6");
    EXPECT_GT(scripted::middle(label()->pixmap()).blue(), 240);
    EXPECT_FALSE(enabled("btn_fit"));
}

TEST_F(PictureView, MissingPictureLeavesItsNeighbours) {
    showPlaces();
    press("btn_zoom_in");
    dialog.setNeighbours(true, false);
    dialog.showPicture(QString());
    for (const char* const name : {"btn_zoom_in", "btn_zoom_out", "btn_fit", "btn_save_as", "btn_copy"})
        EXPECT_FALSE(enabled(name)) << name;
    EXPECT_TRUE(enabled("btn_previous"));
    EXPECT_FALSE(enabled("btn_next"));
    turnWheel({300, 200}, 120);
    EXPECT_EQ(label()->text(), "图片不存在或者图片数据错误");
}

TEST_F(PictureView, AsksForNeighboursByButtonsAndKeys) {
    showPlaces();
    std::vector<int> steps;
    QObject::connect(&dialog, &ImgDialog::neighbourWanted, [&](int step) { steps.push_back(step); });
    type(Qt::Key_PageDown);
    EXPECT_TRUE(steps.empty());
    dialog.setNeighbours(true, true);
    press("btn_next");
    press("btn_previous");
    type(Qt::Key_PageDown);
    type(Qt::Key_PageUp);
    EXPECT_EQ(steps, (std::vector{1, -1, 1, -1}));
}

TEST_F(PictureView, EscapeCloses) {
    showPlaces();
    press("btn_zoom_in");
    type(Qt::Key_Escape);
    EXPECT_FALSE(dialog.isVisible());
}

TEST_F(PictureView, CopiesTheWholePicture) {
    showPlaces();
    press("btn_zoom_in", 4);
    press("btn_copy");
    EXPECT_EQ(QGuiApplication::clipboard()->image().convertToFormat(QImage::Format_RGB32),
              placesPicture(1200, 800));
}

class PictureViewSave : public PictureView {
protected:
    void save(const QString& path) {
        const guitest::FileChooser chooser(path);
        QTest::keyClick(&dialog, Qt::Key_S, Qt::ControlModifier);
        ASSERT_TRUE(guitest::eventually([&] { return !chooser.seen().empty(); }));
        EXPECT_EQ(chooser.seen()[0].title, "保存图片");
        EXPECT_EQ(chooser.seen()[0].parent, &dialog);
    }
    void showJpeg(const Bytes& content) {
        files::write("33.jpg", content);
        dialog.showPicture("33");
        dialog.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    }

    const Bytes picture = jpeg(300, 200, Qt::red);
    const QString target = QDir::current().filePath("kept.jpg");
};

TEST_F(PictureViewSave, SuggestsTheNameOfTheFile) {
    showJpeg(picture);
    press("btn_save_as");
    auto* const chooser = dialog.findChild<QFileDialog*>();
    ASSERT_NE(chooser, nullptr);
    EXPECT_EQ(chooser->acceptMode(), QFileDialog::AcceptSave);
    EXPECT_EQ(QFileInfo(chooser->selectedFiles().value(0)).fileName(), "33.jpg");
    EXPECT_EQ(chooser->windowModality(), Qt::WindowModal);
    chooser->close();
}

TEST_F(PictureViewSave, WritesTheBytesOfTheFile) {
    Bytes content = picture;
    content.insert(content.end(), {1, 2, 3}); // behind the end of the picture
    showJpeg(content);
    save(target);
    EXPECT_TRUE(guitest::eventually([&] { return files::read("kept.jpg") == content; }));
}

TEST_F(PictureViewSave, WritesWhatIsShownThoughTheFileIsReplaced) {
    showJpeg(picture);
    files::write("33.jpg", jpeg(300, 200, Qt::blue));
    save(target);
    EXPECT_TRUE(guitest::eventually([&] { return files::read("kept.jpg") == picture; }));
}

TEST_F(PictureViewSave, WritesWhatIsShownThoughTheFileIsGone) {
    showJpeg(picture);
    QFile::remove("33.jpg");
    save(target);
    EXPECT_TRUE(guitest::eventually([&] { return files::read("kept.jpg") == picture; }));
}

TEST_F(PictureViewSave, AsksBeforeAFileIsReplaced) {
    files::write("kept.jpg", {1});
    showJpeg(picture);
    press("btn_save_as");
    auto* const chooser = dialog.findChild<QFileDialog*>();
    guitest::find<QWidget>(*chooser, "fileNameEdit")->setProperty("text", target);
    guitest::BoxAnswerer boxes(QMessageBox::No);
    QMetaObject::invokeMethod(chooser, "accept");
    EXPECT_EQ(boxes.seen().size(), 1U);
    EXPECT_EQ(files::read("kept.jpg"), Bytes{1});
    chooser->close();
}

TEST_F(PictureViewSave, TellsThatAFolderCannotBeWritten) {
    showJpeg(picture);
    const UnwritableDirectory here;
    guitest::BoxAnswerer boxes;
    save(target);
    ASSERT_TRUE(boxes.waitFor(1));
    EXPECT_EQ(boxes.seen()[0].title, "保存图片");
    EXPECT_FALSE(boxes.seen()[0].details.isEmpty());
    EXPECT_EQ(boxes.seen()[0].text, "图片没有保存，请换一个文件夹") << boxes.seen()[0].text.toStdString();
    EXPECT_EQ(files::read("kept.jpg"), std::nullopt);
    EXPECT_TRUE(dialog.isVisible());
}
