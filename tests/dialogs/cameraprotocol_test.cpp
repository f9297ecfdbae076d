// The window for camera type and address, and its hexadecimal field.
#include "dialogs/hexspinbox.h"
#include "dialogs/setcameraprotocol.h"
#include "tests/support/guitest.h"
#include "tests/support/printing.h"

#include <QApplication>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QVBoxLayout>

#include <gtest/gtest.h>

using namespace guitest;

namespace {

/// Makes the protected conversions public.
class OpenHexSpinBox final : public QObject {
public:
    [[nodiscard]] static QString shown(int value) {
        HexSpinBox box;
        box.setRange(0, 255);
        box.setValue(value);
        return box.text();
    }
};

class CameraProtocol : public testing::Test {
protected:
    SetCameraProtocol& open(std::uint32_t presentAddress, std::uint32_t presentType) {
        address = presentAddress;
        type = presentType;
        dialog = new SetCameraProtocol(&address, &type);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->show();
        return *dialog;
    }
    void TearDown() override { delete dialog; }

    [[nodiscard]] HexSpinBox* field() const {
        return find<QFrame>(*dialog, "frame")->findChild<HexSpinBox*>("hex_sb");
    }
    void retype(const char* typed) const {
        field()->lineEdit()->selectAll();
        QTest::keyClick(field()->lineEdit(), Qt::Key_Delete);
        QTest::keyClicks(field()->lineEdit(), typed);
    }
    void confirm() {
        find<QPushButton>(*dialog, "btn_confirm")->click();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    std::uint32_t address = 0;
    std::uint32_t type = 0;
    QPointer<SetCameraProtocol> dialog;
};

} // namespace

TEST_F(CameraProtocol, HasItsSizeTitleAndTexts) {
    open(1, 0);
    EXPECT_EQ(dialog->size(), QSize(483, 300));
    EXPECT_EQ(dialog->windowTitle(), "摄像头设置");
    EXPECT_EQ(text(*dialog, "label"), "从机地址设置(十六进制)");
    EXPECT_EQ(text(*dialog, "label_2"), "摄像头选择");
    EXPECT_EQ(text(*dialog, "label_3"), "0x");
    EXPECT_EQ(text(*dialog, "btn_confirm"), "确认");
    EXPECT_EQ(text(*dialog, "rb_ost"), "Ostra");
    EXPECT_EQ(text(*dialog, "rb_dvl"), "Dorvel");
    EXPECT_EQ(text(*dialog, "rb_dx"), "动销-静态");
    EXPECT_EQ(text(*dialog, "rb_quenta"), "Quenta静态");
    EXPECT_EQ(text(*dialog, "rb_dx_dt"), "动销-动态");
}

TEST_F(CameraProtocol, TellsAddressAndRateOfEachType) {
    open(1, 0);
    EXPECT_EQ(find<QWidget>(*dialog, "rb_dvl")->toolTip(), "常用地址 EE，波特率 460800");
    EXPECT_EQ(find<QWidget>(*dialog, "rb_quenta")->toolTip(), "常用地址 3，波特率 230400");
}

TEST_F(CameraProtocol, HostsTheHexadecimalFieldInItsPlaceholder) {
    open(1, 0);
    ASSERT_NE(field(), nullptr);
    EXPECT_EQ(field()->minimum(), 0);
    EXPECT_EQ(field()->maximum(), 255);
    const auto* const host = find<QWidget>(*dialog, "sb_hex");
    EXPECT_EQ(field()->parentWidget(), host);
    ASSERT_NE(host->layout(), nullptr);
    EXPECT_EQ(host->layout()->objectName(), "hex_layout");
    EXPECT_EQ(host->layout()->spacing(), 0);
    EXPECT_EQ(host->layout()->contentsMargins(), QMargins());
    const auto* const validator =
        qobject_cast<const QRegularExpressionValidator*>(field()->lineEdit()->validator());
    ASSERT_NE(validator, nullptr);
    EXPECT_EQ(validator->regularExpression().pattern(), "^[0-9A-Fa-f]{1,2}$");
}

TEST_F(CameraProtocol, ArrangesTheTypesInTwoRows) {
    open(1, 0);
    auto* const grid = find<QGridLayout>(*dialog, "gridLayout");
    EXPECT_EQ(grid->count(), 5);
    const auto at = [grid](int row, int column) {
        return grid->itemAtPosition(row, column)->widget()->objectName();
    };
    EXPECT_EQ(at(0, 0), "rb_ost");
    EXPECT_EQ(at(0, 1), "rb_dvl");
    EXPECT_EQ(at(0, 2), "rb_quenta");
    EXPECT_EQ(at(1, 0), "rb_dx");
    EXPECT_EQ(at(1, 1), "rb_dx_dt");
}

TEST_F(CameraProtocol, KeepsItsContainers) {
    open(1, 0);
    EXPECT_EQ(dialog->layout(), find<QVBoxLayout>(*dialog, "verticalLayout"));
    EXPECT_EQ(find<QWidget>(*dialog, "frame")->layout()->objectName(), "horizontalLayout_2");
    EXPECT_EQ(find<QWidget>(*dialog, "frame_2")->layout()->objectName(), "gridLayout");
    EXPECT_EQ(find<QWidget>(*dialog, "widget")->layout()->objectName(), "horizontalLayout_3");
}

TEST_F(CameraProtocol, ShowsTheAddressInHexadecimalAndNoPreset) {
    open(0xEE, 2);
    EXPECT_EQ(field()->text(), "EE");
    EXPECT_TRUE(find<QRadioButton>(*dialog, "rb_dx")->isChecked());
}

TEST_F(CameraProtocol, ChecksTheButtonOfEachType) {
    const char* const names[] = {"rb_ost", "rb_dvl", "rb_dx", "rb_quenta", "rb_dx_dt"};
    for (std::uint32_t each = 0; each < 5; ++each) {
        open(9, each);
        EXPECT_TRUE(find<QRadioButton>(*dialog, names[each])->isChecked()) << names[each];
        EXPECT_EQ(field()->text(), "9");
        confirm();
        EXPECT_EQ(type, each);
        EXPECT_EQ(address, 9U);
    }
}

TEST_F(CameraProtocol, TakesAnUnknownTypeForTheFirst) {
    open(1, 7);
    EXPECT_TRUE(find<QRadioButton>(*dialog, "rb_ost")->isChecked());
    confirm();
    EXPECT_EQ(type, 0U);
}

TEST_F(CameraProtocol, PresetsTheAddressOnEveryClick) {
    open(0x55, 0);
    const std::vector<std::pair<const char*, int>> presets = {
        {"rb_ost", 1}, {"rb_dvl", 238}, {"rb_dx", 1}, {"rb_quenta", 3}, {"rb_dx_dt", 2}};
    for (const auto& [name, preset] : presets) {
        click(*dialog, name);
        EXPECT_EQ(field()->value(), preset) << name;
        field()->setValue(0x55);
        click(*dialog, name);
        EXPECT_EQ(field()->value(), preset) << name << " clicked again";
    }
}

TEST_F(CameraProtocol, StoresTypeAndCorrectedAddress) {
    open(1, 0);
    click(*dialog, "rb_dvl");
    retype("5");
    confirm();
    EXPECT_EQ(address, 5U);
    EXPECT_EQ(type, 1U);
    EXPECT_EQ(dialog, nullptr) << "closed and deleted";
}

TEST_F(CameraProtocol, ShowsUpperCaseWhenEditingIsFinished) {
    open(1, 0);
    retype("ee");
    QTest::keyClick(field()->lineEdit(), Qt::Key_Return);
    EXPECT_EQ(field()->text(), "EE");
    EXPECT_EQ(field()->value(), 238);
    confirm();
    EXPECT_EQ(address, 238U);
}

TEST_F(CameraProtocol, TakesAnUnfinishedInput) {
    open(1, 0);
    retype("ee");
    confirm();
    EXPECT_EQ(address, 238U);
}

TEST_F(CameraProtocol, ReadsDecimalLookingDigitsAsHexadecimal) {
    open(1, 0);
    retype("10");
    EXPECT_EQ(field()->value(), 16);
    confirm();
    EXPECT_EQ(address, 16U);
}

TEST_F(CameraProtocol, RefusesAThirdDigitAndOtherLetters) {
    open(1, 0);
    retype("1FF");
    EXPECT_EQ(field()->lineEdit()->text(), "1F");
    retype("g-x");
    EXPECT_EQ(field()->lineEdit()->text(), "");
}

TEST_F(CameraProtocol, TakesAnEmptyFieldForZero) {
    open(5, 0);
    retype("");
    confirm();
    EXPECT_EQ(address, 0U);
}

TEST_F(CameraProtocol, KeepsBothValuesWhenClosed) {
    open(5, 2);
    click(*dialog, "rb_dvl");
    retype("77");
    dialog->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(dialog, nullptr);
    EXPECT_EQ(address, 5U);
    EXPECT_EQ(type, 2U);
}

TEST_F(CameraProtocol, LetsTheAddressBeTypedAtOnce) {
    open(0x1F, 0);
    dialog->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(dialog));
    ASSERT_TRUE(eventually([this] { return field()->lineEdit()->hasSelectedText(); }));
    EXPECT_EQ(field()->lineEdit()->selectedText(), "1F");
    EXPECT_TRUE(field()->hasFocus());
    EXPECT_EQ(field()->focusPolicy(), Qt::StrongFocus);
}

TEST_F(CameraProtocol, MayBeDeletedBeforeItTakesTheFocus) {
    open(1, 0);
    delete dialog;
    QTest::qWait(250);
    EXPECT_EQ(address, 1U);
}

TEST(HexadecimalField, ShowsUpperCaseWithoutPrefixOrPadding) {
    EXPECT_EQ(OpenHexSpinBox::shown(238), "EE");
    EXPECT_EQ(OpenHexSpinBox::shown(1), "1");
    EXPECT_EQ(OpenHexSpinBox::shown(0), "0");
}

TEST(HexadecimalField, CorrectsItsInput) {
    const DebugLog log;
    HexSpinBox box;
    box.setRange(0, 255);
    QString input = " ee ";
    box.fixup(input);
    EXPECT_EQ(input, "EE");
    EXPECT_EQ(box.value(), 238);
    EXPECT_TRUE(DebugLog::has("ee  here  ee"));
    input = "zz";
    box.fixup(input);
    EXPECT_EQ(box.value(), 0);
}
