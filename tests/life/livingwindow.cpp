#include "tests/life/livingwindow.h"

#include "app/portchoice.h"
#include "tests/support/printing.h"
#include "tests/support/systemfilechooser.h"
#include "tests/support/windowactions.h"

#include <QAbstractButton>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QThreadPool>

#include <gtest/gtest.h>

#include <fstream>
#include <thread>

using namespace std::chrono_literals;
using namespace guitest;

namespace life {

namespace {

constexpr int stepGapMs = 15;
constexpr auto startedBy = 700ms;
constexpr int releaseLimitMs = 2000;
constexpr int lateMs = 300;      // a dropped result would have come by then
constexpr int comeBackMs = 6000; // until the camera gives up an interrupted upload
constexpr std::size_t fileSize = 30000;
constexpr std::uint32_t pace = 46080; // bytes per second
constexpr const char* fileName = "image.bin";

emulator::CameraSettings quickSettings(const Flow& flow) {
    emulator::CameraSettings settings = emulator::settingsForType(flow.type);
    settings.uploadSilence = 300ms;
    settings.rebootTime = 300ms;
    settings.updateRestartTime = 300ms;
    settings.holdsAnnouncedImage = true;
    return settings;
}

} // namespace

/// Texts that a late result would change.
struct LivingWindow::Shown {
    QString versions;
    QString model;
    QString linkButton;
    bool picture = false;
    bool heartbeatUsable = false;

    bool operator==(const Shown&) const = default;
};

LivingWindow::LivingWindow(const Flow& flow)
    : m_flow(flow), m_bench(quickSettings(flow)), m_portName(m_bench.camera.portName()),
      m_boxes(QMessageBox::Yes) {
    useSystemFileChooser();
    std::ofstream(fileName) << std::string(fileSize, 'x');
    m_bench.camera.setPace(pace);
    if (flow.fault != nullptr)
        m_bench.fault(flow.fault);
    open();
}

LivingWindow::~LivingWindow() {
    m_bench.window.reset();
    QThreadPool::globalInstance()->waitForDone();
}

void LivingWindow::open() {
    chooseCameraType(*window(), m_flow.cameraButton);
    auto* const ports = find<PortChoice>(*window(), "sel_ports");
    ports->setSource([this] { return adapters(); });
    ports->refill();
    m_bench.open();
}

std::vector<PortEntry> LivingWindow::adapters() {
    const QString name = QString::fromStdString(m_bench.camera.portName());
    if (name.isEmpty())
        return {};
    return {{name, {}, QStringLiteral("adapter")}};
}

// --- steps -------------------------------------------------------------------------------------------------

void LivingWindow::press(const QWidget* window, const char* button) {
    if (window != nullptr && window->isEnabled())
        find<QAbstractButton>(*window, button)->click(); // does nothing when the button itself is disabled
}

void LivingWindow::choose(const char* menuEntry) const {
    if (window() != nullptr)
        find<QAction>(*window(), menuEntry)->trigger();
}

void LivingWindow::chooseFile(const char* button) {
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, &answer, [] {
        auto* const dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (dialog != nullptr)
            choosePath(*dialog, QDir::current().filePath(fileName));
    });
    answer.start(stepGapMs);
    press(window(), button);
}

void LivingWindow::plug(bool in) {
    if (!in) {
        m_bench.camera.vanish();
        return;
    }
    m_bench.camera.comeBack();
    m_portName = m_bench.camera.portName();
}

void LivingWindow::runSteps(std::size_t next) {
    if (m_ended || next == m_flow.steps.size())
        return;
    m_flow.steps[next](*this);
    QTimer::singleShot(stepGapMs, window(), [this, next] { runSteps(next + 1); });
}

// --- endings -----------------------------------------------------------------------------------------------

void LivingWindow::live(Ending ending, std::chrono::milliseconds moment) {
    bool over = false;
    QTimer::singleShot(0, window(), [this] { runSteps(0); });
    if (ending == Ending::removeDevice) {
        removeDevice(moment);
        end(Ending::closeLink);
        m_bench.camera.comeBack();
        m_portName = m_bench.camera.portName();
    } else {
        QTimer::singleShot(moment, qApp, [this, ending, &over] {
            end(ending);
            over = true;
        });
        ASSERT_TRUE(eventually([&over] { return over; }, 20000));
    }
    if (moment > startedBy) {
        EXPECT_GT(receivedBytes(), 0U) << "the flow never used the link";
    }
    expectPortFree();
    expectNothingLate();
    expectWorkingLink();
}

void LivingWindow::end(Ending ending) {
    m_ended = true;
    QElapsedTimer time;
    time.start();
    if (ending == Ending::closeWindow)
        window()->close();
    else
        closeLink();
    EXPECT_LE(time.elapsed(), releaseLimitMs);
    EXPECT_EQ(text(*window(), "btn_open"), "打开串口");
}

/// The button itself, whatever is open in front of it.
void LivingWindow::closeLink() {
    find<QPushButton>(*window(), "btn_open")->click();
}

/// At the moment, independent of the user-interface thread; then time for all to notice it.
void LivingWindow::removeDevice(std::chrono::milliseconds moment) {
    std::thread remover([this, moment] {
        std::this_thread::sleep_for(moment);
        m_bench.camera.vanish();
    });
    EXPECT_TRUE(eventually([this] { return !m_bench.camera.lineOpen(); }, 20000));
    remover.join();
    QTest::qWait(100);
}

std::uint64_t LivingWindow::receivedBytes() {
    return m_bench.record().byteCount;
}

// --- afterwards --------------------------------------------------------------------------------------------

LivingWindow::Shown LivingWindow::shown() const {
    return {text(*window(), "tv_appversion"), text(*window(), "label_modelinfo"), text(*window(), "btn_open"),
            !find<QLabel>(*window(), "label")->pixmap().isNull(), isEnabled(*window(), "btn_heartbeat")};
}

std::size_t LivingWindow::uploadResults() const {
    return static_cast<std::size_t>(
        std::count_if(m_boxes.seen().begin(), m_boxes.seen().end(),
                      [](const SeenBox& box) { return box.text.startsWith("升级已完成"); }));
}

void LivingWindow::expectPortFree() const {
    EXPECT_FALSE(isOpenByTool(m_portName)) << "the port is still open";
}

void LivingWindow::expectNothingLate() {
    // A result that was on the screen before the end is answered first.
    EXPECT_TRUE(eventually([] { return QApplication::activeModalWidget() == nullptr; }));
    const Shown before = shown();
    const std::size_t results = uploadResults();
    QTest::qWait(lateMs);
    EXPECT_TRUE(before == shown()) << "something was shown after the end";
    EXPECT_EQ(uploadResults(), results) << "an upload's result was shown after the end";
    QThreadPool::globalInstance()->waitForDone();
    QTest::qWait(1);
    EXPECT_TRUE(before == shown()) << "a job's result was shown after the end";
}

/// By a new window: the old one may be gone by now, with everything that it opened.
void LivingWindow::expectWorkingLink() {
    m_bench.renewWindow();
    m_bench.clearFaults();
    open();
    EXPECT_TRUE(eventually(
        [this] {
            click(*window(), "btn_heartbeat");
            return find<QRadioButton>(*window(), "rb_heartbeat")->isChecked();
        },
        comeBackMs));
}

} // namespace life
