// The take-picture flow and the list windows with the real serial library and a virtual camera.
#include "app/captureflow.h"
#include "pictures/imgdialog.h"
#include "pictures/piclist.h"
#include "pictures/piclistv1.h"
#include "pictures/picturelistmodel.h"
#include "tests/support/cameratype.h"
#include "tests/support/debuglog.h"
#include "tests/support/guitest.h"
#include "tests/support/stdoutcapture.h"
#include "tests/support/testfront.h"
#include "tests/support/workingdirectory.h"

#include <QClipboard>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>
#include <QToolButton>

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

    [[nodiscard]] QString download() const {
        return guitest::find<QProgressBar>(window, "bar_download")->text();
    }
    [[nodiscard]] QString downloadButton() const {
        return guitest::find<QToolButton>(window, "btn_download_all")->text();
    }
    void press(const char* name) { window.template findChild<QAbstractButton*>(name)->click(); }
    void choose(int row, const QString& entry) { guitest::chooseForRow(window, row, entry); }
    /// Reads the list and starts the download of all pictures into a new folder.
    void downloadAllInto(const QString& folder) {
        press("btn_refresh");
        chooseFolderForAll(folder);
    }
    void chooseFolderForAll(const QString& folder) {
        QDir().mkdir(folder);
        const guitest::FileChooser chooser(QDir::current().filePath(folder));
        press("btn_download_all");
        EXPECT_TRUE(QTest::qWaitFor([&] { return !chooser.seen().empty(); }, enoughMs));
        EXPECT_EQ(chooser.seen().at(0).title, "选择保存图片的文件夹");
    }
    [[nodiscard]] PictureListModel* model() const { return window.template findChild<PictureListModel*>(); }
    [[nodiscard]] ImgDialog* viewer() const {
        const auto viewers = window.template findChildren<ImgDialog*>();
        return viewers.isEmpty() ? nullptr : viewers.back();
    }
    [[nodiscard]] QLabel* shown() const {
        return viewer() != nullptr ? viewer()->template findChild<QLabel*>() : nullptr;
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

TEST_F(EmulatedPictures, ViewGoesThroughTheList) {
    plug(CameraType::salesDynamic);
    for (std::uint16_t id = 258; id < 261; ++id)
        hold(id, drawn());
    EmulatedList<PicListV1> list(client.get());
    list.press("btn_refresh");
    list.choose(0, "查看");
    guitest::click(*list.viewer(), "btn_zoom_in");
    guitest::click(*list.viewer(), "btn_next");
    EXPECT_EQ(files::read("259.jpg"), held(1));
    guitest::click(*list.viewer(), "btn_next");
    EXPECT_EQ(files::read("260.jpg"), held(2));
    EXPECT_EQ(list.shown()->pixmap().height(), 400);
    EXPECT_FALSE(guitest::isEnabled(*list.viewer(), "btn_next"));
    EXPECT_EQ(list.window.findChildren<ImgDialog*>().size(), 1);
    expectCleanLine();
}

TEST_F(EmulatedPictures, ViewGoesOnAfterAPictureThatVanished) {
    plug(CameraType::ostra);
    for (std::uint16_t id = 40; id < 43; ++id)
        hold(id, drawn());
    EmulatedList<PicList> list(client.get());
    list.press("btn_refresh");
    list.choose(0, "查看");
    addFault("result=1@read#1");
    guitest::click(*list.viewer(), "btn_next");
    EXPECT_EQ(list.shown()->text(), "图片不存在或者图片数据错误");
    EXPECT_FALSE(QFile::exists("41.jpg"));
    guitest::click(*list.viewer(), "btn_next");
    EXPECT_FALSE(list.shown()->pixmap().isNull());
    EXPECT_EQ(files::read("42.jpg"), held(2));
}

TEST_F(EmulatedPictures, ViewIsRefusedWhileAllPicturesCome) {
    plug(CameraType::ostra);
    hold(40, drawn());
    hold(41, drawn());
    EmulatedList<PicList> list(client.get());
    list.press("btn_refresh");
    list.choose(0, "查看");
    const auto answerReadsAfter = [this](std::chrono::milliseconds delay) {
        front->withCamera([delay](VirtualCamera& camera) { camera.settings().commandDelays[0x09] = delay; });
    };
    answerReadsAfter(2s); // the view is refused meanwhile
    list.chooseFolderForAll("kept");
    const auto reads = [this] {
        return front->withCamera([](VirtualCamera& camera) { return camera.record().count(0x09); });
    };
    ASSERT_TRUE(QTest::qWaitFor([&] { return reads() == 2; }, enoughMs));
    guitest::click(*list.viewer(), "btn_next");
    EXPECT_EQ(reads(), 2U);
    answerReadsAfter(0s);
    EXPECT_EQ(list.shown()->text(), "图片不存在或者图片数据错误");
    ASSERT_TRUE(QTest::qWaitFor([&] { return list.download() == "已下载 2 张，共 2 张"; }, enoughMs));
    guitest::click(*list.viewer(), "btn_previous");
    EXPECT_FALSE(list.shown()->pixmap().isNull());
}

TEST_F(EmulatedPictures, AllPicturesComeIntoTheChosenFolder) {
    plug(CameraType::ostra);
    hold(40, drawn());
    hold(41, drawn());
    EmulatedList<PicList> list(client.get());
    list.downloadAllInto("kept");
    EXPECT_EQ(list.downloadButton(), "停止下载");
    ASSERT_TRUE(QTest::qWaitFor([&] { return list.download() == "已下载 2 张，共 2 张"; }, enoughMs))
        << list.download().toStdString();
    EXPECT_EQ(list.downloadButton(), "下载全部");
    EXPECT_EQ(files::read("kept/40.jpg"), held(0));
    EXPECT_EQ(files::read("kept/41.jpg"), held(1));
    EXPECT_FALSE(QFile::exists("40.jpg"));
    list.choose(0, "查看");
    EXPECT_TRUE(QFile::exists("40.jpg")) << "the tool's own folder is as before";
    expectCleanLine();
}

TEST_F(EmulatedPictures, FilesAreReplacedAfterAQuestionOnly) {
    plug(CameraType::ostra);
    hold(40, drawn());
    files::write("40.jpg", {1});
    EmulatedList<PicList> list(client.get());
    list.press("btn_refresh");
    for (const auto answer : {QMessageBox::No, QMessageBox::Yes}) {
        guitest::BoxAnswerer boxes(answer);
        const guitest::FileChooser chooser(QDir::currentPath());
        list.press("btn_download_all");
        ASSERT_TRUE(boxes.waitFor(1));
        EXPECT_EQ(boxes.seen()[0].text, "文件夹里已有 1 张同名图片，要替换吗？");
        if (answer == QMessageBox::No) {
            EXPECT_EQ(files::read("40.jpg"), Bytes{1});
        }
    }
    ASSERT_TRUE(QTest::qWaitFor([&] { return list.download() == "已下载 1 张，共 1 张"; }, enoughMs));
    EXPECT_EQ(files::read("40.jpg"), held(0));
}

TEST_F(EmulatedPictures, DownloadOfAllStopsOnRequest) {
    plug(CameraType::ostra);
    for (std::uint16_t id = 40; id < 43; ++id)
        hold(id, drawn());
    EmulatedList<PicList> list(client.get());
    list.downloadAllInto("kept");
    ASSERT_TRUE(QTest::qWaitFor([&] { return list.download().startsWith("正在下载第 1 张"); }, enoughMs));
    list.press("btn_download_all");
    ASSERT_TRUE(QTest::qWaitFor([&] { return list.download().startsWith("已停止"); }, enoughMs));
    EXPECT_FALSE(QFile::exists("kept/42.jpg"));
    EXPECT_EQ(list.downloadButton(), "下载全部");
}

TEST_F(EmulatedPictures, DownloadOfAllStopsInAPictureWithoutEnd) {
    plug(CameraType::ostra);
    hold(40, drawn());
    EmulatedList<PicList> list(client.get());
    addFault("picture-size=-1@read");
    list.downloadAllInto("kept");
    QTest::qWait(3000);
    EXPECT_EQ(list.downloadButton(), "停止下载");
    list.press("btn_download_all");
    ASSERT_TRUE(QTest::qWaitFor([&] { return list.download() == "已停止：已下载 0 张，共 1 张"; }, enoughMs))
        << list.download().toStdString();
    EXPECT_TRUE(QDir("kept").isEmpty());
}

TEST_F(EmulatedPictures, DownloadOfAllTellsThePictureThatFails) {
    plug(CameraType::ostra);
    hold(40, drawn());
    hold(41, drawn());
    EmulatedList<PicList> list(client.get());
    addFault("picture-size=-1@read"); // it is under way when the device vanishes
    list.downloadAllInto("kept");
    front->vanish();
    ASSERT_TRUE(QTest::qWaitFor([&] { return list.download() == "图片 40 没有下载：已下载 0 张，共 2 张"; },
                                enoughMs))
        << list.download().toStdString();
    EXPECT_TRUE(QDir("kept").isEmpty());
    EXPECT_EQ(list.downloadButton(), "下载全部");
}

TEST_F(EmulatedPictures, DownloadOfAllIsRefusedWhileTheLineIsTaken) {
    plug(CameraType::ostra);
    hold(40, drawn());
    EmulatedList<PicList> list(client.get());
    list.press("btn_refresh");
    const LineTurn::Hold other = client->takeLine(LineUser::download);
    list.chooseFolderForAll("kept");
    ASSERT_TRUE(QTest::qWaitFor([&] { return list.download() == "图片 40 没有下载：已下载 0 张，共 1 张"; },
                                enoughMs))
        << list.download().toStdString();
    EXPECT_TRUE(QDir("kept").isEmpty());
}

TEST_F(EmulatedPictures, EndOfTheLinkEndsTheDownloadOfAll) {
    plug(CameraType::ostra);
    hold(40, drawn());
    EmulatedList<PicList> list(client.get());
    addFault("picture-size=-1@read");
    list.downloadAllInto("kept");
    list.window.attachClient(nullptr);
    EXPECT_EQ(list.downloadButton(), "下载全部");
    EXPECT_FALSE(guitest::find<QProgressBar>(list.window, "bar_download")->isVisible());
    unplug();
    EXPECT_TRUE(QDir("kept").isEmpty());
}

TEST_F(EmulatedPictures, EmptyListAsksForARefresh) {
    plug(CameraType::ostra);
    EmulatedList<PicList> list(client.get());
    list.press("btn_download_all");
    EXPECT_EQ(list.download(), "列表是空的，请先刷新列表");
}

TEST_F(EmulatedPictures, ListIsCopiedAsATable) {
    plug(CameraType::salesDynamic);
    hold(300, drawn());
    EmulatedList<PicListV1> list(client.get());
    list.press("btn_refresh");
    list.press("btn_copy_list");
    const QStringList lines = QGuiApplication::clipboard()->text().split('\n');
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(lines[0].startsWith("图片id\tactionid\t"));
    EXPECT_EQ(lines[1].split('\t').size(), 7);
    EXPECT_TRUE(lines[1].startsWith("300\t"));
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
