#include "tests/looks/scenes.h"

#include "aids/checkupwindow.h"
#include "aids/linerecordwindow.h"
#include "dialogs/aboutdialog.h"
#include "dialogs/doorop.h"
#include "dialogs/setcameralocation.h"
#include "dialogs/setcapturedegree.h"
#include "dialogs/setpicrate.h"
#include "dialogs/setpwmheat.h"
#include "dialogs/setsn.h"
#include "pictures/imgdialog.h"
#include "pictures/piclist.h"
#include "pictures/piclistv1.h"
#include "practice/practicewindow.h"
#include "tests/aids/findertest.h"
#include "tests/support/camerawindow.h"
#include "tests/support/windowactions.h"

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QTableView>
#include <QTextBrowser>
#include <QThreadPool>

#include <ostream>

using namespace guitest;
using namespace std::chrono_literals;
using emulator::CameraType;
using emulator::VirtualCamera;

namespace looks {

namespace {

constexpr int enoughMs = 60000;

/// A main window and its camera.
class Stage : public CameraWindow {
public:
    explicit Stage(CameraType type = CameraType::ostra) : CameraWindow(cameraOf(type)) {
        find<QWidget>(*window, "sel_ports"); // the window is complete
    }
    ~Stage() {
        window.reset();
        QThreadPool::globalInstance()->waitForDone();
    }

    [[nodiscard]] MainWindow& main() const { return *window; }

    /// Presses a button of the main window and waits for the end of its job.
    void press(const char* button) const {
        click(*window, button);
        expect(eventually([this, button] { return isEnabled(*window, button); }, enoughMs), button);
    }
    void takePictures(int count) const {
        for (int taken = 0; taken < count; ++taken)
            press("btn_takepic");
    }
    template <typename Window>
    Window& opened(const char* entry) const {
        trigger(*window, entry);
        QThreadPool::globalInstance()->waitForDone();
        QTest::qWait(20); // their results
        return *openWindows<Window>().at(0);
    }
    /// Chooses a file of this size for an upload.
    void chooseFile(const char* button, const QString& name, int size) const {
        QFile file(name);
        expect(file.open(QIODevice::WriteOnly) && file.write(QByteArray(size, 'x')) == size, button);
        file.close();
        const FileChooser chooser(QDir::current().absoluteFilePath(name));
        click(*window, button);
    }

    static void expect(bool condition, const char* what) {
        if (!condition)
            throw std::runtime_error(what);
    }

private:
    static emulator::CameraSettings cameraOf(CameraType type) {
        emulator::CameraSettings settings = emulator::settingsForType(type);
        settings.pictureSeed = 1;
        settings.updateRestartTime = 200ms;
        return settings;
    }
};

/// Shows each modal window while it lives, and rejects it.
class ModalWindows {
public:
    explicit ModalWindows(const See& see) : m_see(see) {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { meet(); });
        m_timer.start(5);
    }
    [[nodiscard]] int met() const { return m_met; }

private:
    void meet() {
        auto* const dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        if (dialog == nullptr || m_meeting)
            return;
        m_meeting = true;
        m_see(*dialog);
        m_meeting = false;
        ++m_met;
        dialog->reject();
    }

