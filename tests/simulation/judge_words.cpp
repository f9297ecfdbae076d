// The judge of words: status bar, boxes, lamp and lists agree with what the camera knows.
#include "pictures/picturelistmodel.h"
#include "pictures/picturelistwindow.h"
#include "tests/simulation/judge.h"
#include "tests/support/guitest.h"

#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QListView>
#include <QProgressBar>
#include <QRadioButton>
#include <QRegularExpression>

#include <algorithm>

using protocol::code;
using protocol::Command;

namespace simulation {

namespace {

/// "12:34:56  name：words"
struct Told {
    QString name;
    QString words;
    bool done = false;
};

std::optional<Told> outcomeIn(const QString& text) {
    static const QRegularExpression outcome(QStringLiteral("^\\d\\d:\\d\\d:\\d\\d  ([^：]+)：(.+)"));
    const auto match = outcome.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    return Told{match.captured(1), match.captured(2), match.captured(2).startsWith(QStringLiteral("完成"))};
}

} // namespace

void Judge::statusShown(const QString& text) {
    m_statusText = text;
    if (text.isEmpty())
        return;
    world::note([&text] { return "status: " + text.toStdString(); });
    if (text.contains(QStringLiteral("串口已关闭"))) { // the technician let the upload be broken off
        m_brokenOff = m_brokenOff || m_resultDue;
        m_resultDue = false;
        m_answers.forgetUpload();
    }
    if (text.startsWith(QStringLiteral("正在读取图片列表")))
        m_catalogueSize.reset(); // read again before anybody looked
    if (text.contains(QStringLiteral("没有可升级的文件")))
        m_pressedWithoutFile = true;
    if (text.startsWith(QStringLiteral("图片命令附加值：")) ||
        text.contains(QStringLiteral("  图片命令附加值：")))
        m_pictureOffset = true;
    if (text.startsWith(QStringLiteral("正在升级")) || text == QStringLiteral("请先打开串口"))
        m_resultDue = true;
    if (text.startsWith(QStringLiteral("正在升级")) || text == QStringLiteral("请先打开串口"))
        m_uploadBegun = text != QStringLiteral("请先打开串口");
    if (const auto told = outcomeIn(text)) {
        m_done[told->name] = told->done;
        m_answers.jobEnded();
        if (told->name == QStringLiteral("读取图片列表") &&
            (told->done || told->words.startsWith(QStringLiteral("没有图片"))))
            m_catalogueSize = m_answers.picturesListed();
        const std::string wrong = m_answers.told(told->name.toStdString(), told->words.toStdString());
        require(wrong.empty(), "O6: " + wrong);
        if (told->done)
            checkOutcome(told->name);
    }
}

/// "完成" stands only behind a command that the camera has heard.
void Judge::checkOutcome(const QString& name) {
    struct Word {
        QString name;
        Command command;
    };
    static const std::vector<Word> words = {
        {QStringLiteral("测试心跳"), Command::heartbeat},
        {QStringLiteral("读取模型信息"), Command::getInfo},
        {QStringLiteral("重启摄像头"), Command::reboot},
        {QStringLiteral("恢复出厂设置"), Command::resetToFactory},
    };
    const auto word =
        std::find_if(words.begin(), words.end(), [&](const Word& each) { return each.name == name; });
    static const QRegularExpression download(QStringLiteral("^下载图片 (\\d+)$"));
    if (const auto picture = download.match(name); picture.hasMatch())
        require(QFileInfo(picture.captured(1) + QStringLiteral(".jpg")).isFile(),
                "O6: a picture without a file");
    const Disturbances& disturbed = m_workplace.disturbances();
    if (word == words.end() || disturbed.toTool || disturbed.late || disturbed.camera)
        return;
    const std::size_t now = heard(code(word->command));
    require(now > m_heardBefore[name], "O6: done, but the camera has not heard it: " + name.toStdString());
    m_heardBefore[name] = now;
}

void Judge::boxShown(const QString& text) {
    static const std::map<QString, QString> names{
        {QStringLiteral("重启摄像头成功，请稍等摄像头进行重启"), QStringLiteral("重启摄像头")},
        {QStringLiteral("初始化成功,请稍等10秒待摄像头初始化"), QStringLiteral("恢复出厂设置")}};
    if (const auto name = names.find(text); name != names.end())
        require(m_done[name->second], "O6: the box tells a success, the status bar did not");
    if (!text.startsWith(QStringLiteral("升级已完成，结果:")))
        return;
    require(m_resultDue, "O6: the result of an upload that has none to tell");
    m_resultDue = false;
    const bool sends = m_uploadBegun && !m_workplace.disturbances().adapter;
    require(!sends || m_answers.hasUpload(), "O1: an upload ends that was never sent");
    const bool secondProtocol = m_answers.hasSecondProtocol();
    const std::string wrong = m_answers.toldUpload(text.endsWith(QStringLiteral("true")));
    require(wrong.empty(), "O1: " + wrong);
    if (text.endsWith(QStringLiteral("true")))
        checkUploadSuccess(secondProtocol);
    else
        checkUploadFailure();
}

/// Nothing keeps a camera that is there from taking a file. The second protocol sends none.
void Judge::checkUploadFailure() {
    const emulator::CameraRecord& record = m_workplace.camera().record();
    if (m_workplace.disturbances().any() || restartsByCommand() || !isCameraLinked() || m_brokenOff ||
        record.uploads.empty() || record.appV1.announcements > 0)
        return;
    const emulator::UploadRecord& last = record.uploads.back();
    require(last.complete && last.digestRight, "O1: an undisturbed upload does not arrive whole");
}

/// Compares the camera's image with the file. Left out are the cases that the protocol cannot detect: a
/// system image has no verdict, the client reads no check code of answers, a faulty camera may report any
/// verdict.
void Judge::checkUploadSuccess(bool secondProtocol) {
    const Disturbances& disturbed = m_workplace.disturbances();
    if (disturbed.camera || disturbed.toTool || disturbed.late)
        return;
    const emulator::CameraRecord& record = m_workplace.camera().record();
    if (secondProtocol) {
        const bool nothingToHold = QFileInfo(guitest::text(*m_window, "label_apppath")).size() == 0;
        require(nothingToHold || m_workplace.camera().settings().holdsAnnouncedImage,
                "O1: success, but the camera has no such image");
        return;
    }
    require(!record.uploads.empty(), "O1: success without an upload");
    if (record.uploads.empty())
        return;
    const emulator::UploadRecord& last = record.uploads.back();
    const bool returns = last.code != code(Command::modelAnnounce);
    const bool returned = std::any_of(record.frames.begin(), record.frames.end(), [&last](const auto& frame) {
        return frame.heard && frame.code == code(Command::heartbeat) && frame.at > last.answeredAt;
    });
    require(returned || !returns, "O6: success of an upload, but the camera has not come back");
    const bool noVerdict = last.code == code(Command::firewareAnnounce);
    // After an upload that was broken off the camera may take requests for data, and goes on behind them.
    if (noVerdict && (disturbed.toCamera || disturbed.adapter || disturbed.restarted || m_brokenOff))
        return;
    require(last.complete && last.digestRight, "O1: success, but the camera does not hold the file");
}

/// Lit only by an answered heartbeat.
void Judge::checkLamp() {
    require(!m_lamp->isChecked() || m_done[QStringLiteral("测试心跳")],
            "O6: the lamp is lit without an answer");
}

// --- pictures ----------------------------------------------------------------------------------------------

/// A list that has just been read has every picture of the camera.
void Judge::checkLists() {
    if (!m_catalogueSize)
        return;
    const auto expected = static_cast<int>(*std::exchange(m_catalogueSize, std::nullopt));
    const QList<PictureListWindow*> lists = m_window->findChildren<PictureListWindow*>();
    const bool whole = std::any_of(lists.begin(), lists.end(), [&](const PictureListWindow* list) {
        return guitest::find<QListView>(*list, "listview")->model()->rowCount() == expected;
    });
    require(whole || lists.isEmpty(),
            "O6: no list has the camera's " + std::to_string(expected) + " pictures");
}

void Judge::checkDownloads(const QWidget& list) {
    if (m_workplace.disturbances().any())
        return;
    const auto* const model =
        qobject_cast<PictureListModel*>(guitest::find<QListView>(list, "listview")->model());
    const auto& pictures = m_workplace.pictures();
    for (int row = 0; row < model->rowCount(); ++row) {
        const bool known = std::any_of(pictures.begin(), pictures.end(), [&](const TakenPicture& picture) {
            return picture.id == model->pictureId(row) &&
                   static_cast<qint64>(picture.jpeg.size()) == model->pictureSize(row);
        });
        require(known, "O2: a list shows a picture that the camera never had");
    }
    static const QRegularExpression all(QStringLiteral("^已下载 (\\d+) 张，共 (\\d+) 张$"));
    const auto match = all.match(guitest::find<QProgressBar>(list, "bar_download")->format());
    if (match.hasMatch() && match.captured(1) == match.captured(2))
        require(QDir(QLatin1String(Workplace::pictureFolder)).count() >= match.captured(1).toUInt(),
                "O6: fewer pictures than the list has downloaded");
}

} // namespace simulation
