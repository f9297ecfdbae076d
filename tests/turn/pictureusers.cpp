// The users who take, list, download and view pictures.
#include "pictures/imgdialog.h"
#include "pictures/piclist.h"
#include "pictures/piclistv1.h"
#include "pictures/picturelistmodel.h"
#include "tests/turn/userparts.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QListView>

using namespace guitest;

namespace turn {

namespace {

// --- pictures' files ---------------------------------------------------------------------------------------

constexpr const char* otherBytes = "bytes that are not its picture";

QString pictureFile(const QString& folder, unsigned id, const Bytes& expected) {
    QFile file(QDir(folder).filePath(QString::number(id) + ".jpg"));
    if (!file.open(QIODevice::ReadOnly))
        return "no file";
    const QByteArray data = file.readAll();
    return Bytes(data.begin(), data.end()) == expected ? "its picture" : otherBytes;
}

// --- lists -------------------------------------------------------------------------------------------------

QStringList rowsOf(const QWidget& window) {
    const QAbstractItemModel* const model = find<QListView>(window, "listview")->model();
    QStringList rows;
    for (int row = 0; row < model->rowCount(); ++row)
        rows.append(model->index(row, 0).data().toString());
    return rows;
}

template <typename Window>
User listUser(const char* name, const char* entry) {
    return buttonUser<Window>(name, entry, "btn_refresh", [](const Work& work) -> std::vector<Shown> {
        if (work.window == nullptr)
            return {};
        return {
            {"listview", rowsOf(*work.window).join(' '), TurnWindow::heldPictureIds().join(' '), {""}, {}}};
    });
}

User v1ListUser() {
    User user = listUser<PicListV1>("ListV1", "actionPicInfoV1");
    user.readsOnWhenMisled = true;
    return user;
}

/// Ids of the pictures in the user's window.
constexpr std::array<std::uint16_t, 2> listedIds{held::firstPicture, held::firstPicture + 1};

/// Opens a list window whose list is read already.
template <typename Window>
std::function<void(Work&)> opensList(const char* entry) {
    return [entry](Work& work) {
        work.window = work.bench.openWindow<Window>(entry);
        auto* const model =
            qobject_cast<PictureListModel*>(find<QListView>(*work.window, "listview")->model());
        for (const emulator::Picture& picture : work.bench.heldPictures(listedIds))
            model->appendRow(model->generation().cells(picture.info));
    };
}

/// The listed pictures' files in a folder.
std::vector<Shown> listedFiles(TurnWindow& bench, const QString& folder) {
    std::vector<Shown> all;
    for (const emulator::Picture& picture : bench.heldPictures(listedIds))
        all.push_back({QString::number(picture.info.id),
                       pictureFile(folder, picture.info.id, picture.jpeg),
                       "its picture",
                       {"no file"},
                       {otherBytes}}); // no check code is read: a late answer becomes its beginning
    return all;
}

/// All pictures of the list, on the pool.
User downloadAllUser() {
    const QString folder = "downloaded";
    User user = buttonUser<PicListV1>("DownloadAll", "actionPicInfoV1", "btn_download_all",
                                      [folder](const Work& work) { return listedFiles(work.bench, folder); });
    user.prepare = [folder, prepare = opensList<PicListV1>("actionPicInfoV1")](Work& work) {
        prepare(work);
        QDir(folder).removeRecursively();
        QDir().mkdir(folder);
    };
    user.start = [folder, start = user.start](Work& work) {
        start(work);
        chooseFolder(*work.window, QDir::current().filePath(folder));
    };
    user.ended = [](const Work& work) {
        return !work.window || text(*work.window, "btn_download_all") == "下载全部";
    };
    user.cameraTypes = {cameratype::shelfDynamic}; // captures of others delete all pictures
    user.isLong = true;
    return user;
}

/// A picture and then the next one in its view.
User viewNextUser() {
    User user = buttonUser<PicList>("ViewNext", "actionPicInfo", "listview", [](const Work& work) {
        return listedFiles(work.bench, QDir::currentPath());
    });
    user.prepare = opensList<PicList>("actionPicInfo");
    user.start = [](Work& work) {
        chooseForRow(*work.window, 0, "查看");
        for (const ImgDialog* const view : work.window->findChildren<ImgDialog*>())
            click(*view, "btn_next");
    };
    user.isLong = true;
    return user;
}

// --- captures ----------------------------------------------------------------------------------------------

/// The file of the picture shown.
QString pictureShown(const TurnWindow& bench, unsigned id, const Bytes& expected) {
    if (find<QLabel>(bench.window(), "label")->pixmap().isNull())
        return "nothing";
    return pictureFile(QDir::currentPath(), id, expected);
}

/// Id and bytes of the picture that a capture shows.
using TakenPicture = std::pair<unsigned, Bytes>;

TakenPicture newestPicture(TurnWindow& bench) {
    const emulator::CameraState state = bench.cameraState();
    if (state.pictures.empty())
        return {};
    return {state.pictures.front().info.id, state.pictures.front().jpeg};
}

TakenPicture jsonPicture(TurnWindow& bench) {
    return {1, bench.cameraState().jsonPicture.value_or(Bytes())};
}

User captureUser(const char* name, std::uint32_t type, TakenPicture (*taken)(TurnWindow&)) {
    User user = mainUser(name, "btn_takepic", {});
    user.cameraTypes = {type};
    user.ended = [](const Work& work) {
        return isEnabled(work.bench.window(), "btn_takepic") && work.bench.isIdle();
    };
    user.shown = [taken](const Work& work) -> std::vector<Shown> {
        const auto [id, jpeg] = taken(work.bench);
        return {{"picture area", pictureShown(work.bench, id, jpeg), "its picture", {"nothing"}, {}}};
    };
    user.isLong = true;
    return user;
}

} // namespace

std::vector<User> pictureUsers() {
    return {
        captureUser("Capture", cameratype::ostra, &newestPicture),
        captureUser("CaptureJson", cameratype::quenta, &jsonPicture),
        captureUser("CaptureV1", cameratype::shelfDynamic, &newestPicture),
        listUser<PicList>("List", "actionPicInfo"),
        v1ListUser(),
        downloadAllUser(),
        viewNextUser(),
    };
}

} // namespace turn
