// The rules for looks find planted faults, and none beside them.
#include "tests/looks/judge.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

using namespace looks;

namespace {

/// A window with a label and a button.
class LookJudge : public testing::Test {
protected:
    LookJudge() {
        auto* const layout = new QHBoxLayout(&window);
        layout->addWidget(label);
        layout->addWidget(button);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    /// Faults by all rules.
    QStringList faults() {
        window.setFocus();
        const QImage picture = pictureOf(window);
        return cutTexts(window) + misplacedWidgets(window) + paleTexts(window, picture) +
               paleBorders(window, picture) + invisibleFocus(window);
    }
    void expectOnly(const QString& words) {
        const QStringList found = faults();
        EXPECT_EQ(found.size(), 1) << found.join(u'\n').toStdString();
        EXPECT_TRUE(found.value(0).contains(words)) << found.join(u'\n').toStdString();
    }

    QWidget window;
    QLabel* label = new QLabel(QStringLiteral("串口未打开"));
    QPushButton* button = new QPushButton(QStringLiteral("打开串口"));
};

} // namespace

TEST_F(LookJudge, FindsNothingInAGoodWindow) {
    EXPECT_EQ(faults(), QStringList());
}

TEST_F(LookJudge, FindsATextWithoutRoom) {
    label->resize(label->width() / 2, label->height());
    expectOnly("needs");
}

TEST_F(LookJudge, AcceptsAnElidedTextWithAToolTip) {
    label->resize(label->width() / 2, label->height());
    label->setToolTip(label->text());
    EXPECT_EQ(faults(), QStringList());
}

TEST_F(LookJudge, FindsWidgetsThatCoverEachOther) {
    label->setGeometry(label->geometry().adjusted(0, 0, 20, 0));
    expectOnly("cover each other");
}

TEST_F(LookJudge, FindsAWidgetOutsideItsParent) {
    label->move(-3, label->y());
    expectOnly("reaches out");
}

TEST_F(LookJudge, FindsAPaleText) {
    label->setStyleSheet("color: #808080");
    expectOnly("contrast 3.4");
}

TEST_F(LookJudge, FindsAPaleBorder) {
    button->setStyleSheet("QPushButton { border: 1px solid #c0c0c0; padding: 6px; } QPushButton:focus { "
                          "border: 2px solid black; padding: 5px; }");
    QCoreApplication::processEvents(); // the layout
    expectOnly("QPushButton : contrast 1.");
}

TEST_F(LookJudge, FindsAMissingFocusRing) {
    button->setStyleSheet("border: 1px solid black; outline: none");
    expectOnly("the focus changes 0 pixels");
}
