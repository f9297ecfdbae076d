// The main window after the start: widgets, texts, menus, enabled controls.
#include "app/mainwindow.h"
#include "dialogs/doorop.h"
#include "tests/fake/fakeserial.h"
#include "tests/support/guitest.h"
#include "tests/support/printing.h"

#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QRadioButton>
#include <QStatusBar>
#include <QVBoxLayout>

#include <gtest/gtest.h>

using namespace guitest;

namespace {

struct Row {
    const char* name;
    const char* kind; ///< class name as Qt gives it
    const char* text;
};

constexpr Row widgetTree[] = {
    {"label", "QLabel", "图片显示区"},
    {"label_modelinfo", "QLabel", ""},
    {"btn_modelinfo", "QPushButton", "获取模型信息"},
    {"btn_modelpath", "QPushButton", "模型路径"},
    {"et_modelname", "QLineEdit", ""},
    {"btn_modelupdate", "QPushButton", "模型升级"},
    {"label_slaveinfo", "QLabel", "当前从机地址:1"},
    {"btn_open", "QPushButton", "打开串口"},
    {"btn_test", "QPushButton", "test"},
    {"btn_heartbeat", "QPushButton", "心跳测试"},
    {"rb_heartbeat", "QRadioButton", ""},
    {"btn_appversion", "QPushButton", "获取版本号"},
    {"tv_appversion", "QLabel", ""},
    {"btn_takepic", "QPushButton", "拍照"},
    {"btn_apppath", "QPushButton", "App固件路径"},
    {"btn_appupdate", "QPushButton", "App固件升级"},
    {"btn_firewarepath", "QPushButton", "Linux系统固件路径"},
    {"btn_firewareupdate", "QPushButton", "Linux系统固件升级"},
    {"btn_gyro", "QPushButton", "陀螺仪测试"},
    {"label_apppath", "QLabel", ""},
    {"label_firewarepath", "QLabel", ""},
    {"label_modelpath", "QLabel", ""},
};

struct LayoutRow {
    const char* container;
    const char* layout;
    bool vertical;
    std::vector<const char*> widgets; ///< from the first to the last
};

const std::vector<LayoutRow> layouts = {
    {"centralwidget", "verticalLayout", true, {"frame_top", "frame_bottom"}},
    {"frame_top", "horizontalLayout_6", false, {"label", "frame_7"}},
    {"frame_7",
     "verticalLayout_6",
     true,
     {"label_modelinfo", "btn_modelinfo", "btn_modelpath", "et_modelname", "btn_modelupdate"}},
    {"frame_bottom", "horizontalLayout", false, {"frame", "frame_2", "frame_3", "frame_path"}},
    {"frame",
     "verticalLayout_2",
     true,
     {"label_slaveinfo", "sel_ports", "sel_baund", "btn_open", "btn_test"}},
    {"frame_2", "verticalLayout_3", true, {"frame_4", "frame_5", "frame_6"}},
    {"frame_4", "horizontalLayout_2", false, {"btn_heartbeat", "rb_heartbeat"}},
    {"frame_5", "horizontalLayout_3", false, {"btn_appversion", "tv_appversion"}},
    {"frame_6", "horizontalLayout_4", false, {"btn_takepic"}},
    {"frame_3",
     "verticalLayout_4",
     true,
     {"btn_apppath", "btn_appupdate", "btn_firewarepath", "btn_firewareupdate", "btn_gyro"}},
    {"frame_path", "verticalLayout_5", true, {"label_apppath", "label_firewarepath", "label_modelpath"}},
};

/// Headings, marks and hints beside the widgets.
bool isCaption(const QString& name) {
    return name.startsWith("heading_") || name.startsWith("mark_") || name.endsWith("_nopath");
}

/// In the order of the layout; a row in a column counts as its widgets.
QStringList namesIn(const QLayout& layout) {
    QStringList names;
    for (int index = 0; index < layout.count(); ++index) {
        QLayoutItem* const item = layout.itemAt(index);
        if (item->layout() != nullptr)
            names.append(namesIn(*item->layout()));
        else if (item->widget() != nullptr && !isCaption(item->widget()->objectName()))
            names.append(item->widget()->objectName());
    }
    return names;
}

QStringList entries(const QMenu& menu) {
    QStringList names;
    for (const QAction* const action : menu.actions())
        names.append(action->menu() != nullptr ? action->menu()->objectName() : action->objectName());
    return names;
}

class MainWindowAtStart : public testing::Test {
protected:
    void SetUp() override {
        fake_serial::reset();
        fake_serial::setPorts({{"/dev/ttyA", "first", "n/a"}, {"/dev/ttyB", "second", "n/a"}});
    }
};

} // namespace

