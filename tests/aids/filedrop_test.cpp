// Files dropped on the main window, and the facts of chosen files.
#include "aids/imagefile.h"
#include "tests/support/guitest.h"
#include "tests/support/recordedwindow.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QToolTip>
#include <QUrl>

using namespace guitest;

namespace {

QString makeFile(const QString& name) {
    QFile file(name);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write("abc") == 3);
    return QDir::current().filePath(name);
}

class FileDropTest : public RecordedWindow {
protected:
    bool hover(const QStringList& paths) {
        setUrls(paths);
        QDragEnterEvent event(QPoint(50, 50), Qt::CopyAction, &m_data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window.get(), &event);
        return event.isAccepted();
    }
    bool drop(const QStringList& paths) {
        hover(paths);
        QDropEvent event(QPointF(50, 50), Qt::CopyAction, &m_data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window.get(), &event);
        return event.isAccepted();
    }

private:
    void setUrls(const QStringList& paths) {
        QList<QUrl> urls;
        for (const QString& path : paths)
            urls.append(QUrl::fromLocalFile(path));
        m_data.setUrls(urls);
    }

    QMimeData m_data;
};

TEST(ImageFile, KindIsThatOfTheName) {
    EXPECT_EQ(imageKindOf("/a/shelf-app-1.2.bin"), ImageKind::app);
    EXPECT_EQ(imageKindOf("Rootfs.img"), ImageKind::fireware);
    EXPECT_EQ(imageKindOf("cola.tflite"), ImageKind::model);
    EXPECT_EQ(imageKindOf("/app/image.bin"), std::nullopt) << "the folder does not count";
    EXPECT_EQ(imageKindOf("app-model.bin"), std::nullopt);
}

TEST(ImageFile, FactsAreSizeTimeAndMd5) {
    const QString path = makeFile("app.bin");
    const QStringList facts = imageFacts(path, md5Of(path)).split('\n');
    ASSERT_EQ(facts.size(), 4);
    EXPECT_EQ(facts[0], path);
    EXPECT_EQ(facts[1], "大小：3 字节");
    EXPECT_TRUE(facts[2].startsWith("修改时间：20"));
    EXPECT_EQ(facts[3], "MD5：900150983cd24fb0d6963f7d28e17f72");
    EXPECT_EQ(imageFacts("missing", md5Of("missing")), "missing\n文件无法读取，请重新选择");
}

TEST_F(FileDropTest, TellsTheKindAndTakesTheFile) {
    click(*window, "btn_open");
    const QString path = makeFile("app.bin");
    EXPECT_TRUE(hover({path}));
    EXPECT_EQ(QToolTip::text(), "松开后选为app固件");
    EXPECT_TRUE(drop({path}));
    EXPECT_EQ(text(*window, "label_apppath"), path);
    EXPECT_TRUE(eventually(
        [&] { return find<QLabel>(*window, "label_apppath")->toolTip() == imageFacts(path, md5Of(path)); }));
    EXPECT_EQ(text(*window, "label_modelpath"), "");
}

TEST_F(FileDropTest, AsksForTheKindWhenTheNameDoesNotTell) {
    click(*window, "btn_open");
    const QString path = makeFile("image.bin");
    EXPECT_TRUE(hover({path}));
    EXPECT_EQ(QToolTip::text(), "松开后询问用于哪种升级");
    EXPECT_TRUE(drop({path}));
    auto* const box = window->findChild<QMessageBox*>();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->text(), "“image.bin”用于哪种升级？");
    for (QAbstractButton* const button : box->buttons()) {
        if (button->text() == "系统固件")
            button->click();
    }
    EXPECT_EQ(text(*window, "label_firewarepath"), path);
}

TEST_F(FileDropTest, CancelledQuestionChoosesNothing) {
    click(*window, "btn_open");
    drop({makeFile("image.bin")});
    auto* const box = window->findChild<QMessageBox*>();
    ASSERT_NE(box, nullptr);
    box->button(QMessageBox::Cancel)->click();
    for (const char* const label : {"label_apppath", "label_firewarepath", "label_modelpath"})
        EXPECT_EQ(text(*window, label), "");
}

TEST_F(FileDropTest, RefusesFoldersAndSeveralFiles) {
    click(*window, "btn_open");
    EXPECT_FALSE(hover({QDir::currentPath()}));
    EXPECT_FALSE(drop({makeFile("app.bin"), makeFile("model.bin")}));
    EXPECT_EQ(text(*window, "label_apppath"), "");
}

TEST_F(FileDropTest, RefusesFilesWithoutALink) {
    const QString path = makeFile("app.bin");
    EXPECT_FALSE(hover({path}));
    EXPECT_EQ(QToolTip::text(), "现在不能选择文件：请先打开串口，或等待当前操作结束");
    EXPECT_FALSE(drop({path}));
    EXPECT_EQ(text(*window, "label_apppath"), "");
}

} // namespace
