// The flows that use the link.
#include "aids/camerafinderwindow.h"
#include "aids/checkupwindow.h"
#include "aids/linerecordwindow.h"
#include "dialogs/setcameralocation.h"
#include "dialogs/setcapturedegree.h"
#include "dialogs/setpicrate.h"
#include "dialogs/setpwmheat.h"
#include "dialogs/setsn.h"
#include "pictures/imgdialog.h"
#include "pictures/piclist.h"
#include "pictures/piclistv1.h"
#include "tests/life/livingwindow.h"

#include <QCheckBox>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

using namespace std::chrono_literals;
using emulator::CameraType;

namespace life {

namespace {

Step presses(const char* button) {
    return [button](LivingWindow& w) { LivingWindow::press(w.window(), button); };
}

Step chooses(const char* menuEntry) {
    return [menuEntry](LivingWindow& w) { w.choose(menuEntry); };
}

Step choosesFile(const char* button) {
    return [button](LivingWindow& w) { w.chooseFile(button); };
}

template <typename Window>
Step pressesIn(const char* button) {
    return [button](LivingWindow& w) { LivingWindow::press(w.opened<Window>(), button); };
}

template <typename Window>
Step types(const char* edit, const char* text) {
    return [=](LivingWindow& w) {
        if (const QWidget* const window = w.opened<Window>())
            guitest::find<QLineEdit>(*window, edit)->setText(text);
    };
}

template <typename Window>
Step checks(const char* box) {
    return [box](LivingWindow& w) {
        if (const QWidget* const window = w.opened<Window>())
            guitest::find<QCheckBox>(*window, box)->setChecked(true);
    };
}

/// An entry of the menu of the list's first row.
template <typename Window>
Step choosesForFirstRow(const char* entry) {
    return [entry](LivingWindow& w) {
        if (const QWidget* const window = w.opened<Window>())
            guitest::chooseForRow(*window, 0, entry);
    };
}

/// Answers the dialog that asks for a folder.
template <typename Window>
Step choosesFolder() {
    return [](LivingWindow& w) {
        if (const QWidget* const window = w.opened<Window>())
            guitest::chooseFolder(*window, QDir::currentPath());
    };
}

/// Takes a picture in the list window, lists, views and deletes it.
template <typename Window>
std::vector<Step> listSteps(const char* menuEntry, const char* captureButton) {
    return {chooses(menuEntry),
            pressesIn<Window>(captureButton),
            pressesIn<Window>("btn_refresh"),
            choosesForFirstRow<Window>("查看"),
            choosesForFirstRow<Window>("删除"),
            pressesIn<Window>("btn_delete_all")};
}

std::vector<Flow> pictureFlows() {
    return {
        {"CaptureType0", "rb_ost", CameraType::ostra, 3500ms, {presses("btn_takepic")}},
        {"CaptureType3", "rb_quenta", CameraType::quenta, 1500ms, {presses("btn_takepic")}},
        {"CaptureType4", "rb_dx_dt", CameraType::salesDynamic, 5500ms, {presses("btn_takepic")}},
        {"EndlessDownload",
         "rb_ost",
         CameraType::ostra,
         4500ms,
         {presses("btn_takepic")},
         "picture-size=-1@read"},
        {"List", "rb_ost", CameraType::ostra, 3000ms, listSteps<PicList>("actionPicInfo", "btn_takepic")},
        {"ListV1", "rb_dx_dt", CameraType::salesDynamic, 4500ms,
         listSteps<PicListV1>("actionPicInfoV1", "btn_capture")},
    };
}

/// Takes two pictures in the list window and lists them, then the steps.
template <typename Window>
std::vector<Step> twoPicturesThen(const char* menuEntry, const char* captureButton,
                                  const std::vector<Step>& steps) {
    std::vector<Step> all{chooses(menuEntry), pressesIn<Window>(captureButton),
                          pressesIn<Window>(captureButton), pressesIn<Window>("btn_refresh")};
    all.insert(all.end(), steps.begin(), steps.end());
    return all;
}

std::vector<Flow> severalPicturesFlows() {
    return {
        {"DownloadAll", "rb_ost", CameraType::ostra, 5500ms,
         twoPicturesThen<PicList>("actionPicInfo", "btn_takepic",
                                  {pressesIn<PicList>("btn_download_all"), choosesFolder<PicList>()})},
        {"DownloadAllV1", "rb_dx_dt", CameraType::salesDynamic, 7500ms,
         twoPicturesThen<PicListV1>("actionPicInfoV1", "btn_capture",
                                    {pressesIn<PicListV1>("btn_download_all"), choosesFolder<PicListV1>()})},
        {"ViewNeighbours", "rb_ost", CameraType::ostra, 6500ms,
         twoPicturesThen<PicList>("actionPicInfo", "btn_takepic",
                                  {choosesForFirstRow<PicList>("查看"), pressesIn<ImgDialog>("btn_next"),
                                   pressesIn<ImgDialog>("btn_previous")})},
    };
}

std::vector<Flow> settingFlows() {
    const auto ostra = CameraType::ostra;
    return {
        {"Versions", "rb_ost", ostra, 400ms, {presses("btn_appversion")}},
        {"JsonVersion", "rb_quenta", CameraType::quenta, 200ms, {presses("btn_appversion")}},
        {"SerialNumber",
         "rb_ost",
         ostra,
         7500ms,
         {chooses("actionSnSet"), pressesIn<SetSN>("btn_getsn"), pressesIn<SetSN>("btn_gensn"),
          pressesIn<SetSN>("btn_setsn")}},
        {"HeaterDuty",
         "rb_ost",
         ostra,
         3500ms,
         {chooses("actionPwmHeatSet"), pressesIn<SetPwmHeat>("btn_getheat"),
          pressesIn<SetPwmHeat>("btn_setheat")}},
        {"PictureRate",
         "rb_ost",
         ostra,
         3500ms,
         {chooses("actionactionPicRateSet"), pressesIn<SetPicRate>("btn_getsn"),
          types<SetPicRate>("et_setsn", "70"), pressesIn<SetPicRate>("btn_setsn")}},
        {"CaptureDegree",
         "rb_ost",
         ostra,
         1800ms,
         {chooses("actionCaptureDegree"), pressesIn<SetCaptureDegree>("btn_set3"),
          pressesIn<SetCaptureDegree>("btn_get2")}},
        {"CameraLocation", "rb_ost", ostra, 800ms, {chooses("actionInstallLocation")}},
    };
}

std::vector<Flow> aidFlows() {
    const auto ostra = CameraType::ostra;
    return {
        {"Finder",
         "rb_ost",
         ostra,
         1500ms,
         {chooses("actionFindCamera"), pressesIn<CameraFinderWindow>("btn_start")}},
        {"Checkup",
         "rb_ost",
         ostra,
         1800ms,
         {chooses("actionCheckup"), pressesIn<CheckupWindow>("btn_start")}},
        {"CheckupPicture",
         "rb_ost",
         ostra,
         5500ms,
         {chooses("actionCheckup"), checks<CheckupWindow>("cb_picture"),
          pressesIn<CheckupWindow>("btn_start")}},
        {"LineRecord",
         "rb_ost",
         ostra,
         1500ms,
         {chooses("actionLineRecord"), presses("btn_heartbeat"), checks<LineRecordWindow>("cb_odd"),
          presses("btn_modelinfo"), presses("btn_takepic")}},
    };
}

/// Presses the button in the status bar as often as it is offered.
Step keepsReopening() {
    return [](LivingWindow& w) {
        auto* const timer = new QTimer(w.window());
        QObject::connect(timer, &QTimer::timeout, timer, [&w] {
            auto* const button = guitest::find<QPushButton>(*w.window(), "btn_reopen");
            if (!w.hasEnded() && button->isVisible())
                button->click();
        });
        timer->start(50ms);
    };
}

Step plugs(bool in) {
    return [in](LivingWindow& w) { w.plug(in); };
}

std::vector<Flow> adapterFlows() {
    return {
        {"Reopening",
         "rb_ost",
         CameraType::ostra,
         3000ms,
         {keepsReopening(), presses("btn_heartbeat"), plugs(false), presses("btn_heartbeat"), plugs(true)}},
    };
}

std::vector<Flow> uploadFlows() {
    const auto ostra = CameraType::ostra;
    return {
        {"AppUpload", "rb_ost", ostra, 6500ms, {choosesFile("btn_apppath"), presses("btn_appupdate")}},
        {"SystemUpload",
         "rb_ost",
         ostra,
         6500ms,
         {choosesFile("btn_firewarepath"), presses("btn_firewareupdate")}},
        {"ModelUpload", "rb_ost", ostra, 5500ms, {choosesFile("btn_modelpath"), presses("btn_modelupdate")}},
        {"AppUploadV1",
         "rb_dx_dt",
         CameraType::salesDynamic,
         9000ms,
         {choosesFile("btn_apppath"), presses("btn_appupdate")}},
        {"ReturnWaitOfACameraThatStaysAway",
         "rb_ost",
         ostra,
         9000ms,
         {choosesFile("btn_apppath"), presses("btn_appupdate")},
         "stay-down@appUpdate"},
    };
}

} // namespace

const std::vector<Flow>& flows() {
    static const std::vector<Flow> all = [] {
        std::vector<Flow> list = pictureFlows();
        for (const auto& more :
             {severalPicturesFlows(), settingFlows(), uploadFlows(), aidFlows(), adapterFlows()})
            list.insert(list.end(), more.begin(), more.end());
        return list;
    }();
    return all;
}

} // namespace life
