#include "dialogs/setcapturedegree.h"

#include "dialogs/lineedits.h"
#include "dialogs/outdated.h"
#include "ui_capturedegree.h"

#include <QDebug>
#include <QTimer>

#include <array>

namespace {

using namespace std::chrono_literals;

constexpr auto pauseBetweenReads = 100ms; // the camera needs it between two requests
constexpr auto readBackDelay = 500ms;

// The items in the order of a full refresh; item n stands at n - 1.
constexpr std::array itemSettings{protocol::PropertyId::captureAngles, protocol::PropertyId::captureDirection,
                                  protocol::PropertyId::captureReserve, protocol::PropertyId::gyroSwitch};

std::uint8_t lowByte(int value) {
    return static_cast<std::uint8_t>(value);
}

} // namespace

SetCaptureDegree::SetCaptureDegree(QWidget* parent, CameraSp* client)
    : QWidget(parent), SettingBorrower(this, client), m_ui(std::make_unique<Ui::CaptureDegree>()),
      m_timer(new QTimer(this)) {
    m_ui->setupUi(this);
    m_timer->setInterval(1s);
    setWindowTitle(tr("陀螺仪抓图角度窗口"));
    m_ui->frame_3->setVisible(false);
    pairWithButton(m_ui->et_set1_0, m_ui->btn_set1);
    pairWithButton(m_ui->et_set1_1, m_ui->btn_set1);

    doGetInfo(true, anglesItem);

    connect(m_ui->btn_get1, &QPushButton::clicked, this, [this] { doGetInfo(false, anglesItem); });
    connect(m_ui->btn_get2, &QPushButton::clicked, this, [this] { doGetInfo(false, directionItem); });
    connect(m_ui->btn_get3, &QPushButton::clicked, this, [this] { doGetInfo(false, gyroItem); });
    const auto isChosen = [this] { // the user's own choice counts again
        setOutdated(m_ui->rb_closewise, false);
        setOutdated(m_ui->rb_anticlosewise, false);
    };
    connect(m_ui->rb_closewise, &QRadioButton::clicked, this, isChosen);
    connect(m_ui->rb_anticlosewise, &QRadioButton::clicked, this, isChosen);
    connect(m_ui->cb_open, &QCheckBox::clicked, this, [this] { setOutdated(m_ui->cb_open, false); });
    connect(m_ui->btn_set1, &QPushButton::clicked, this, &SetCaptureDegree::setAngles);
    connect(m_ui->btn_set2, &QPushButton::clicked, this, &SetCaptureDegree::setDirection);
    connect(m_ui->btn_set3, &QPushButton::clicked, this, &SetCaptureDegree::setGyro);
}

SetCaptureDegree::~SetCaptureDegree() {
    qDebug() << "captureDegreeUi destroyed";
}

void SetCaptureDegree::doGetInfo(bool fullRefresh, int item) {
    std::vector<int> items{item};
    if (fullRefresh)
        items = {anglesItem, directionItem, reserveItem, gyroItem};
    std::vector<protocol::PropertyId> ids;
    ids.reserve(items.size());
    for (int each : items)
        ids.push_back(itemSettings.at(static_cast<std::size_t>(each - 1)));

    // The line shows all four, empty where nothing was asked.
    const auto log = [items](const std::vector<Value>& values) {
        std::array<Value, itemSettings.size()> all;
        for (std::size_t i = 0; i < items.size(); ++i)
            all.at(static_cast<std::size_t>(items[i] - 1)) = values[i];
        qDebug() << all[0] << all[1] << all[2] << all[3];
    };
    const auto show = [this, items](const std::vector<Value>& values) {
        for (std::size_t i = 0; i < items.size(); ++i)
            showItem(items[i], values[i]);
    };
    fetchSettings(this, std::move(ids), fullRefresh ? pauseBetweenReads : 0ms, log, show);
}

void SetCaptureDegree::showItem(int item, const Value& value) {
    if (item == anglesItem)
        showAngles(value);
    else if (item == directionItem)
        showDirection(value);
    else if (item == gyroItem)
        showGyro(value);
}

void SetCaptureDegree::showAngles(const Value& value) {
    const QString text =
        value.size() < 2 ? tr("获取失败") : QString::number(value[0]) + ',' + QString::number(value[1]);
    m_ui->label_1->setText(tr("当前陀螺仪抓图角度:") + text);
}

void SetCaptureDegree::showDirection(const Value& value) {
    QString text = tr("获取失败");
    setOutdated(m_ui->rb_closewise, value.empty());
    setOutdated(m_ui->rb_anticlosewise, value.empty());
    if (!value.empty()) {
        const bool clockwise = value.front() == 1;
        (clockwise ? m_ui->rb_closewise : m_ui->rb_anticlosewise)->setChecked(true);
        text = clockwise ? tr("顺时针") : tr("逆时针");
    }
    m_ui->label_2->setText(tr("当前陀螺仪抓图方向:") + text);
}

void SetCaptureDegree::showGyro(const Value& value) {
    // A failed read leaves the box as it is: only the label tells of it.
    QString text = tr("获取失败");
    setOutdated(m_ui->cb_open, value.empty());
    if (!value.empty()) {
        const bool on = value.front() == 1;
        m_ui->cb_open->setChecked(on);
        text = on ? tr("开启") : tr("关闭");
    }
    m_ui->label_3->setText(tr("当前陀螺仪开启状态:") + text);
}

void SetCaptureDegree::setAngles() {
    // No check: what is no number is 0, and only the low byte is sent.
    const int angleA = m_ui->et_set1_0->text().toInt();
    const int angleB = m_ui->et_set1_1->text().toInt();
    qDebug() << angleA << "  " << angleB;
    writeAndReadBack(protocol::PropertyId::captureAngles, {lowByte(angleA), lowByte(angleB)}, anglesItem);
}

void SetCaptureDegree::setDirection() {
    const bool clockwise = m_ui->rb_closewise->isChecked();
    const bool anticlockwise = m_ui->rb_anticlosewise->isChecked();
    qDebug() << clockwise << "  " << anticlockwise;
    writeAndReadBack(protocol::PropertyId::captureDirection, {lowByte(clockwise)}, directionItem);
}

void SetCaptureDegree::setGyro() {
    const bool on = m_ui->cb_open->isChecked();
    qDebug() << on << "  ";
    writeAndReadBack(protocol::PropertyId::gyroSwitch, {lowByte(on)}, gyroItem);
}

void SetCaptureDegree::writeAndReadBack(protocol::PropertyId id, Value value, int item) {
    // The result is not looked at: the read-back shows what the camera holds.
    std::ignore = writeSetting(id, std::move(value));
    readBackLater(item);
}

void SetCaptureDegree::readBackLater(int item) {
    QTimer::singleShot(clock().timerInterval(readBackDelay), this, [this, item] {
        if (isEnabled())
            doGetInfo(false, item);
        else
            readBackLater(item); // somebody else uses the client
    });
}
