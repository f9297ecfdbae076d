// Every window in the looks that strain it most.
#include "tests/looks/judge.h"
#include "tests/looks/look.h"
#include "tests/looks/scenes.h"

#include <QApplication>
#include <QDir>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

using namespace looks;

namespace {

QString scaleName() {
    const QString factor = qEnvironmentVariable("QT_SCALE_FACTOR", "1");
    return QStringLiteral("%1%").arg(qRound(factor.toDouble() * 100));
}

class WindowLook : public testing::TestWithParam<std::tuple<Look, Scene>> {
protected:
    WindowLook() : m_presentation(std::get<Look>(GetParam())) {}

    /// Applies every rule to a shown window.
    void judge(QWidget& window) {
        window.activateWindow();
        QApplication::processEvents();
        window.setFocus();
        const QImage picture = pictureOf(window);
        keep(picture);
        expectNone(cutTexts(window));
        expectNone(misplacedWidgets(window));
        expectNone(paleTexts(window, picture));
        expectNone(paleBorders(window, picture));
        expectNone(invisibleFocus(window));
        ++m_seen;
    }

    int m_seen = 0;

private:
    static void expectNone(const QStringList& faults) {
        EXPECT_TRUE(faults.isEmpty()) << faults.join(QStringLiteral("\n")).toStdString();
    }

    void keep(const QImage& picture) const {
        if (pictureFolder().isEmpty())
            return;
        const QDir folder(
            QStringLiteral("%1/%2-%3").arg(pictureFolder(), std::get<Look>(GetParam()).name, scaleName()));
        ASSERT_TRUE(folder.mkpath(QStringLiteral(".")));
        const QString number = m_seen == 0 ? QString() : QString::number(m_seen + 1);
        ASSERT_TRUE(picture.save(folder.filePath(std::get<Scene>(GetParam()).name + number + ".png")));
    }

    const Presentation m_presentation;
};

} // namespace

TEST_P(WindowLook, IsReadable) {
    std::get<Scene>(GetParam()).play([this](QWidget& window) { judge(window); });
    EXPECT_GT(m_seen, 0);
}

INSTANTIATE_TEST_SUITE_P(Windows, WindowLook,
                         testing::Combine(testing::ValuesIn(looksOfThisScale()), testing::ValuesIn(scenes())),
                         [](const auto& test) {
                             return std::string(std::get<Look>(test.param).name) +
                                    std::get<Scene>(test.param).name;
                         });
