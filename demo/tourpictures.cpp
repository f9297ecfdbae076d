// The stations that take, list, show and delete pictures.
#include "demo/tour.h"
#include "pictures/imgdialog.h"
#include "pictures/piclist.h"
#include "pictures/piclistv1.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QKeyEvent>
#include <QLabel>
#include <QListView>
#include <QMenu>
#include <QMessageBox>
#include <QProgressBar>

using emulator::CameraType;
using emulator::VirtualCamera;

namespace {

emulator::Bytes fileContent(const QString& name) {
    QFile file(name);
    TourGuide::expect(file.open(QIODevice::ReadOnly), QStringLiteral("no file ") + name);
    const QByteArray content = file.readAll();
    return {content.begin(), content.end()};
}

/// Chooses an entry of the list's context menu for the first row.
void chooseForFirstRow(QListView& list, const QString& entry) {
    const QModelIndex first = list.model()->index(0, 0);
    list.setCurrentIndex(first);
    QTimer chooser;
    QObject::connect(&chooser, &QTimer::timeout, &chooser, [&] {
        auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (menu == nullptr)
            return;
        chooser.stop();
        for (QAction* const action : menu->actions()) {
            if (action->text() == entry)
                menu->setActiveAction(action);
        }
        QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
        QApplication::sendEvent(menu, &enter);
    });
    chooser.start(20);
    emit list.customContextMenuRequested(list.visualRect(first).center());
    TourGuide::waitUntil([&] { return !chooser.isActive() && QApplication::activePopupWidget() == nullptr; },
                         "the menu was used");
}

} // namespace

void Tour::takePicture(CameraType type) {
    m_guide.say(QStringLiteral("a picture"));
    auto& label = TourGuide::find<QLabel>(m_window, "label");
    if (type == CameraType::quenta)
        camera([](VirtualCamera& c) { c.state().jsonPicture = c.settings().drawPicture(1, 1); });
    TourGuide::press(m_window, "btn_takepic");
    TourGuide::waitUntil([&] { return !label.pixmap().isNull(); }, "the picture is shown");
    m_guide.screenshot(m_window, QStringLiteral("picture"));

    if (type == CameraType::quenta) {
        const emulator::Bytes held = camera([](VirtualCamera& c) { return *c.state().jsonPicture; });
        TourGuide::expect(fileContent(QStringLiteral("1.jpg")) == held,
                          QStringLiteral("the JSON picture's bytes"));
        return;
    }
    const emulator::Picture held = camera([](VirtualCamera& c) { return c.state().pictures.at(0); });
    const unsigned shownId = held.info.id & 0xFFU; // the window goes by the low byte
    TourGuide::expect(fileContent(QStringLiteral("%1.jpg").arg(shownId)) == held.jpeg,
                      QStringLiteral("the picture's bytes"));
}

void Tour::listPictures(CameraType type) {
    m_guide.say(QStringLiteral("the list of pictures"));
    const bool v1 = type == CameraType::salesDynamic;
    TourGuide::press(m_window, v1 ? "actionPicInfoV1" : "actionPicInfo");
    QWidget& window = v1 ? static_cast<QWidget&>(TourGuide::open<PicListV1>()) : TourGuide::open<PicList>();
    window.resize(980, 420);
    m_guide.meetBox([&] { TourGuide::press(window, v1 ? "btn_capture" : "btn_takepic"); },
                    QStringLiteral("拍照成功"), QMessageBox::Yes, QStringLiteral("list-picture-taken"));
    auto& list = TourGuide::find<QListView>(window, "listview");
    TourGuide::waitUntil([&] { return list.model()->rowCount() == 2; }, "the list shows both pictures");
    m_guide.screenshot(window, QStringLiteral("list"));
    if (v1) { // the only catalogue command that discards what is waiting
        leaveStaleBytes();
        TourGuide::press(window, "btn_refresh");
        TourGuide::waitUntil([&] { return list.model()->rowCount() == 2; },
                             "the list is read with other bytes waiting before");
    }

    viewPictures(list);
    if (!v1)
        downloadAll(window);

    const emulator::Picture first = camera([](VirtualCamera& c) { return c.state().pictures.at(0); });
    chooseForFirstRow(list, QStringLiteral("删除"));
    TourGuide::waitUntil([&] { return list.model()->rowCount() == 1; }, "the row is gone");
    TourGuide::expect(camera([&](VirtualCamera& c) {
                          return c.state().pictures.size() == 1 &&
                                 c.state().pictures[0].info.id != first.info.id;
                      }),
                      QStringLiteral("the deleted picture"));
    m_guide.screenshot(window, QStringLiteral("list-deleted"));
    window.close();
}

void Tour::viewPictures(QListView& list) {
    const std::vector<emulator::Picture> held = camera([](VirtualCamera& c) { return c.state().pictures; });
    const auto expectFile = [](const emulator::Picture& picture) {
        TourGuide::expect(fileContent(QStringLiteral("%1.jpg").arg(picture.info.id)) == picture.jpeg,
                          QStringLiteral("the viewed picture's bytes"));
    };
    chooseForFirstRow(list, QStringLiteral("查看"));
    auto& viewer = TourGuide::open<ImgDialog>();
    m_guide.screenshot(viewer, QStringLiteral("list-view"));
    expectFile(held.at(0));
    TourGuide::press(viewer, "btn_zoom_in");
    TourGuide::press(viewer, "btn_zoom_in");
    m_guide.screenshot(viewer, QStringLiteral("list-view-zoomed"));
    TourGuide::press(viewer, "btn_next");
    m_guide.screenshot(viewer, QStringLiteral("list-view-next"));
    expectFile(held.at(1));
    viewer.close();
}

void Tour::downloadAll(QWidget& listWindow) {
    const QDir folder(m_guide.folder() + QStringLiteral("/pictures"));
    TourGuide::expect(folder.mkpath(QStringLiteral(".")), folder.path());
    front().setPace(pacedBytesPerSecond);
    TourGuide::giveFile([&] { TourGuide::press(listWindow, "btn_download_all"); }, folder.path());
    const auto& bar = TourGuide::find<QProgressBar>(listWindow, "bar_download");
    TourGuide::waitUntil([&] { return bar.text() == QStringLiteral("正在下载第 2 张，共 2 张"); },
                         "the second picture comes");
    m_guide.screenshot(listWindow, QStringLiteral("list-downloading"));
    TourGuide::waitUntil([&] { return bar.text() == QStringLiteral("已下载 2 张，共 2 张"); },
                         "all pictures are there");
    front().setPace(0);
    for (const emulator::Picture& held : camera([](VirtualCamera& c) { return c.state().pictures; })) {
        TourGuide::expect(fileContent(folder.filePath(QStringLiteral("%1.jpg").arg(held.info.id))) ==
                              held.jpeg,
                          QStringLiteral("the downloaded picture's bytes"));
    }
}