    const See& m_see;
    QTimer m_timer;
    bool m_meeting = false;
    int m_met = 0;
};

void seeBox(const See& see, const std::function<void()>& act) {
    const ModalWindows boxes(see);
    act();
    Stage::expect(eventually([&boxes] { return boxes.met() > 0; }, enoughMs), "no box");
}

template <typename Window>
void seeWindow(const See& see, const char* entry) {
    Stage stage;
    stage.open();
    see(stage.opened<Window>(entry));
}

template <typename List>
void seeList(const See& see, CameraType type, const char* radio, const char* entry) {
    Stage stage(type);
    chooseCameraType(stage.main(), radio);
    stage.open();
    stage.takePictures(3);
    const List& list = stage.opened<List>(entry);
    click(list, "btn_refresh");
    QTest::qWait(20);
    see(const_cast<List&>(list));
}

void seeMenu(const See& see, const char* name) {
    Stage stage;
    auto* const menu = find<QMenu>(stage.main(), name);
    menu->popup(QPoint());
    Stage::expect(eventually([menu] { return menu->isVisible(); }), name);
    see(*menu);
    menu->close();
}

// --- the main window ---------------------------------------------------------------------------------------

void mainClosed(const See& see) {
    Stage stage;
    QTest::qWait(200); // its first message
    see(stage.main());
}

void mainOpen(const See& see) {
    Stage stage;
    stage.open();
    stage.press("btn_heartbeat");
    stage.press("btn_appversion");
    stage.press("btn_modelinfo");
    stage.takePictures(1);
    see(stage.main());
}

void mainFiles(const See& see) {
    Stage stage;
    stage.open();
    stage.chooseFile("btn_apppath", "应用程序 固件 2026-11-22 第二版.bin", 3000);
    stage.chooseFile("btn_firewarepath", "linux-system-image.bin", 3000);
    stage.chooseFile("btn_modelpath", "model_v1.bin", 3000);
    see(stage.main());
}

void mainSilent(const See& see) {
    Stage stage;
    stage.open();
    stage.fault("silent");
    stage.press("btn_heartbeat");
    see(stage.main());
}

void mainPrevious(const See& see) {
    Stage stage;
    stage.open();
    stage.press("btn_appversion");
    stage.press("btn_modelinfo");
    stage.takePictures(1);
    chooseCameraType(stage.main(), "rb_dx_dt");
    see(stage.main());
}

void mainUploading(const See& see) {
    Stage stage;
    stage.open();
    stage.camera.setPace(46080);
    stage.chooseFile("btn_apppath", "app.bin", 400000);
    click(stage.main(), "btn_appupdate");
    Stage::expect(
        eventually([&] { return text(stage.main(), "label_transfer").startsWith("已发送"); }, enoughMs),
        "no upload");
    see(stage.main());
    seeBox(see, [] {});
}

// --- boxes, menus ------------------------------------------------------------------------------------------

void questions(const See& see) {
    Stage stage;
    stage.open();
    for (const char* const entry : {"actionReboot", "actionResetFactory"})
        seeBox(see, [&] { trigger(stage.main(), entry); });
}

void offsetInput(const See& see) {
    Stage stage;
    stage.open();
    seeBox(see, [&] { trigger(stage.main(), "actionOriginCmdExtraAdd"); });
}

void gyroResult(const See& see) {
    Stage stage;
    stage.open();
    seeBox(see, [&] { click(stage.main(), "btn_gyro"); });
}

void failureBox(const See& see) {
    Stage stage;
    choosePort(stage.main(), "/dev/没有这个串口");
    seeBox(see, [&] { clickThatThrows(stage.main(), "btn_open"); });
}

// --- other windows -----------------------------------------------------------------------------------------

void written(const See& see) {
    Stage stage;
    stage.open();
    SetSN& window = stage.opened<SetSN>("actionSnSet");
    click(window, "btn_gensn");
    click(window, "btn_setsn");
    see(window);
}

void failedReading(const See& see) {
    Stage stage;
    stage.open();
    stage.fault("silent");
    see(stage.opened<SetCaptureDegree>("actionCaptureDegree"));
}

void emptyList(const See& see) {
    seeWindow<PicList>(see, "actionPicInfo");
}

void viewer(const See& see) {
    Stage stage;
    stage.open();
    stage.takePictures(2);
    const PicList& list = stage.opened<PicList>("actionPicInfo");
    click(list, "btn_refresh");
    chooseForRow(list, 0, "查看");
    Stage::expect(eventually([] { return openWindows<ImgDialog>().size() == 1; }, enoughMs), "no view");
    see(*openWindows<ImgDialog>().at(0));
}

void finder(const See& see) {
    Stage stage;
    find<QComboBox>(stage.main(), "sel_ports")->addItem(QString::fromStdString(stage.camera.portName()));
    CameraFinderWindow& window = findertest::openFinder(stage.main());
    findertest::checkOnly(window, "list_ports", {QString::fromStdString(stage.camera.portName())});
    findertest::checkOnly(window, "list_rates", {"460800"});
    click(window, "btn_start");
    Stage::expect(findertest::hasEnded(window), "search");
    see(window);
}

void checkup(const See& see) {
    Stage stage;
    stage.open();
    CheckupWindow& window = stage.opened<CheckupWindow>("actionCheckup");
    click(window, "cb_picture");
    click(window, "btn_start");
    Stage::expect(findertest::hasEnded(window), "check-up");
    see(window);
}

void lineRecord(const See& see) {
    Stage stage;
    stage.open();
    LineRecordWindow& window = stage.opened<LineRecordWindow>("actionLineRecord");
    stage.press("btn_heartbeat");
    stage.fault("bad-check");
    stage.press("btn_heartbeat");
    auto* const table = find<QTableView>(window, "table");
    Stage::expect(eventually([table] { return table->model()->rowCount() > 3; }), "lines");
    table->selectRow(0);
    see(window);
}

// --- the window of the lessons -----------------------------------------------------------------------------

void practiceList(const See& see) {
    PracticeWindow window;
    window.show();
    see(window);
}

void practiceLesson(const See& see) {
    PracticeWindow window;
    window.show();
    window.start(0);
    click(*window.tool(), "btn_open");
    const auto* const steps = find<QTextBrowser>(window, "text_steps");
    const auto introduction = steps->toPlainText().size();
    click(*window.tool(), "btn_heartbeat");
    Stage::expect(eventually([&] { return steps->toPlainText().size() > introduction; }, enoughMs), "a step");
    QThreadPool::globalInstance()->waitForDone();
    see(window);
    see(*window.tool());
}

} // namespace

