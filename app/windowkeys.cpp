#include "app/windowkeys.h"

#include <QAction>
#include <QCoreApplication>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QShortcut>

#include <array>
#include <vector>

namespace {

/// Keys of controls. Deleting all pictures, reboot and reset have none: a mistyped key is too easy.
struct ControlKey {
    const char* window;   ///< class
    const char* controls; ///< object names of one or several, separated by blanks
    const char* keys;
};

constexpr auto controlKeys = std::to_array<ControlKey>({
    {"MainWindow", "menu", "Alt+S"},
    {"MainWindow", "menu_2", "Alt+F"},
    {"MainWindow", "menu_3", "Alt+H"},
    {"MainWindow", "btn_more", "Alt+M"},
    {"MainWindow", "actionaddress", "Ctrl+,"},
    {"MainWindow", "actionSnSet", "Ctrl+1"},
    {"MainWindow", "actionPwmHeatSet", "Ctrl+2"},
    {"MainWindow", "actionInstallLocation", "Ctrl+3"},
    {"MainWindow", "actionCaptureDegree", "Ctrl+4"},
    {"MainWindow", "actionactionPicRateSet", "Ctrl+5"},
    {"MainWindow", "actionPicInfo", "Ctrl+6"},
    {"MainWindow", "actionPicInfoV1", "Ctrl+7"},
    {"MainWindow", "actionOpenCloseDoor", "Ctrl+8"},
    {"MainWindow", "actionOriginCmdExtraAdd", "Ctrl+9"},
    {"MainWindow", "sel_ports", "Alt+P"},
    {"MainWindow", "sel_baund", "Alt+B"},
    {"MainWindow", "btn_open", "Ctrl+L"},
    {"MainWindow", "btn_reopen", "Alt+R"},
    {"MainWindow", "btn_test", "Alt+T"},
    {"MainWindow", "btn_heartbeat", "Ctrl+T"},
    {"MainWindow", "btn_appversion", "F5"},
    {"MainWindow", "btn_takepic", "Ctrl+P"},
    {"MainWindow", "btn_modelinfo", "Ctrl+M"},
    {"MainWindow", "et_modelname", "Alt+N"},
    {"MainWindow", "btn_gyro", "Ctrl+G"},
    {"MainWindow", "btn_appupdate", "Alt+A"},
    {"MainWindow", "btn_firewareupdate", "Alt+L"},
    {"MainWindow", "btn_modelupdate", "Alt+D"},
    {"MainWindow", "btn_stop_transfer", "Alt+X"},

    {"SetCameraProtocol", "rb_ost", "Alt+1"},
    {"SetCameraProtocol", "rb_dvl", "Alt+2"},
    {"SetCameraProtocol", "rb_quenta", "Alt+3"},
    {"SetCameraProtocol", "rb_dx", "Alt+4"},
    {"SetCameraProtocol", "rb_dx_dt", "Alt+5"},
    {"SetCameraProtocol", "btn_confirm", "Ctrl+Return"},
    {"SetSN", "btn_gensn", "Ctrl+G"},
    {"SetSN", "btn_setsn", "Ctrl+S"},
    {"SetSN", "btn_getsn", "F5"},
    {"SetPwmHeat", "btn_setheat", "Ctrl+S"},
    {"SetPwmHeat", "btn_getheat", "F5"},
    {"SetPicRate", "btn_setsn", "Ctrl+S"},
    {"SetPicRate", "btn_getsn", "F5"},
    {"SetCaptureDegree", "btn_get1 btn_get2 btn_get3", "F5"},
    {"SetCaptureDegree", "btn_set1", "Alt+1"},
    {"SetCaptureDegree", "btn_set2", "Alt+2"},
    {"SetCaptureDegree", "btn_set3", "Alt+3"},
    {"SetCameraLocation", "btn_refresh", "F5"},
    {"DoorOp", "btn_open", "Alt+O"},
    {"DoorOp", "btn_close", "Alt+C"},

    {"PictureListWindow", "btn_refresh", "F5"},
    {"PictureListWindow", "btn_takepic btn_capture", "Ctrl+P"},
    {"PictureListWindow", "btn_download_all", "Ctrl+D"},
    {"PictureListWindow", "btn_copy_list", "Ctrl+Shift+C"},

    {"CameraFinderWindow", "btn_start", "F5"},
    {"CheckupWindow", "btn_start", "F5"},
    {"CheckupWindow", "btn_save", "Ctrl+S"},
    {"LineRecordWindow", "btn_openfile", "Ctrl+O"},
    {"LineRecordWindow", "btn_save", "Ctrl+S"},
});

void use(QWidget* control) {
    if (!control->isEnabled())
        return;
    if (auto* const menu = qobject_cast<QMenu*>(control)) {
        if (auto* const bar = qobject_cast<QMenuBar*>(menu->parentWidget()))
            bar->setActiveAction(menu->menuAction());
    } else if (!control->isVisible()) {
        return;
    } else if (auto* const button = qobject_cast<QAbstractButton*>(control)) {
        button->click();
    } else {
        control->setFocus(Qt::ShortcutFocusReason);
    }
}

void explain(QWidget* control, const QKeySequence& keys) {
    const QString text = keys.toString(QKeySequence::NativeText);
    const QString tip = control->toolTip();
    control->setToolTip(tip.isEmpty() ? QCoreApplication::translate("WindowKeys", "按键：%1").arg(text)
                                      : QStringLiteral("%1（%2）").arg(tip, text));
}

void give(QWidget* window, const ControlKey& row) {
    const QKeySequence keys(QLatin1String(row.keys));
    std::vector<QWidget*> controls;
    for (const QString& name : QString::fromLatin1(row.controls).split(QLatin1Char(' '))) {
        if (auto* const entry = window->findChild<QAction*>(name)) {
            entry->setShortcut(keys);
            return;
        }
        if (auto* const control = window->findChild<QWidget*>(name)) {
            explain(control, keys);
            controls.push_back(control);
        }
    }
    auto* const shortcut = new QShortcut(keys, window);
    shortcut->setAutoRepeat(false);
    QObject::connect(shortcut, &QShortcut::activated, window, [controls] {
        for (QWidget* const control : controls)
            use(control);
    });
}

} // namespace

void pressButtonsByEnter(QWidget* window) {
    // Only dialogs get this by themselves.
    for (QPushButton* const button : window->findChildren<QPushButton*>())
        button->setAutoDefault(true);
}

void closeByEscape(QWidget* window) {
    QObject::connect(new QShortcut(QKeySequence::Cancel, window), &QShortcut::activated, window,
                     &QWidget::close);
}

void giveKeys(QWidget* window) {
    for (const ControlKey& row : controlKeys) {
        if (window->inherits(row.window))
            give(window, row);
    }
}
