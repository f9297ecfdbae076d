// The previous and next picture of the list in the picture view.
#include "tests/pictures/picturelisttest.h"
#include "tests/support/guitest.h"
#include "tests/support/recordingobserver.h"

#include <QToolButton>

namespace picturelist {
namespace {

using scripted::jpeg;

class ViewNeighbours : public PictureListTest {
protected:
    static constexpr int width = 300;

    /// Lists a red, a green and a blue picture of these ids and views one.
    void fillAndView(const std::vector<std::uint8_t>& ids, int row) {
        std::vector<protocol::Bytes> records;
        for (const std::uint8_t id : ids)
            records.push_back(record(id, static_cast<std::uint32_t>(green.size())));
        fill(records);
        send(green);
        rightClick(row);
        action("查看")->trigger();
        ASSERT_NE(viewer(), nullptr);
        closeMenu();
        linesBefore = DebugLog::plainLines().size();
    }
    void closeMenu() const {
        menu()->close();
        ASSERT_TRUE(QTest::qWaitFor([this] { return menu() == nullptr; }));
    }
    void send(const protocol::Bytes& picture) { camera.willSend(generation.download, 0, picture); }
    void press(const char* name) const { guitest::click(*viewer(), name); }
    [[nodiscard]] bool enabled(const char* name) const { return guitest::isEnabled(*viewer(), name); }
    [[nodiscard]] QLabel* shown() const { return viewer()->findChild<QLabel*>(); }
    [[nodiscard]] QString fileOf(int row) const { return QString::number(model()->pictureId(row)) + ".jpg"; }
    [[nodiscard]] std::vector<std::string> newLines() const {
        std::vector<std::string> all = DebugLog::plainLines();
        all.erase(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(linesBefore));
        return all;
    }

