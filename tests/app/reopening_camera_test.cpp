// The button "重新打开" with a camera whose device vanishes.
#include "app/portchoice.h"
#include "tests/support/uploadwindow.h"
#include "tests/support/windowactions.h"

#include <QPushButton>
#include <QRadioButton>

#include <memory>
#include <mutex>

using namespace guitest;

namespace {

/// The ports that the window lists. Any thread.
class Listed {
public:
    void set(std::vector<PortEntry> ports) {
        const std::lock_guard lock(m_mutex);
        m_ports = std::move(ports);
    }
    [[nodiscard]] std::vector<PortEntry> get() const {
        const std::lock_guard lock(m_mutex);
        return m_ports;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<PortEntry> m_ports;
};

class ReopeningCamera : public UploadWindow {
protected:
    ReopeningCamera() {
        listCamera();
        auto* const choice = find<PortChoice>(*window, "sel_ports");
        choice->setSource([listed = listed] { return listed->get(); });
        choice->fill();
        click(*window, "btn_open");
        EXPECT_EQ(text(*window, "btn_open"), "关闭串口");
    }

    void listCamera() { listed->set({{QString::fromStdString(camera.portName()), {}, "adapter"}}); }
    void unplug() {
        camera.vanish();
        listed->set({});
    }
    void plug() {
        camera.comeBack();
        listCamera();
    }

    [[nodiscard]] bool isOffered() const { return find<QPushButton>(*window, "btn_reopen")->isVisible(); }
    [[nodiscard]] bool heartbeat() const {
        click(*window, "btn_heartbeat");
        return find<QRadioButton>(*window, "rb_heartbeat")->isChecked();
    }

    std::shared_ptr<Listed> listed = std::make_shared<Listed>();
};

} // namespace

TEST_F(ReopeningCamera, ReachesTheCameraAgain) {
    ASSERT_TRUE(heartbeat());
    unplug();
    EXPECT_FALSE(heartbeat());
    plug();
    ASSERT_TRUE(eventually([this] { return isOffered(); }));
    click(*window, "btn_reopen");
    EXPECT_TRUE(heartbeat());
}

TEST_F(ReopeningCamera, TakesBackWhatTheLostCameraTold) {
    ASSERT_TRUE(heartbeat());
    click(*window, "btn_modelinfo");
    click(*window, "btn_appversion");
    ASSERT_TRUE(eventually([this] { return text(*window, "tv_appversion").startsWith("SDK版本:"); }));
    ASSERT_TRUE(eventually([this] { return isEnabled(*window, "btn_gyro"); }));
    ASSERT_TRUE(text(*window, "label_modelinfo").startsWith("模型信息:"));
    unplug();
    BoxAnswerer boxes;
    click(*window, "btn_gyro");
    EXPECT_FALSE(find<QRadioButton>(*window, "rb_heartbeat")->isChecked());
    EXPECT_EQ(text(*window, "tv_appversion"), "");
    EXPECT_EQ(text(*window, "label_modelinfo"), "");
    click(*window, "btn_modelinfo");
    EXPECT_EQ(text(*window, "label_modelinfo"), "模型信息:") << "the answer of this command";
}

TEST_F(ReopeningCamera, WaitsForTheEndOfAnUpload) {
    camera.setPace(46080);
    start(systemUpload, 100000);
    ASSERT_TRUE(eventually([this] { return record().count(systemUpload.code) == 1; }));
    unplug();
    plug();
    EXPECT_EQ(statusText(*window), "正在升级，请勿断电、勿拔线");
    EXPECT_FALSE(isOffered());
    EXPECT_EQ(outcome(), "升级已完成，结果:失败！false");
    ASSERT_TRUE(eventually([this] { return isOffered(); }));
    EXPECT_EQ(enabledExchanges(), allExchanges());
    click(*window, "btn_reopen");
    EXPECT_TRUE(heartbeat());
}

TEST_F(ReopeningCamera, LendsTheNewLinkToOpenWindows) {
    trigger(*window, "actionOpenCloseDoor");
    unplug();
    EXPECT_FALSE(heartbeat());
    plug();
    ASSERT_TRUE(eventually([this] { return isOffered(); }));
    click(*window, "btn_reopen");
    for (const QWidget* const door : openWindows<QWidget>()) {
        if (door != window.get())
            click(*door, "btn_open");
    }
    EXPECT_TRUE(eventually([this] { return state().doorLog.size() == 1; }));
}
