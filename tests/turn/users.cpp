#include "tests/turn/users.h"

#include "aids/camerafinderwindow.h"
#include "aids/checkupwindow.h"
#include "dialogs/setcameralocation.h"
#include "dialogs/setcapturedegree.h"
#include "dialogs/setpicrate.h"
#include "dialogs/setpwmheat.h"
#include "dialogs/setsn.h"
#include "service/finder.h"
#include "tests/turn/userparts.h"

#include <QLabel>
#include <QRadioButton>
#include <QTableWidget>

using namespace guitest;
using namespace std::chrono_literals;

namespace turn {

namespace {

const std::vector<std::uint32_t> frameTypes{cameratype::ostra, cameratype::shelfDynamic};

constexpr const char* uploadBox = "升级已完成";
constexpr const char* gyroBox = "陀螺仪测试";

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
    std::vector<User> all{
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
    const std::vector<User> pictures = pictureUsers();
    all.insert(all.end(), pictures.begin(), pictures.end());
    return all;
}

} // namespace

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

User mainUser(const char* name, const char* button,
              std::function<std::vector<Shown>(const MainWindow&)> shown) {
    User user = userOf(name, [button](const TurnWindow& bench) { return isEnabled(bench.window(), button); });
    user.start = [button](Work& work) { click(work.bench.window(), button); };
    user.ended = [](const Work&) { return true; };
    user.shown = [shown = std::move(shown)](const Work& work) { return shown(work.bench.window()); };
    return user;
}

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
