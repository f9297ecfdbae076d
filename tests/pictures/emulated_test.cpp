// The take-picture flow and the list windows with the real serial library and a virtual camera.
#include "app/captureflow.h"
#include "pictures/imgdialog.h"
#include "pictures/piclist.h"
#include "pictures/piclistv1.h"
#include "pictures/picturelistmodel.h"
#include "tests/support/cameratype.h"
#include "tests/support/debuglog.h"
#include "tests/support/stdoutcapture.h"
#include "tests/support/testfront.h"
#include "tests/support/workingdirectory.h"

#include <QFile>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

using namespace std::chrono_literals;

namespace {

using emulator::CameraType;
using emulator::VirtualCamera;
using protocol::Bytes;

constexpr int enoughMs = 20000;

class EmulatedPictures : public testing::Test {
protected:
    ~EmulatedPictures() override { unplug(); }

    void plug(CameraType type) {
        front = std::make_unique<TestFront>(type);
        client = std::make_unique<CameraSp>(front->portName(), 460800);
        client->setSlaveAddress(
            front->withCamera([](VirtualCamera& camera) { return camera.settings().address; }));
        flow.attachClient(client.get());
    }

    void unplug() {
        flow.attachClient(nullptr);
        if (client != nullptr) {
            client->requestStop();
            client->waitUntilUnused();
        }
        client.reset();
        front.reset();
    }

    [[nodiscard]] Bytes held(std::size_t place) {
        return front->withCamera(
            [&](VirtualCamera& camera) { return camera.state().pictures.at(place).jpeg; });
    }
    [[nodiscard]] std::size_t heldCount() {
        return front->withCamera([](VirtualCamera& camera) { return camera.state().pictures.size(); });
    }
    void hold(std::uint16_t id, const Bytes& jpeg) {
        front->withCamera([&](VirtualCamera& camera) {
            camera.state().pictures.push_back(emulator::makePicture(id, jpeg));
        });
    }
    void addFault(const char* text) {
        front->withCamera([text](VirtualCamera& camera) { camera.addFault(text); });
    }
    /// A picture as the camera takes it.
    [[nodiscard]] Bytes drawn() {
        return front->withCamera([](VirtualCamera& camera) { return camera.settings().drawPicture(1, 1); });
    }
    /// Starts the flow and waits until it enables the controls.
    [[nodiscard]] bool take(std::uint32_t type) {
        controlsFree = true;
        flow.start(type);
        return QTest::qWaitFor([this] { return controlsFree; }, enoughMs);
    }
    void expectCleanLine() {
        front->withCamera([](VirtualCamera& camera) {
            EXPECT_EQ(camera.record().badFrames, 0U);
            EXPECT_EQ(camera.record().garbageBytes, 0U);
        });
    }

    std::unique_ptr<TestFront> front;
    std::unique_ptr<CameraSp> client;
    StdoutCapture out;
    DebugLog debug;
    QLabel label;
    bool controlsFree = true;
    CaptureFlow flow{&label, [this](bool allowed) { controlsFree = allowed; }};
};

/// Actions of a user in a list window.
template <typename Window>
class EmulatedList {
public:
    explicit EmulatedList(CameraSp* client) : window(nullptr, client) {
        window.setAttribute(Qt::WA_DeleteOnClose, false);
        window.show();
    }

    void press(const char* name) { window.template findChild<QPushButton*>(name)->click(); }
    void choose(int row, const QString& entry) {
        auto* list = window.template findChild<QListView*>("listview");
        list->setCurrentIndex(model()->index(row, 0));
        emit list->customContextMenuRequested(QPoint(5, 5));
        for (QAction* action : window.template findChildren<QMenu*>().back()->actions()) {
            if (action->text() == entry)
                action->trigger();
        }
    }
    [[nodiscard]] PictureListModel* model() const { return window.template findChild<PictureListModel*>(); }
    [[nodiscard]] QLabel* shown() const {
        const auto viewers = window.template findChildren<ImgDialog*>();
        return viewers.isEmpty() ? nullptr : viewers.back()->template findChild<QLabel*>();
    }

