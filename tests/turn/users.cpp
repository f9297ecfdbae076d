#include "tests/turn/users.h"

#include "aids/camerafinderwindow.h"
#include "aids/checkupwindow.h"
#include "dialogs/setcameralocation.h"
#include "dialogs/setcapturedegree.h"
#include "dialogs/setpicrate.h"
#include "dialogs/setpwmheat.h"
#include "dialogs/setsn.h"
#include "pictures/imgdialog.h"
#include "pictures/piclist.h"
#include "pictures/piclistv1.h"
#include "pictures/picturelistmodel.h"
#include "service/finder.h"
#include "tests/support/cameratype.h"

#include <QDir>
#include <QFile>
#include <QLabel>
#include <QListView>
#include <QRadioButton>
#include <QTableWidget>

using namespace guitest;
using namespace std::chrono_literals;

namespace turn {

namespace {

const std::vector<std::uint32_t> anyType{cameratype::ostra, cameratype::quenta, cameratype::shelfDynamic};
const std::vector<std::uint32_t> frameTypes{cameratype::ostra, cameratype::shelfDynamic};

constexpr const char* uploadBox = "升级已完成";
constexpr const char* gyroBox = "陀螺仪测试";

bool isChoosable(const TurnWindow& bench, const char* menuEntry) {
    return find<QAction>(bench.window(), menuEntry)->isEnabled();
}

User userOf(const char* name, std::function<bool(const TurnWindow&)> isOffered) {
    User user;
    user.name = name;
    user.cameraTypes = anyType;
    user.prepare = [](Work&) {};
    user.canStart = [isOffered](const Work& work) { return isOffered(work.bench); };
    user.isOffered = std::move(isOffered);
    return user;
}

// --- reading windows ---------------------------------------------------------------------------------------

struct LabelRow {
    const char* label;
    QString right;
    QString failure;
    QStringList shifted{};
};

std::vector<Shown> shownLabels(const QWidget* window, const std::vector<LabelRow>& rows) {
    std::vector<Shown> all;
    for (const LabelRow& row : rows) {
        const QString shown = window == nullptr ? "(closed)" : text(*window, row.label);
        all.push_back({row.label, shown, row.right, {row.failure}, row.shifted});
    }
    return all;
}

/// A window that reads when it opens and shows all values at once.
template <typename Window>
User openingUser(const char* name, const char* entry, const std::vector<LabelRow>& rows) {
    User user = userOf(name, [entry](const TurnWindow& bench) { return isChoosable(bench, entry); });
    user.meetsOthers = true;
    user.isLong = true;
    user.start = [entry](Work& work) { work.window = work.bench.openWindow<Window>(entry); };
    user.ended = [rows](const Work& work) {
        const std::vector<Shown> shown = shownLabels(work.window, rows);
        return std::all_of(shown.begin(), shown.end(), [](const Shown& each) {
            return each.text.contains(':'); // the form's own texts have none
        });
    };
    user.shown = [rows](const Work& work) { return shownLabels(work.window, rows); };
    return user;
}

/// Starts with a button of an open window.
template <typename Window>
User buttonUser(const char* name, const char* entry, const char* button,
                std::function<std::vector<Shown>(const Work&)> shown) {
    User user = userOf(name, [entry](const TurnWindow& bench) { return isChoosable(bench, entry); });
    user.prepare = [entry](Work& work) { work.window = work.bench.openWindow<Window>(entry); };
    user.canStart = [button](const Work& work) { return work.window && isEnabled(*work.window, button); };
    user.start = [button](Work& work) { click(*work.window, button); };
    user.ended = [](const Work&) { return true; };
    user.shown = std::move(shown);
    return user;
}

template <typename Window>
User readingUser(const char* name, const char* entry, const char* button, const LabelRow& row) {
    return buttonUser<Window>(name, entry, button,
                              [row](const Work& work) { return shownLabels(work.window, {row}); });
}

/// A read that does not reach the camera leaves its quantity for the next one.
void allowQuantitiesLeftOver(std::vector<Shown>& shown) {
    const std::vector<Shown> all = shown;
    std::size_t failed = 0;
    for (std::size_t i = 0; i < all.size(); ++i) {
        for (std::size_t back = 1; back <= failed; ++back)
            shown[i].failures.append(all[i].shifted.at(static_cast<qsizetype>(i - back)));
        if (all[i].failures.contains(all[i].text))
            ++failed;
    }
}

User locationUser() {
    const auto row = [](const char* label, const QString& prefix, std::uint32_t own) {
        LabelRow result{label, prefix + QString::number(own), prefix + "不支持,获取失败", {}};
        for (const std::uint32_t each : {held::pitch, held::roll, held::yaw, held::acceleration})
            result.shifted.append(prefix + QString::number(each));
        return result;
    };
    User user = openingUser<SetCameraLocation>(
        "Location", "actionInstallLocation",
        {row("label_1", "当前仰俯角:", held::pitch), row("label_2", "当前横滚角:", held::roll),
         row("label_3", "当前偏航角:", held::yaw), row("label_4", "当前加速度:", held::acceleration)});
    user.shown = [shown = user.shown](const Work& work) {
        std::vector<Shown> all = shown(work);
        allowQuantitiesLeftOver(all);
        return all;
    };
    return user;
}

User degreeUser() {
    const QString angles = "当前陀螺仪抓图角度:";
    const QString direction = "当前陀螺仪抓图方向:";
    const QString gyro = "当前陀螺仪开启状态:";
    return openingUser<SetCaptureDegree>(
        "Degree", "actionCaptureDegree",
        {{"label_1", angles + QString("%1,%2").arg(held::angleA).arg(held::angleB), angles + "获取失败"},
         {"label_2", direction + "顺时针", direction + "获取失败", {direction + "逆时针"}},
         {"label_3", gyro + "开启", gyro + "获取失败", {gyro + "关闭"}}});
}

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

// --- aids --------------------------------------------------------------------------------------------------

/// Works on the pool; its start button is disabled meanwhile.
template <typename Window>
User aidUser(const char* name, const char* entry, std::function<std::vector<Shown>(const QWidget&)> shown) {
    User user = buttonUser<Window>(name, entry, "btn_start",
                                   [shown = std::move(shown)](const Work& work) -> std::vector<Shown> {
                                       return work.window ? shown(*work.window) : std::vector<Shown>();
                                   });
    user.ended = [](const Work& work) { return !work.window || isEnabled(*work.window, "btn_start"); };
    user.isLong = true;
    user.answerLimit = 200ms;
    user.lateAnswerMisleads = true;
    return user;
}

User checkupUser() {
    User user = aidUser<CheckupWindow>("Checkup", "actionCheckup", [](const QWidget& window) {
        std::vector<Shown> all{{"模型信息", "", held::modelInfo, {""}, {}},
                               {"序列号", "", held::serialNumber, {""}, {}}};
        const auto* const table = find<QTableWidget>(window, "table_lines");
        for (Shown& each : all) {
            for (int row = 0; row < table->rowCount(); ++row) {
                if (table->item(row, 0)->text() == each.where)
                    each.text = table->item(row, 1)->text();
            }
        }
        return all;
    });
    user.cameraTypes = frameTypes; // of others neither is read
    return user;
}

/// On the open link; the camera answers every address.
User finderUser() {
    return aidUser<CameraFinderWindow>(
        "Finder", "actionFindCamera", [](const QWidget& window) -> std::vector<Shown> {
            const auto wanted = static_cast<int>(service::usualAddresses().size());
            Shown found{"table_found",
                        QString::number(find<QTableWidget>(window, "table_found")->rowCount()),
                        QString::number(wanted),
                        {},
                        {}};
            for (int fewer = 0; fewer < wanted; ++fewer)
                found.failures.append(QString::number(fewer));
            return {found};
        });
}

// --- the main window ---------------------------------------------------------------------------------------

/// Starts with a button of the main window and blocks until it ends.
User mainUser(const char* name, const char* button,
              std::function<std::vector<Shown>(const MainWindow&)> shown) {
    User user = userOf(name, [button](const TurnWindow& bench) { return isEnabled(bench.window(), button); });
    user.start = [button](Work& work) { click(work.bench.window(), button); };
    user.ended = [](const Work&) { return true; };
    user.shown = [shown = std::move(shown)](const Work& work) { return shown(work.bench.window()); };
    return user;
}

User heartbeatUser() {
    User user = mainUser("Heartbeat", "btn_heartbeat", [](const MainWindow& window) -> std::vector<Shown> {
        const bool alive = find<QRadioButton>(window, "rb_heartbeat")->isChecked();
        return {{"rb_heartbeat", alive ? "checked" : "unchecked", "checked", {"unchecked"}, {}}};
    });
    user.answerLimit = 200ms;
    user.lateAnswerMisleads = true;
    return user;
}

User modelInfoUser() {
    return mainUser("ModelInfo", "btn_modelinfo", [](const MainWindow& window) -> std::vector<Shown> {
        const QString prefix = "模型信息:";
        return {{"label_modelinfo", text(window, "label_modelinfo"), prefix + held::modelInfo, {prefix}, {}}};
    });
}

/// Whether the text contains an answer to another command.
bool holdsValue(const QString& text) {
    const QStringList values{held::serialNumber, held::appVersion, held::systemVersion,
                             held::qvVersion,    held::modelInfo,  held::jsonVersion};
    return std::any_of(values.begin(), values.end(),
                       [&text](const QString& value) { return text.contains(value); });
}

User gyroUser() {
    User user = mainUser("Gyro", "btn_gyro", {});
    user.start = [start = user.start](Work& work) {
        work.boxesBefore = work.bench.boxTexts(gyroBox).size();
        start(work);
    };
    user.shown = [](const Work& work) -> std::vector<Shown> {
        const QString shown = work.bench.boxTexts(gyroBox).value(work.boxesBefore);
        const bool failed = shown.startsWith("陀螺仪测试失败:") && !holdsValue(shown);
        return {{"box",
                 shown,
                 "陀螺仪测试成功",
                 {"陀螺仪测试失败:"},
                 failed ? QStringList(shown) : QStringList()}};
    };
    user.answerLimit = 50ms;
    return user;
}

User versionUser() {
    User user = mainUser("Version", "btn_appversion", [](const MainWindow& window) -> std::vector<Shown> {
        const QStringList prefixes{"SDK版本:", "系统版本:", "QV-APP版本:"};
        const QStringList own{held::appVersion, held::systemVersion, held::qvVersion};
        const QStringList lines = text(window, "tv_appversion").split('\n');
        std::vector<Shown> all;
        for (qsizetype i = 0; i < prefixes.size(); ++i) {
            const QString& prefix = prefixes[i];
            all.push_back({"tv_appversion", lines.value(i), prefix + own[i], {prefix}, {}});
            for (const QString& each : own)
                all.back().shifted.append(prefix + each);
        }
        return all;
    });
    user.cameraTypes = frameTypes;
    user.ended = [](const Work& work) {
        return text(work.bench.window(), "tv_appversion") != "。。。。" &&
               isEnabled(work.bench.window(), "btn_appversion");
    };
    user.isLong = true;
    user.answerLimit = 200ms;
    user.lateAnswerMisleads = true;
    return user;
}

User jsonVersionUser() {
    User user = mainUser("JsonVersion", "btn_appversion", [](const MainWindow& window) -> std::vector<Shown> {
        const QString failed = "解析失败:";
        const QString shown = text(window, "tv_appversion");
        return {{"tv_appversion",
                 shown.startsWith(failed) ? failed : shown,
                 QString("APP版本:") + held::jsonVersion,
                 {failed},
                 {}}};
    });
    user.cameraTypes = {cameratype::quenta};
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

// --- uploads -----------------------------------------------------------------------------------------------

User uploadUser(const char* name, const WindowUpload& upload, std::vector<std::uint32_t> types) {
    User user = mainUser(name, upload.updateButton, {});
    user.cameraTypes = std::move(types);
    user.prepare = [&upload](Work& work) {
        work.bench.chooseFile(upload);
        work.bench.answerHeartbeatsInTime();
        work.boxesBefore = work.bench.boxTexts(uploadBox).size();
    };
    user.ended = [](const Work& work) { return work.bench.boxTexts(uploadBox).size() > work.boxesBefore; };
    // An upload to a healthy camera does not fail: it waits long enough for every answer.
    user.shown = [](const Work& work) -> std::vector<Shown> {
        return {{"box",
                 work.bench.boxTexts(uploadBox).mid(work.boxesBefore).join(" | "),
                 "升级已完成，结果:true",
                 {},
                 {"升级已完成，结果:false", "升级已完成，结果:失败！", "升级已完成，结果:失败！false"}}};
    };
    user.isLong = true;
    return user;
}

/// The wait for the camera's return, two heartbeats long, behind an upload.
User returnWaitUser(const char* name, const WindowUpload& upload) {
    User user = uploadUser(name, upload, {cameratype::ostra});
    user.prepare = [prepare = user.prepare, &upload](Work& work) {
        prepare(work);
        work.bench.fault(std::string("back-at=2@") + upload.request);
    };
    user.start = [start = user.start](Work& work) {
        start(work);
        const bool waiting = eventually(
            [&work] { return text(work.bench.window(), "label_transfer").startsWith("等待摄像头重启"); });
        EXPECT_TRUE(waiting) << "the return wait never began";
    };
    return user;
}

std::vector<User> everybody() {
    return {
        locationUser(),
        degreeUser(),
        readingUser<SetSN>("SerialNumber", "actionSnSet", "btn_getsn",
                           {"label_setsn", QString("当前序列号:  ") + held::serialNumber, "当前序列号:  "}),
        readingUser<SetPwmHeat>(
            "HeaterDuty", "actionPwmHeatSet", "btn_getheat",
            {"label_setheat", "当前占空比:  " + QString::number(held::heaterDuty), "获取占空比失败"}),
        readingUser<SetPicRate>("PictureRate", "actionactionPicRateSet", "btn_getsn",
                                {"label_setsn", "当前图片压缩率:  " + QString::number(held::compressionRate),
                                 "获取图片压缩率失败"}),
        versionUser(),
        jsonVersionUser(),
        captureUser("Capture", cameratype::ostra, &newestPicture),
        captureUser("CaptureJson", cameratype::quenta, &jsonPicture),
        captureUser("CaptureV1", cameratype::shelfDynamic, &newestPicture),
        listUser<PicList>("List", "actionPicInfo"),
        v1ListUser(),
        downloadAllUser(),
        viewNextUser(),
        uploadUser("AppUpload", appUpload, {cameratype::ostra}),
        uploadUser("AppUploadV1", appUploadV1, {cameratype::shelfDynamic}),
        uploadUser("SystemUpload", systemUpload, anyType),
        uploadUser("ModelUpload", modelUpload, anyType),
        returnWaitUser("AppReturnWait", appUpload),
        returnWaitUser("SystemReturnWait", systemUpload),
        heartbeatUser(),
        modelInfoUser(),
        gyroUser(),
        checkupUser(),
        finderUser(),
    };
}

} // namespace

bool User::existsFor(std::uint32_t cameraType) const {
    return std::find(cameraTypes.begin(), cameraTypes.end(), cameraType) != cameraTypes.end();
}

bool User::leavesLateAnswer(std::chrono::milliseconds answerDelay) const {
    constexpr auto slack = 60ms; // of a busy machine
    return answerDelay + slack >= answerLimit;
}

const std::vector<User>& users() {
    static const std::vector<User> all = everybody();
    return all;
}

const User& userCalled(const std::string& name) {
    for (const User& user : users()) {
        if (user.name == name)
            return user;
    }
    throw std::runtime_error("no user is called " + name);
}

void PrintTo(const User& user, std::ostream* out) {
    *out << user.name;
}

Work prepared(const User& user, TurnWindow& bench) {
    Work work{bench, nullptr};
    user.prepare(work);
    return work;
}

void closeOwnWindow(Work& work) {
    if (work.window == nullptr)
        return;
    work.window->close();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void expectOwnValues(const User& user, const Work& work, bool lateAnswers) {
    for (const Shown& each : user.shown(work)) {
        const QStringList allowed =
            QStringList(each.right) + each.failures + (lateAnswers ? each.shifted : QStringList());
        EXPECT_TRUE(allowed.contains(each.text))
            << user.name << ", " << each.where.toStdString() << ": shows \"" << each.text.toStdString()
            << "\", its own are \"" << allowed.join("\", \"").toStdString() << '"';
    }
}

void expectRightValues(const User& user, const Work& work) {
    for (const Shown& each : user.shown(work))
        EXPECT_EQ(each.text, each.right) << user.name << ", " << each.where.toStdString();
}

int failuresShown(const User& user, const Work& work) {
    const std::vector<Shown> shown = user.shown(work);
    return static_cast<int>(
        std::count_if(shown.begin(), shown.end(), [](const Shown& each) { return each.text != each.right; }));
}

} // namespace turn
