// A picture list window of either generation on the recording serial library.
#pragma once

#include "pictures/imgdialog.h"
#include "pictures/piclist.h"
#include "pictures/piclistv1.h"
#include "pictures/picturelistmodel.h"
#include "tests/support/debuglog.h"
#include "tests/support/scriptedcamera.h"
#include "tests/support/testclock.h"

#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTest>

namespace picturelist {

inline constexpr int speed = 10; ///< of delays
inline const QString missingText = QStringLiteral("图片不存在或者图片数据错误");

/// Differences of the two generations.
struct Generation {
    const char* name;
    PictureListWindow* (*make)(QWidget* parent, CameraSp* client);
    QString title;
    QString captureButton;
    QStringList headers;
    std::uint8_t capture;
    std::uint8_t catalogue;
    std::uint8_t deletion;
    std::uint8_t download;
    std::string record;
    std::size_t sizeAt;
    const char* file;
    std::string deleteAllFrame;
    std::string deleteFrame; ///< of `record`
    std::string deleteFrameOfHighestId;
    std::string downloadPayload; ///< of `record` with a size of 0
};

inline void PrintTo(const Generation& generation, std::ostream* out) {
    *out << generation.name;
}

template <typename Window>
PictureListWindow* make(QWidget* parent, CameraSp* client) {
    return new Window(parent, client);
}

inline const Generation origin{
    .name = "Origin",
    .make = &make<PicList>,
    .title = "查看排面图片",
    .captureButton = "btn_takepic",
    .headers = {"图片id", "触发方式", "触发角度", "创建时间", "文件大小", "MD5"},
    .capture = 0x06,
    .catalogue = 0x07,
    .deletion = 0x08,
    .download = 0x09,
    .record = scripted::originRecord,
    .sizeAt = 7,
    .file = "5.jpg",
    .deleteAllFrame = "AA 5A 01 08 01 00 00 00 FF 4C AC",
    .deleteFrame = "AA 5A 01 08 01 00 00 00 05 19 E2",
    .deleteFrameOfHighestId = "AA 5A 01 08 01 00 00 00 FF 4C AC",
    .downloadPayload = "05 00 00 00 00",
};

inline const Generation v1{
    .name = "V1",
    .make = &make<PicListV1>,
    .title = "查看动销图片",
    .captureButton = "btn_capture",
    .headers = {"图片id", "actionid", "触发方式", "触发角度", "创建时间", "图片大小", "MD5"},
    .capture = 0xC6,
    .catalogue = 0xC7,
    .deletion = 0xC8,
    .download = 0xC9,
    .record = scripted::v1Record,
    .sizeAt = 13,
    .file = "258.jpg",
    .deleteAllFrame = "AA 5A 01 C8 02 00 00 00 FF FF 63 9E",
    .deleteFrame = "AA 5A 01 C8 07 00 00 00 02 01 03 D7 34 01 07 E0 3B",
    .deleteFrameOfHighestId = "AA 5A 01 C8 02 00 00 00 FF FF 63 9E",
    .downloadPayload = "02 01 00 00 00 00",
};

class PictureListTest : public scripted::PictureTest, public testing::WithParamInterface<Generation> {
protected:
    PictureListTest() {
        clock.speedUp(speed);
        clock.skipPauses();
        window = generation.make(nullptr, &client);
        window->show();
    }
    ~PictureListTest() override { delete window.data(); }

    [[nodiscard]] QPushButton* button(const QString& name) const {
        return window->findChild<QPushButton*>(name);
    }
    [[nodiscard]] QListView* list() const { return window->findChild<QListView*>("listview"); }
    [[nodiscard]] PictureListModel* model() const { return window->findChild<PictureListModel*>(); }
    [[nodiscard]] QMessageBox* box() const { return window->findChild<QMessageBox*>(); }
    [[nodiscard]] QMenu* menu() const { return window->findChild<QMenu*>(); }
    [[nodiscard]] ImgDialog* viewer() const { return window->findChild<ImgDialog*>(); }

    [[nodiscard]] protocol::Bytes record(std::uint8_t idLow, std::uint32_t size = 20) const {
        return scripted::record(generation.record, generation.sizeAt, idLow, size);
    }

    /// Lists these records; newRequests() starts here.
    void fill(const std::vector<protocol::Bytes>& records) {
        camera.willList(generation.catalogue, records);
        button("btn_refresh")->click();
        ASSERT_EQ(model()->rowCount(), static_cast<int>(records.size()));
        asked = camera.codes().size();
    }

    /// Frames since `fill`.
    [[nodiscard]] std::vector<std::string> newRequests() const {
        std::vector<std::string> all = camera.requests();
        all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(asked));
        return all;
    }

    void rightClick(int row) const {
        list()->setCurrentIndex(model()->index(row, 0));
        emit list()->customContextMenuRequested(QPoint(30, 24 * row + 12));
    }

    [[nodiscard]] QAction* action(const QString& text) const {
        for (QAction* each : menu()->actions()) {
            if (each->text() == text)
                return each;
        }
        return nullptr;
    }

    void closeWindow() {
        window->close();
        ASSERT_TRUE(QTest::qWaitFor([this] { return window == nullptr; }));
    }

    const Generation& generation = GetParam();
    TestClock clock;
    CameraSp client{"COM9", 460800, clock};
    QPointer<PictureListWindow> window;
    std::size_t asked = 0;
    DebugLog debug;
};

} // namespace picturelist
