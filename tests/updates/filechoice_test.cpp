// Choosing files, and starting an upload without one.
#include "tests/support/uploadwindow.h"

#include <QDir>
#include <QLabel>
#include <QLineEdit>

using namespace guitest;

namespace {

class FileChoice : public UploadWindow {
protected:
    [[nodiscard]] bool visible(const char* name) const { return find<QWidget>(*window, name)->isVisible(); }
};

TEST_F(FileChoice, ShowsEachDialogWithItsTextsAndLogsThePath) {
    open();
    struct Row {
        const WindowUpload& upload;
        const char* title;
        const char* filter;
        const char* logTag;
    };
    // The model's filter has no blank before its parenthesis.
    const std::vector<Row> rows{{appUpload, "打开app固件", "所有文件 (*.*)", "filepath:"},
                                {systemUpload, "打开系统固件", "所有文件 (*.*)", "filepath:"},
                                {modelUpload, "打开模型文件", "所有文件(*.*)", "model path:"}};
    for (const Row& row : rows) {
        const QString path = writeFile(QString("固件 of %1.bin").arg(row.upload.name), 3);
        const FileChooser chooser(path);
        click(*window, row.upload.pathButton);
        ASSERT_EQ(chooser.seen().size(), 1U);
        EXPECT_EQ(chooser.seen()[0].title, row.title);
        EXPECT_EQ(chooser.seen()[0].filters, QStringList(row.filter));
        EXPECT_EQ(chooser.seen()[0].parent, nullptr);
        EXPECT_TRUE(log.has(QString(row.logTag) + " " + path)) << row.title;
        EXPECT_EQ(text(*window, row.upload.pathLabel), path);
    }
}

TEST_F(FileChoice, ShowsThePathFrameWithTheFirstPath) {
    open();
    EXPECT_FALSE(visible("frame_path"));
    std::vector<const char*> shown;
    for (const WindowUpload* const upload : {&modelUpload, &appUpload, &systemUpload}) {
        EXPECT_FALSE(visible(upload->pathLabel));
        choose(*upload, writeFile(upload->name, 3));
        shown.push_back(upload->pathLabel);
        EXPECT_TRUE(visible("frame_path"));
        for (const char* const label : shown)
            EXPECT_TRUE(visible(label)) << label;
    }
}

TEST_F(FileChoice, KeepsThePathWhenTheDialogIsCancelled) {
    open();
    choose(systemUpload, {});
    EXPECT_FALSE(visible("frame_path"));
    const QString path = writeFile("first.bin", 3);
    choose(systemUpload, path);
    choose(systemUpload, {});
    EXPECT_EQ(text(*window, "label_firewarepath"), path);
    EXPECT_TRUE(visible("label_firewarepath"));
    const QString other = writeFile("second.bin", 3);
    choose(systemUpload, other);
    EXPECT_EQ(text(*window, "label_firewarepath"), other);
}

class NothingToUpload : public FileChoice, public testing::WithParamInterface<WindowUpload> {
protected:
    /// Presses the button and expects only that it is disabled.
    void pressForNothing() {
        BoxAnswerer boxes;
        click(*window, GetParam().updateButton);
        QTest::qWait(60);
        QStringList others = allExchanges();
        others.removeOne(GetParam().updateButton);
        EXPECT_EQ(enabledExchanges(), others);
        EXPECT_EQ(boxes.seen().size(), 0U);
        EXPECT_FALSE(log.has(GetParam().startLog));
        EXPECT_EQ(statusText(*window), "没有可升级的文件，请先选择文件");
        EXPECT_EQ(record().byteCount, 0U);
    }
};

INSTANTIATE_TEST_SUITE_P(Every, NothingToUpload,
                         testing::Values(appUpload, appUploadV1, systemUpload, modelUpload),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(NothingToUpload, DisablesThePressedButtonWithoutAFile) {
    if (GetParam().secondProtocol)
        useSecondProtocol(true);
    open();
    pressForNothing();
}

TEST_P(NothingToUpload, DisablesThePressedButtonForAVanishedFile) {
    if (GetParam().secondProtocol)
        useSecondProtocol(true);
    open();
    const QString path = writeFile("short-lived.bin", 3);
    choose(GetParam(), path);
    QFile::remove(path);
    pressForNothing();
}

TEST_P(NothingToUpload, DisablesThePressedButtonForAFolder) {
    if (GetParam().secondProtocol)
        useSecondProtocol(true);
    open();
    const QString path = writeFile("now-a-folder", 3);
    choose(GetParam(), path);
    QFile::remove(path);
    ASSERT_TRUE(QDir().mkdir(path));
    pressForNothing();
}

TEST_P(NothingToUpload, EnablesTheButtonAfterTheNextUpload) {
    open();
    click(*window, GetParam().updateButton);
    EXPECT_FALSE(isEnabled(*window, GetParam().updateButton));
    const bool modelItself = std::string(GetParam().name) == "Model";
    const WindowUpload& next = modelItself ? appUpload : modelUpload;
    start(next);
    EXPECT_FALSE(isEnabled(*window, GetParam().updateButton));
    EXPECT_EQ(outcome(), "升级已完成，结果:true");
    EXPECT_EQ(enabledExchanges(), allExchanges());
}

} // namespace