    Window window;
};

} // namespace

TEST_F(EmulatedPictures, TakesShowsAndStoresAFirstGenerationPicture) {
    plug(CameraType::ostra);
    hold(40, drawn()); // deleted before the capture
    ASSERT_TRUE(take(cameratype::ostra));
    ASSERT_EQ(heldCount(), 1U);
    EXPECT_EQ(files::read("33.jpg"), held(0));
    EXPECT_FALSE(label.pixmap().isNull());
    expectCleanLine();
}

TEST_F(EmulatedPictures, ReadsSecondGenerationPicturesByTheLowIdByte) {
    plug(CameraType::salesDynamic);
    front->withCamera([](VirtualCamera& camera) {
        camera.state().nextPictureId = 258;
        camera.settings().v1ReadMatchesLowByte = true;
    });
    ASSERT_TRUE(take(cameratype::shelfDynamic));
    ASSERT_EQ(heldCount(), 1U);
    EXPECT_EQ(files::read("2.jpg"), held(0));
    EXPECT_FALSE(QFile::exists("258.jpg"));
    EXPECT_FALSE(label.pixmap().isNull());
    expectCleanLine();
}

TEST_F(EmulatedPictures, JsonPicturesOfEverySizeArriveWhole) {
    plug(CameraType::quenta);
    for (const std::size_t size : {0U, 3U, 500U, 501U, 7000U, 7001U, 60000U}) {
        Bytes picture(size);
        for (std::size_t i = 0; i < size; ++i)
            picture[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
        front->withCamera([&](VirtualCamera& camera) { camera.state().jsonPicture = picture; });
        ASSERT_TRUE(take(cameratype::quenta)) << size;
        EXPECT_TRUE(QFile::exists("1.jpg")) << size;
        EXPECT_EQ(files::read("1.jpg"), picture) << size;
        EXPECT_TRUE(label.pixmap().isNull()) << size; // these bytes are no JPEG
    }
    expectCleanLine();
}

TEST_F(EmulatedPictures, AJsonPictureIsShown) {
    plug(CameraType::quenta);
    const Bytes picture = drawn();
    front->withCamera([&](VirtualCamera& camera) { camera.state().jsonPicture = picture; });
    ASSERT_TRUE(take(cameratype::quenta));
    EXPECT_EQ(files::read("1.jpg"), picture);
    EXPECT_FALSE(label.pixmap().isNull());
}

TEST_F(EmulatedPictures, EnablesControlsAfterJsonFaults) {
    plug(CameraType::quenta);
    for (const char* fault : {"no-size@jsonPicture", "size-text=abc@jsonPicture", "short-json=9@jsonPicture",
                              "silent@jsonPicture"}) {
        front->withCamera([&](VirtualCamera& camera) {
            camera.faults().clear();
            camera.addFault(fault);
            camera.state().jsonPicture = Bytes(400, 1);
        });
        ASSERT_TRUE(take(cameratype::quenta)) << fault;
        EXPECT_TRUE(label.pixmap().isNull()) << fault;
    }
}

TEST_F(EmulatedPictures, WaitsForAShortPictureUntilTheLinkEnds) {
    plug(CameraType::ostra);
    addFault("picture-size=-1@read");
    flow.start(cameratype::ostra);
    ASSERT_TRUE(QTest::qWaitFor([] { return DebugLog::hasStart("pic start"); }, enoughMs));
    QTest::qWait(300);
    EXPECT_FALSE(controlsFree);
    EXPECT_FALSE(DebugLog::hasStart("pic end"));
    unplug();
    EXPECT_TRUE(DebugLog::hasStart("pic end"));
    QTest::qWait(50);
    EXPECT_FALSE(DebugLog::hasStart("in timer"));
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST_F(EmulatedPictures, VanishedDeviceEndsAnEndlessDownload) {
    plug(CameraType::ostra);
    addFault("picture-size=-1@read");
    flow.start(cameratype::ostra);
    ASSERT_TRUE(QTest::qWaitFor([] { return DebugLog::hasStart("pic start"); }, enoughMs));
    QTest::qWait(100);
    front->vanish();
    ASSERT_TRUE(QTest::qWaitFor([this] { return controlsFree; }, enoughMs));
    EXPECT_TRUE(label.pixmap().isNull());
    EXPECT_TRUE(std::filesystem::is_empty("."));
}

TEST_F(EmulatedPictures, ListShowsDeletesAndViewsPictures) {
    plug(CameraType::ostra);
    hold(40, drawn());
    hold(41, Bytes(700, 0xFF)); // no JPEG
    hold(42, drawn());
    EmulatedList<PicList> list(client.get());
    list.press("btn_refresh");
    ASSERT_EQ(list.model()->rowCount(), 3);
    list.choose(2, "查看");
    EXPECT_EQ(files::read("42.jpg"), held(2));
    EXPECT_FALSE(list.shown()->pixmap().isNull());
    list.choose(1, "查看");
    EXPECT_EQ(list.shown()->text(), "图片不存在或者图片数据错误");
    list.choose(1, "删除");
    EXPECT_EQ(list.model()->rowCount(), 2);
    ASSERT_EQ(heldCount(), 2U);
    list.press("btn_delete_all");
    EXPECT_EQ(heldCount(), 0U);
    list.press("btn_takepic");
    auto* box = list.window.findChild<QMessageBox*>();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->text(), "拍照成功");
    box->close();
    EXPECT_TRUE(QTest::qWaitFor([&] { return list.model()->rowCount() == 1; }, 3000));
    expectCleanLine();
}

TEST_F(EmulatedPictures, ASecondGenerationListUsesTheWholeId) {
    plug(CameraType::salesDynamic);
    hold(2, drawn());
    hold(258, front->withCamera([](VirtualCamera& camera) { return camera.settings().drawPicture(2, 2); }));
    EmulatedList<PicListV1> list(client.get());
    list.press("btn_refresh");
    ASSERT_EQ(list.model()->rowCount(), 2);
    list.choose(1, "查看");
    EXPECT_EQ(files::read("258.jpg"), held(1));
    EXPECT_FALSE(list.shown()->pixmap().isNull());
    list.choose(1, "删除");
    ASSERT_EQ(heldCount(), 1U);
    EXPECT_EQ(list.model()->pictureId(0), 2U);
    expectCleanLine();
}

TEST_F(EmulatedPictures, ListsTheLargestCatalogueForAnyCountByte) {
    plug(CameraType::salesDynamic);
    addFault("count=3@catalogueV1");
    for (int id = 1; id <= 1551; ++id)
        hold(static_cast<std::uint16_t>(id), {1, 2, 3});
    EmulatedList<PicListV1> list(client.get());
    list.press("btn_refresh");
    EXPECT_EQ(list.model()->rowCount(), 1551);
    EXPECT_EQ(list.model()->pictureId(1550), 1551U);
}

TEST_F(EmulatedPictures, VanishedDeviceEndsAnEndlessView) {
    plug(CameraType::ostra);
    hold(40, drawn());
    EmulatedList<PicList> list(client.get());
    addFault("picture-size=-1@read");
    list.press("btn_refresh");
    std::thread adapter([this] {
        std::this_thread::sleep_for(300ms);
        front->vanish();
    });
    list.choose(0, "查看"); // blocks until the device has gone
    adapter.join();
    ASSERT_NE(list.shown(), nullptr);
    EXPECT_EQ(list.shown()->text(), "图片不存在或者图片数据错误");
    EXPECT_FALSE(QFile::exists("40.jpg"));
}
