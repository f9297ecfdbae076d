// Where the user guide is looked for, and what opens.
#include "aids/manual.h"
#include "tests/support/guitest.h"
#include "tests/support/printing.h"
#include "tests/support/workingdirectory.h"

#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QUrl>

#include <gtest/gtest.h>

using namespace guitest;

namespace {

/// Takes the place of the system's programs for files.
class Viewer final : public QObject {
    Q_OBJECT

public:
    Viewer() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "show"); }
    ~Viewer() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    QStringList shown;

public slots:
    void show(const QUrl& url) { shown.append(url.toLocalFile()); }
};

void touchFile(const QString& path) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
}

} // namespace

TEST(Manual, BesideTheProgramComesFirst) {
    EXPECT_EQ(manualPlaces("/opt/tool").value(0), "/opt/tool/user-guide.zh-CN.html");
}

TEST(Manual, IsInTheDocumentsOfThePackage) {
    const QStringList places = manualPlaces("/usr/bin");
    EXPECT_TRUE(places.contains("/usr/share/doc/shelf-camera-tool/user-guide.zh-CN.md"));
    EXPECT_LT(places.indexOf("/usr/share/doc/shelf-camera-tool/user-guide.zh-CN.html"),
              places.indexOf("/usr/share/doc/shelf-camera-tool/user-guide.zh-CN.md"));
}

TEST(Manual, OfTheSourcesIsFoundFromABuildFolder) {
    const QString folder = QDir::currentPath();
    touchFile(folder + "/docs/user-guide.zh-CN.md");
    EXPECT_EQ(firstFile(manualPlaces(folder + "/build/dev/app")), folder + "/docs/user-guide.zh-CN.md");
}

TEST(Manual, TakesThePageBeforeTheSource) {
    const QString folder = QDir::currentPath() + "/program";
    touchFile(QDir::currentPath() + "/docs/user-guide.zh-CN.md");
    touchFile(folder + "/user-guide.zh-CN.html");
    EXPECT_EQ(firstFile(manualPlaces(folder)), folder + "/user-guide.zh-CN.html");
}

TEST(Manual, FolderIsNoManual) {
    const QString folder = QDir::currentPath() + "/program";
    QDir().mkpath(folder + "/user-guide.zh-CN.html");
    EXPECT_EQ(firstFile(manualPlaces(folder)), "");
}

TEST(Manual, OpensTheFile) {
    Viewer viewer;
    openManual("/opt/tool/user-guide.zh-CN.html", nullptr);
    EXPECT_EQ(viewer.shown, QStringList("/opt/tool/user-guide.zh-CN.html"));
}

TEST(Manual, TellsThatThereIsNone) {
    BoxAnswerer boxes;
    QWidget window;
    openManual({}, &window);
    ASSERT_TRUE(boxes.waitFor(1));
    EXPECT_EQ(boxes.seen()[0].text, "没有找到使用手册，请重新安装程序");
}

#include "manual_test.moc"