TEST_F(MainWindowAtStart, BearsTheToolsNameMakerAndVersion) {
    const MainWindow window;
    EXPECT_EQ(window.windowTitle(), "摄像头测试-Tessaly v(0.2.2)");
}

TEST_F(MainWindowAtStart, HasEveryWidgetWithItsKindAndText) {
    const MainWindow window;
    for (const Row& row : widgetTree) {
        EXPECT_STREQ(find<QWidget>(window, row.name)->metaObject()->className(), row.kind) << row.name;
        EXPECT_EQ(text(window, row.name), row.text) << row.name;
    }
    EXPECT_EQ(find<QLineEdit>(window, "et_modelname")->placeholderText(),
              "请输入下发的模型名称(无须后缀),例如model_v1");
    EXPECT_EQ(window.centralWidget()->objectName(), "centralwidget");
    EXPECT_EQ(window.menuBar()->objectName(), "menubar");
    EXPECT_EQ(window.statusBar()->objectName(), "statusbar");
}

TEST_F(MainWindowAtStart, ArrangesTheWidgetsInTheirLayouts) {
    const MainWindow window;
    for (const LayoutRow& row : layouts) {
        const QLayout* const layout = find<QWidget>(window, row.container)->layout();
        ASSERT_NE(layout, nullptr) << row.container;
        EXPECT_EQ(layout->objectName(), row.layout);
        EXPECT_EQ(qobject_cast<const QVBoxLayout*>(layout) != nullptr, row.vertical) << row.layout;
        EXPECT_EQ(qobject_cast<const QHBoxLayout*>(layout) != nullptr, !row.vertical) << row.layout;
        EXPECT_EQ(namesIn(*layout), QStringList(row.widgets.begin(), row.widgets.end())) << row.layout;
    }
}

TEST_F(MainWindowAtStart, OffersTheMenusInTheirOrder) {
    const MainWindow window;
    QStringList menus;
    for (const QAction* const action : window.menuBar()->actions())
        menus.append(action->menu()->objectName());
    EXPECT_EQ(menus, QStringList({"menu", "menu_2", "menu_3"}));
    EXPECT_EQ(find<QMenu>(window, "menu")->title(), "设置");
    EXPECT_EQ(find<QMenu>(window, "menu_2")->title(), "功能");
    EXPECT_EQ(find<QMenu>(window, "menu_3")->title(), "帮助");
    EXPECT_EQ(find<QMenu>(window, "menu_sn")->title(), "查询与设置属性");
    EXPECT_EQ(entries(*find<QMenu>(window, "menu")),
              QStringList({"actionaddress", "actionOriginCmdExtraAdd"}));
    EXPECT_EQ(entries(*find<QMenu>(window, "menu_2")),
              QStringList({"menu_sn", "actionReboot", "actionResetFactory", "actionPicInfo",
                           "actionPicInfoV1", "actionOpenCloseDoor"}));
    EXPECT_EQ(entries(*find<QMenu>(window, "menu_sn")),
              QStringList({"actionSnSet", "actionPwmHeatSet", "actionInstallLocation", "actionCaptureDegree",
                           "actionactionPicRateSet"}));
    EXPECT_EQ(entries(*find<QMenu>(window, "menu_3")), QStringList({"actionAbout"}));
}