void PrintTo(const Scene& scene, std::ostream* out) {
    *out << scene.name;
}

const std::vector<Scene>& scenes() {
    static const std::vector<Scene> all{
        {"MainClosed", &mainClosed},
        {"MainOpen", &mainOpen},
        {"MainFiles", &mainFiles},
        {"MainSilent", &mainSilent},
        {"MainPreviousCamera", &mainPrevious},
        {"MainUploading", &mainUploading},
        {"SettingsMenu", [](const See& see) { seeMenu(see, "menu"); }},
        {"FunctionsMenu", [](const See& see) { seeMenu(see, "menu_2"); }},
        {"MoreMenu", [](const See& see) { seeMenu(see, "menu_more"); }},
        {"Questions", &questions},
        {"OffsetInput", &offsetInput},
        {"GyroResult", &gyroResult},
        {"FailureBox", &failureBox},
        {"SerialNumber", [](const See& see) { seeWindow<SetSN>(see, "actionSnSet"); }},
        {"SerialNumberWritten", &written},
        {"Heater", [](const See& see) { seeWindow<SetPwmHeat>(see, "actionPwmHeatSet"); }},
        {"Compression", [](const See& see) { seeWindow<SetPicRate>(see, "actionactionPicRateSet"); }},
        {"CaptureAngles", [](const See& see) { seeWindow<SetCaptureDegree>(see, "actionCaptureDegree"); }},
        {"FailedReading", &failedReading},
        {"Orientation", [](const See& see) { seeWindow<SetCameraLocation>(see, "actionInstallLocation"); }},
        {"Door", [](const See& see) { seeWindow<DoorOp>(see, "actionOpenCloseDoor"); }},
        {"CameraSettings", [](const See& see) { seeWindow<SetCameraProtocol>(see, "actionaddress"); }},
        {"About", [](const See& see) { seeWindow<AboutDialog>(see, "actionAbout"); }},
        {"EmptyList", &emptyList},
        {"List", [](const See& see) { seeList<PicList>(see, CameraType::ostra, "rb_ost", "actionPicInfo"); }},
        {"ListV1",
         [](const See& see) {
             seeList<PicListV1>(see, CameraType::salesDynamic, "rb_dx_dt", "actionPicInfoV1");
         }},
        {"Viewer", &viewer},
        {"Finder", &finder},
        {"Checkup", &checkup},
        {"LineRecord", &lineRecord},
        {"PracticeList", &practiceList},
        {"PracticeLesson", &practiceLesson},
    };
    return all;
}

} // namespace looks