    const protocol::Bytes green = jpeg(width, 200, Qt::green);
    const protocol::Bytes blue = [this] {
        protocol::Bytes made = jpeg(width, 200, Qt::blue);
        made.resize(std::max(made.size(), green.size()));
        return made;
    }();
    std::size_t linesBefore = 0;
};

INSTANTIATE_TEST_SUITE_P(Generations, ViewNeighbours, testing::Values(origin, v1),
                         [](const auto& each) { return std::string(each.param.name); });

TEST_P(ViewNeighbours, NextIsViewedAsByTheMenu) {
    fillAndView({9, 5, 7}, 0);
    const QPointer<ImgDialog> dialog = viewer();
    files::write(fileOf(1).toStdString(), {1});
    send(blue);
    press("btn_next");
    const std::vector<std::string> byButton = newLines();
    const std::string frame = newRequests().back();
    EXPECT_EQ(files::read(fileOf(1).toStdString())->size(), green.size());
    EXPECT_EQ(viewer(), dialog);
    EXPECT_EQ(window->findChildren<ImgDialog*>().size(), 1);
    EXPECT_EQ(viewer()->windowTitle(), "查看图片");

    linesBefore = DebugLog::plainLines().size();
    send(blue);
    rightClick(1);
    action("查看")->trigger();
    std::vector<std::string> byMenu = newLines();
    byMenu.erase(byMenu.begin()); // of the menu
    EXPECT_EQ(byButton, byMenu);
    EXPECT_EQ(newRequests().back(), frame);
    EXPECT_EQ(newRequests().size(), 3U);
}

TEST_P(ViewNeighbours, NextAndPreviousShowTheirPictures) {
    fillAndView({9, 5, 7}, 1);
    send(blue);
    press("btn_next");
    EXPECT_GT(scripted::middle(shown()->pixmap()).blue(), 240);
    send(green);
    press("btn_previous");
    EXPECT_GT(scripted::middle(shown()->pixmap()).green(), 120);
    EXPECT_LT(scripted::middle(shown()->pixmap()).blue(), 20);
    ASSERT_EQ(newLines().size(), 6U);
    EXPECT_EQ(newLines()[2], std::to_string(model()->pictureId(2)));
    EXPECT_EQ(newLines()[5], std::to_string(model()->pictureId(1)));
}

TEST_P(ViewNeighbours, EndAtTheEndsOfTheList) {
    fillAndView({9, 5}, 0);
    EXPECT_FALSE(enabled("btn_previous"));
    EXPECT_TRUE(enabled("btn_next"));
    send(blue);
    press("btn_next");
    EXPECT_TRUE(enabled("btn_previous"));
    EXPECT_FALSE(enabled("btn_next"));
    emit viewer()->neighbourWanted(1);
    EXPECT_EQ(newRequests().size(), 2U);
}

TEST_P(ViewNeighbours, AnOnlyPictureHasNone) {
    fillAndView({9}, 0);
    EXPECT_FALSE(enabled("btn_previous"));
    EXPECT_FALSE(enabled("btn_next"));
}

TEST_P(ViewNeighbours, FollowTheRefreshedList) {
    fillAndView({9, 5}, 0);
    camera.willList(generation.catalogue, {record(7), record(9)});
    button("btn_refresh")->click();
    EXPECT_TRUE(enabled("btn_previous"));
    EXPECT_FALSE(enabled("btn_next"));
    send(blue);
    press("btn_previous");
    EXPECT_EQ(newLines().back(), std::to_string(model()->pictureId(0)));
}

TEST_P(ViewNeighbours, EndWhenTheListLosesThePicture) {
    fillAndView({9, 5, 7}, 1);
    camera.willList(generation.catalogue, {record(1), record(2), record(3)});
    button("btn_refresh")->click();
    EXPECT_FALSE(enabled("btn_previous"));
    EXPECT_FALSE(enabled("btn_next"));
    const std::size_t requests = newRequests().size();
    emit viewer()->neighbourWanted(1);
    EXPECT_EQ(newRequests().size(), requests);
    EXPECT_FALSE(shown()->pixmap().isNull());
}

TEST_P(ViewNeighbours, EndWhenTheListCannotBeRead) {
    fillAndView({9, 5, 7}, 1);
    button("btn_refresh")->click();
    EXPECT_FALSE(enabled("btn_previous"));
    EXPECT_FALSE(enabled("btn_next"));
}

TEST_P(ViewNeighbours, FollowDeletions) {
    fillAndView({9, 5, 7}, 1);
    for (const int row : {0, 0}) {
        EXPECT_TRUE(enabled("btn_next"));
        camera.willSay(generation.deletion, 0);
        rightClick(row);
        action("删除")->trigger();
        closeMenu();
        EXPECT_FALSE(enabled("btn_previous"));
    }
    EXPECT_FALSE(enabled("btn_next"));
}

TEST_P(ViewNeighbours, PassPicturesOfTheSameId) {
    fillAndView({5, 5, 7}, 0);
    for (int i = 0; i < 2; ++i) {
        send(blue);
        press("btn_next");
    }
    EXPECT_EQ(newLines().back(), std::to_string(model()->pictureId(2)));
    EXPECT_FALSE(enabled("btn_next"));
}

TEST_P(ViewNeighbours, WorkAfterAFailedDownload) {
    fillAndView({9, 5, 7}, 0);
    const QPointer<ImgDialog> dialog = viewer();
    camera.willSend(generation.download, 0, protocol::Bytes(green.size(), 0x55));
    press("btn_next");
    EXPECT_EQ(shown()->text(), missingText);
    EXPECT_FALSE(enabled("btn_save_as"));
    send(blue);
    press("btn_next");
    EXPECT_GT(scripted::middle(shown()->pixmap()).blue(), 240);
    EXPECT_EQ(viewer(), dialog);
}

TEST_P(ViewNeighbours, ShowNoOldPictureAfterTheLinkEnds) {
    fillAndView({9, 5}, 0);
    files::write(fileOf(1).toStdString(), blue);
    RecordingObserver observer;
    window->setObserver(&observer);
    window->attachClient(nullptr);
    press("btn_next");
    EXPECT_EQ(shown()->text(), missingText);
    EXPECT_EQ(observer.missing, 1);
    EXPECT_EQ(newRequests().size(), 1U);
    window->setObserver(nullptr);
}

TEST_P(ViewNeighbours, SendNothingWhileTheClientIsBusy) {
    fillAndView({9, 5}, 0);
    window->setExchangeAllowed(false);
    emit viewer()->neighbourWanted(1);
    EXPECT_EQ(newRequests().size(), 1U);
    EXPECT_TRUE(newLines().empty());
}

TEST_P(ViewNeighbours, EachViewerHasItsOwn) {
    fillAndView({9, 5, 7}, 0);
    const QPointer<ImgDialog> first = viewer();
    send(green);
    rightClick(2);
    action("查看")->trigger();
    closeMenu();
    send(blue);
    guitest::click(*first, "btn_next");
    EXPECT_EQ(newLines().back(), std::to_string(model()->pictureId(1)));
    EXPECT_TRUE(guitest::isEnabled(*first, "btn_next"));
    const ImgDialog* const second = window->findChildren<ImgDialog*>().back();
    ASSERT_NE(second, first);
    EXPECT_FALSE(guitest::isEnabled(*second, "btn_next"));
}

TEST_P(ViewNeighbours, ListMayChangeAfterTheViewerIsClosed) {
    fillAndView({9, 5}, 0);
    viewer()->close();
    ASSERT_TRUE(QTest::qWaitFor([this] { return viewer() == nullptr; }));
    model()->clear();
    camera.willList(generation.catalogue, {record(9)});
    button("btn_refresh")->click();
    EXPECT_EQ(model()->rowCount(), 1);
}

} // namespace
} // namespace picturelist