TEST_F(MainWindowAtStart, NamesTheMenuEntries) {
    const MainWindow window;
    const std::vector<std::pair<const char*, const char*>> texts = {
        {"actionaddress", "摄像头设置"},
        {"actionOriginCmdExtraAdd", "图片命令附加"},
        {"actionReboot", "重启摄像头"},
        {"actionResetFactory", "恢复出厂设置"},
        {"actionPicInfo", "查看排面图片"},
        {"actionPicInfoV1", "查看动销图片"},
        {"actionOpenCloseDoor", "模拟开关门"},
        {"actionSnSet", "序列号"},
        {"actionPwmHeatSet", "加热丝占空比"},
        {"actionInstallLocation", "摄像头安装位置"},
        {"actionCaptureDegree", "陀螺仪抓图角度"},
        {"actionactionPicRateSet", "图片压缩率"},
        {"actionAbout", "关于"},
    };
    for (const auto& [name, expected] : texts)
        EXPECT_EQ(find<QAction>(window, name)->text(), expected) << name;
}

TEST_F(MainWindowAtStart, ListsPortsAndRatesAndChoosesTheFirst) {
    const DebugLog log;
    const MainWindow window;
    const auto* const ports = find<QComboBox>(window, "sel_ports");
    ASSERT_EQ(ports->count(), 2);
    EXPECT_EQ(ports->itemText(0), "/dev/ttyA");
    EXPECT_EQ(ports->itemText(1), "/dev/ttyB");
    EXPECT_EQ(ports->currentIndex(), 0);
    const auto* const rates = find<QComboBox>(window, "sel_baund");
    QStringList offered;
    for (int index = 0; index < rates->count(); ++index)
        offered.append(rates->itemText(index));
    EXPECT_EQ(offered, QStringList({"460800", "230400", "115200", "9600"}));
    EXPECT_EQ(rates->currentIndex(), 0);
    EXPECT_TRUE(DebugLog::has("init port: /dev/ttyA"));
    EXPECT_TRUE(DebugLog::has("Application version: " CAMERA_TOOL_VERSION));
}

TEST_F(MainWindowAtStart, LogsAnEmptyNameWhenThereIsNoPort) {
    fake_serial::setPorts({});
    const DebugLog log;
    const MainWindow window;
    EXPECT_EQ(find<QComboBox>(window, "sel_ports")->count(), 0);
    EXPECT_TRUE(DebugLog::has("init port:"));
}

TEST_F(MainWindowAtStart, ShowsReadinessAndPortCountSoonAfterStart) {
    const MainWindow window;
    EXPECT_EQ(statusText(window), "");
    EXPECT_TRUE(eventually([&] { return statusText(window).contains("准备就绪，发现 2 个串口"); }));
}

