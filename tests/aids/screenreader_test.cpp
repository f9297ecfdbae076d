// Names and tables of the additional windows and controls, as screen readers get them.
#include "aids/checkupwindow.h"
#include "aids/linerecordwindow.h"
#include "pictures/imgdialog.h"
#include "pictures/piclist.h"
#include "tests/aids/findertest.h"
#include "tests/support/printing.h"
#include "tests/support/recordedwindow.h"
#include "tests/support/stdoutcapture.h"
#include "tests/support/windowactions.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAccessible>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QTableWidget>

using namespace guitest;

namespace {

QString nameOf(QWidget* widget) {
    const QAccessibleInterface* const read = QAccessible::queryAccessibleInterface(widget);
    return read == nullptr ? QString() : read->text(QAccessible::Name);
}

bool isControl(const QWidget* widget) {
    return qobject_cast<const QAbstractButton*>(widget) != nullptr ||
           qobject_cast<const QAbstractItemView*>(widget) != nullptr ||
           qobject_cast<const QLineEdit*>(widget) != nullptr ||
           qobject_cast<const QPlainTextEdit*>(widget) != nullptr ||
           qobject_cast<const QProgressBar*>(widget) != nullptr;
}

/// Controls of the form; Qt gives names to its own parts.
void expectNames(const QWidget& window, int least) {
    int looked = 0;
    for (QWidget* const each : window.findChildren<QWidget*>()) {
        if (!isControl(each) || each->objectName().isEmpty() || each->objectName().startsWith("qt_"))
            continue;
        EXPECT_FALSE(nameOf(each).isEmpty()) << each->objectName().toStdString();
        ++looked;
    }
    EXPECT_GE(looked, least);
}

class ScreenReader : public RecordedWindow {
protected:
    template <typename Window>
    [[nodiscard]] Window& opened(const char* entry) const {
        trigger(*window, entry);
        return *openWindows<Window>().at(0);
    }
    StdoutCapture out;
};

/// Fills a table and compares what is read with it.
void expectReadAsTable(QTableWidget& table, const QStringList& titles) {
    table.setRowCount(2);
    for (int row = 0; row < 2; ++row) {
        for (int column = 0; column < table.columnCount(); ++column)
            table.setItem(row, column, new QTableWidgetItem(QString("%1-%2").arg(row).arg(column)));
    }
    QAccessibleInterface* const all = QAccessible::queryAccessibleInterface(&table);
    ASSERT_TRUE(all != nullptr && all->tableInterface() != nullptr);
    QAccessibleTableInterface& read = *all->tableInterface();
    EXPECT_EQ(read.rowCount(), 2);
    ASSERT_EQ(read.columnCount(), titles.size());
    for (int column = 0; column < read.columnCount(); ++column) {
        EXPECT_EQ(read.columnDescription(column), titles[column]);
        for (int row = 0; row < 2; ++row)
            EXPECT_EQ(read.cellAt(row, column)->text(QAccessible::Name), table.item(row, column)->text());
    }
}

} // namespace

TEST_F(ScreenReader, NamesTheControlsOfTheSearch) {
    expectNames(opened<CameraFinderWindow>("actionFindCamera"), 8);
}

TEST_F(ScreenReader, NamesTheControlsOfTheCheckup) {
    expectNames(opened<CheckupWindow>("actionCheckup"), 8);
}

TEST_F(ScreenReader, NamesTheControlsOfTheRecord) {
    expectNames(opened<LineRecordWindow>("actionLineRecord"), 10);
}

TEST_F(ScreenReader, NamesTheControlsOfTheList) {
    const PicList& list = opened<PicList>("actionPicInfo");
    for (const char* const button : {"btn_copy_list", "btn_download_all"})
        EXPECT_FALSE(nameOf(find<QWidget>(list, button)).isEmpty()) << button;
}

TEST_F(ScreenReader, NamesTheButtonsOfTheView) {
    const ImgDialog view;
    expectNames(view, 7);
}

TEST_F(ScreenReader, NamesTheStatusBarsButtons) {
    EXPECT_EQ(nameOf(find<QWidget>(*window, "btn_reopen")), "重新打开");
    EXPECT_EQ(nameOf(find<QWidget>(*window, "btn_stop_transfer")), "停止");
}

TEST_F(ScreenReader, ReadsTheFoundCameras) {
    expectReadAsTable(*find<QTableWidget>(opened<CameraFinderWindow>("actionFindCamera"), "table_found"),
                      {"串口", "波特率", "从机地址（十六进制）", "应答时间"});
}

TEST_F(ScreenReader, ReadsTheCheckup) {
    const CheckupWindow& checkup = opened<CheckupWindow>("actionCheckup");
    expectReadAsTable(*find<QTableWidget>(checkup, "table_lines"), {"项目", "读数", "判断"});
    expectReadAsTable(*find<QTableWidget>(checkup, "table_visit"), {"时间", "序列号", "结论"});
}

TEST_F(ScreenReader, ReadsTheRecordsTitles) {
    const auto* const table = find<QTableView>(opened<LineRecordWindow>("actionLineRecord"), "table");
    QAccessibleInterface* const all = QAccessible::queryAccessibleInterface(const_cast<QTableView*>(table));
    ASSERT_TRUE(all != nullptr && all->tableInterface() != nullptr);
    const QAbstractItemModel* const model = table->model();
    ASSERT_EQ(all->tableInterface()->columnCount(), model->columnCount());
    for (int column = 0; column < model->columnCount(); ++column) {
        const QString title = all->tableInterface()->columnDescription(column);
        EXPECT_FALSE(title.isEmpty());
        EXPECT_EQ(title, model->headerData(column, Qt::Horizontal).toString());
    }
}
