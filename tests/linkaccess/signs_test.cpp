// The signs of actions as icons.
#include "linkaccess/signs.h"

#include <QApplication>
#include <QPushButton>

#include <gtest/gtest.h>

namespace {

constexpr QSize iconSize{32, 32};
constexpr Sign actions[] = {Sign::open,  Sign::close, Sign::heartbeat, Sign::picture, Sign::upload,
                            Sign::check, Sign::find,  Sign::log,       Sign::more};

QImage pictureOf(Sign sign, QIcon::Mode mode = QIcon::Normal) {
    return signIcon(sign).pixmap(iconSize, mode).toImage();
}

/// Colour of the most opaque pixel.
QColor inkOf(const QImage& picture) {
    QColor ink(0, 0, 0, 0);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (picture.pixelColor(x, y).alpha() > ink.alpha())
                ink = picture.pixelColor(x, y);
        }
    }
    return ink;
}

} // namespace

TEST(SignIcon, DiffersForEachSign) {
    std::vector<QImage> seen{pictureOf(Sign::success), pictureOf(Sign::warning), pictureOf(Sign::failure)};
    for (const Sign action : actions)
        seen.push_back(pictureOf(action));
    for (std::size_t i = 0; i < seen.size(); ++i) {
        EXPECT_GT(inkOf(seen[i]).alpha(), 250) << i;
        for (std::size_t j = 0; j < i; ++j)
            EXPECT_NE(seen[i], seen[j]) << i << ' ' << j;
    }
    EXPECT_EQ(inkOf(pictureOf(Sign::none)).alpha(), 0);
}

TEST(SignIcon, KeepsItsStrokesInside) {
    for (const Sign action : actions) {
        const QImage picture = pictureOf(action);
        for (int i = 0; i < iconSize.width(); ++i) {
            for (const QPoint edge : {QPoint(i, 0), QPoint(i, 31), QPoint(0, i), QPoint(31, i)})
                EXPECT_LT(picture.pixelColor(edge).alpha(), 128) << static_cast<int>(action);
        }
    }
}

TEST(SignIcon, HasTheColourOfThePaletteWhenShown) {
    const QIcon icon = signIcon(Sign::find);
    const QPalette before = QApplication::palette();
    QPalette dark = before;
    dark.setColor(QPalette::Active, QPalette::ButtonText, Qt::white);
    dark.setColor(QPalette::Disabled, QPalette::ButtonText, Qt::red);
    QApplication::setPalette(dark);
    EXPECT_EQ(inkOf(icon.pixmap(iconSize).toImage()), QColor(Qt::white));
    EXPECT_EQ(inkOf(icon.pixmap(iconSize, QIcon::Disabled).toImage()), QColor(Qt::red));
    QApplication::setPalette(before);
}

TEST(SignIcon, IsSharpAtTwiceTheScale) {
    EXPECT_EQ(signIcon(Sign::find).pixmap(iconSize, 2.0).size(), iconSize * 2);
}

TEST(SignIcon, IsAsHighAsTheButtonsText) {
    QPushButton button(QStringLiteral("心跳测试"));
    QFont large = button.font();
    large.setPointSize(30);
    button.setFont(large);
    setSign(&button, Sign::heartbeat);
    EXPECT_EQ(button.iconSize().height(), button.fontMetrics().height());
    EXPECT_EQ(button.text(), "心跳测试");
}