TEST_F(MainWindowAtStart, AsksForTheAdapterWhenThereIsNoPort) {
    fake_serial::setPorts({});
    const MainWindow window;
    EXPECT_TRUE(eventually([&] { return statusText(window).contains("没有发现串口"); }));
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(MainWindowAtStart, KeepsAnEarlierMessageOfAnAction) {
    MainWindow window;
    window.show();
    click(window, "btn_open");
    const QString opened = statusText(window);
    EXPECT_NE(opened, "");
    QTest::qWait(150);
    EXPECT_EQ(statusText(window), opened);
}

TEST_F(MainWindowAtStart, OpensNoPortByItself) {
    MainWindow window;
    window.show();
    QTest::qWait(150);
    EXPECT_TRUE(fake_serial::calls().empty());
}

TEST_F(MainWindowAtStart, DisablesWhatNeedsALink) {
    const MainWindow window;
    for (const char* const name :
         {"sel_ports", "sel_baund", "btn_open", "btn_gyro", "btn_modelupdate", "btn_test"})
        EXPECT_TRUE(isEnabled(window, name)) << name;
    for (const char* const name : {"btn_heartbeat", "rb_heartbeat", "btn_appversion", "btn_takepic",
                                   "btn_apppath", "btn_appupdate", "btn_firewarepath", "btn_firewareupdate",
                                   "label_modelinfo", "btn_modelinfo", "btn_modelpath", "et_modelname"})
        EXPECT_FALSE(isEnabled(window, name)) << name;
    for (const QAction* const action : window.findChildren<QAction*>())
        EXPECT_TRUE(action->isEnabled()) << action->objectName().toStdString();
}

TEST_F(MainWindowAtStart, HidesThePathsUntilAFileIsChosen) {
    MainWindow window;
    window.show();
    for (const char* const name : {"frame_path", "label_apppath", "label_firewarepath", "label_modelpath"})
        EXPECT_TRUE(find<QWidget>(window, name)->isHidden()) << name;
}

TEST_F(MainWindowAtStart, HasALampThatTheUserCannotSwitch) {
    MainWindow window;
    window.show();
    auto* const lamp = find<QRadioButton>(window, "rb_heartbeat");
    EXPECT_FALSE(lamp->isCheckable());
    EXPECT_FALSE(lamp->isChecked());
    EXPECT_EQ(lamp->focusPolicy(), Qt::NoFocus);
    EXPECT_TRUE(lamp->testAttribute(Qt::WA_TransparentForMouseEvents));
}

TEST_F(MainWindowAtStart, GivesThePictureTheHeightThatIsLeft) {
    MainWindow window;
    window.resize(1000, 620);
    window.show();
    const auto* const picture = find<QLabel>(window, "label");
    const QSize before = picture->size();
    window.resize(1200, 700);
    QTest::qWait(20);
    EXPECT_EQ(picture->width() - before.width(), 100); // the half above its panels
    EXPECT_EQ(picture->height() - before.height(), 80);
    // A picture larger than its area does not push anything aside.
    const QSize now = picture->size();
    find<QLabel>(window, "label")->setPixmap(QPixmap(3000, 2000));
    QTest::qWait(20);
    EXPECT_EQ(picture->size(), now);
    EXPECT_EQ(window.size(), QSize(1200, 700));
}

TEST_F(MainWindowAtStart, KeepsThePictureAsHighWhenPathsAppear) {
    MainWindow window;
    window.show();
    const int before = find<QLabel>(window, "label")->height();
    find<QFrame>(window, "frame_path")->show();
    for (const char* const name : {"label_apppath", "label_firewarepath", "label_modelpath"}) {
        auto* const label = find<QLabel>(window, name);
        label->setText("/a/rather/long/path/" + QString(300, 'x'));
        label->show();
    }
    QTest::qWait(20);
    EXPECT_EQ(find<QLabel>(window, "label")->height(), before);
    EXPECT_GT(find<QLabel>(window, "label_modelpath")->height(), 20);
}

TEST_F(MainWindowAtStart, FitsASmallScreen) {
    const MainWindow window;
    const QSize least = window.minimumSizeHint();
    EXPECT_LE(least.width(), 728);
    EXPECT_LE(least.height(), 520);
}

TEST_F(MainWindowAtStart, NamesControlsForScreenReaders) {
    const MainWindow window;
    for (const char* const name : {"label", "et_modelname", "sel_ports", "sel_baund", "rb_heartbeat"})
        EXPECT_FALSE(find<QWidget>(window, name)->accessibleName().isEmpty()) << name;
}

TEST_F(MainWindowAtStart, ReadsValuesToScreenReaders) {
    const MainWindow window;
    for (const char* const name :
         {"label_modelinfo", "tv_appversion", "label_apppath", "label_firewarepath", "label_modelpath"}) {
        auto* const label = find<QLabel>(window, name);
        label->setText("1.2.3");
        const QAccessibleInterface* const read = QAccessible::queryAccessibleInterface(label);
        EXPECT_EQ(read->text(QAccessible::Name), "1.2.3") << name;
        EXPECT_FALSE(read->text(QAccessible::Description).isEmpty()) << name;
    }
}

// On Linux Qt gives a combo box's value as its name and the tool tip as its description.
TEST_F(MainWindowAtStart, DescribesChoicesToScreenReaders) {
    const MainWindow window;
    EXPECT_TRUE(find<QWidget>(window, "sel_ports")->toolTip().startsWith("串口"));
    EXPECT_TRUE(find<QWidget>(window, "sel_baund")->toolTip().startsWith("波特率"));
}

TEST_F(MainWindowAtStart, MovesTheFocusInReadingOrder) {
    MainWindow window;
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    EXPECT_EQ(QApplication::focusWidget(), find<QWidget>(window, "btn_open"));
    QStringList visited;
    for (int step = 0; step < 5; ++step) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        visited.append(QApplication::focusWidget()->objectName());
    }
    EXPECT_EQ(visited, QStringList({"btn_test", "btn_gyro", "btn_more", "btn_modelupdate", "sel_ports"}));
}
