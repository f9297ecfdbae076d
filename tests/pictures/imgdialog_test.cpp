// The window of one picture.
#include "pictures/imgdialog.h"
#include "tests/support/debuglog.h"
#include "tests/support/scriptedcamera.h"

#include <QFrame>
#include <QLabel>
#include <QPointer>
#include <QTest>

namespace {

using files::write;
using scripted::jpeg;

const QLabel* labelIn(const ImgDialog& dialog) {
    return dialog.findChild<QLabel*>();
}

const QString missingText = QStringLiteral("图片不存在或者图片数据错误");

} // namespace

TEST(ImgDialog, HasItsSizeAndPartsAndIsDeletedOnClose) {
    const DebugLog debug;
    const QPointer<ImgDialog> dialog(new ImgDialog);
    EXPECT_EQ(dialog->size(), QSize(600, 400));
    EXPECT_EQ(dialog->findChildren<QLabel*>().size(), 1);
    EXPECT_NE(dialog->findChild<QFrame*>("frame"), nullptr);
    dialog->showPicture("nothing");
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_FALSE(dialog->isModal());
    dialog->close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return dialog == nullptr; }));
    EXPECT_TRUE(DebugLog::hasStart("imgDialog destroyed"));
}

TEST(ImgDialog, FindsThePictureByItsNameWithoutSuffix) {
    files::write("258.jpg", jpeg(1200, 400, Qt::red));
    ImgDialog dialog;
    dialog.setAttribute(Qt::WA_DeleteOnClose, false);
    dialog.showPicture("258");
    EXPECT_GT(scripted::middle(labelIn(dialog)->pixmap()).red(), 240);
}

TEST(ImgDialog, ScalesThePictureKeepingItsShape) {
    files::write("258.jpg", jpeg(1200, 400, Qt::red));
    ImgDialog dialog;
    dialog.setAttribute(Qt::WA_DeleteOnClose, false);
    dialog.showPicture("258");
    EXPECT_EQ(labelIn(dialog)->pixmap().size(), QSize(600, 200));
    files::write("7.jpg", jpeg(100, 200, Qt::red));
    dialog.showPicture("7");
    EXPECT_EQ(labelIn(dialog)->pixmap().size(), QSize(200, 400));
}

TEST(ImgDialog, ShowsTheNewPictureOfANameThatWasShownBefore) {
    ImgDialog dialog;
    dialog.setAttribute(Qt::WA_DeleteOnClose, false);
    files::write("5.jpg", jpeg(60, 40, Qt::red));
    dialog.showPicture("5");
    files::write("5.jpg", jpeg(60, 40, Qt::blue)); // same second, quite possibly the same size
    dialog.showPicture("5");
    EXPECT_GT(scripted::middle(labelIn(dialog)->pixmap()).blue(), 240);
    EXPECT_LT(scripted::middle(labelIn(dialog)->pixmap()).red(), 20);
}

TEST(ImgDialog, ReportsAMissingOrBrokenPicture) {
    ImgDialog dialog;
    dialog.setAttribute(Qt::WA_DeleteOnClose, false);
    dialog.showPicture("5");
    EXPECT_EQ(labelIn(dialog)->text(), missingText);
    files::write("6.jpg", {});
    dialog.showPicture("6");
    EXPECT_EQ(labelIn(dialog)->text(), missingText);
    files::write("8.jpg", protocol::Bytes(500, 0xFF));
    dialog.showPicture("8");
    EXPECT_EQ(labelIn(dialog)->text(), missingText);
    dialog.showPicture(QString());
    EXPECT_EQ(labelIn(dialog)->text(), missingText);
}
