#include "dialogs/setcameralocation.h"

#include "dialogs/outdated.h"
#include "link/protocol/commands.h"
#include "ui_setcameralocation.h"

#include <QDebug>
#include <QTimer>

#include <optional>

namespace {

using namespace std::chrono_literals;

constexpr auto pauseAfterRead = 100ms; // the camera needs it between two requests

namespace orientation = protocol::orientation_value;

/// Empty when the answer holds no quantity.
std::optional<std::uint32_t> loggedQuantityOf(const SettingBorrower::Value& answer) {
    const protocol::ByteView bytes(answer);
    if (bytes.has(orientation::quantity) && orientation::isUnknown(bytes.get(orientation::quantity)))
        qDebug() << "got no location";
    return orientation::quantityOf(bytes);
}

/// The camera's unit is not known; a number of at most a turn is taken for degrees.
std::optional<double> degreesOf(const std::optional<std::uint32_t>& quantity) {
    constexpr std::int32_t turn = 360;
    if (!quantity)
        return std::nullopt;
    const auto degrees = static_cast<std::int32_t>(*quantity); // below 0: the upper half
    if (degrees < -turn || degrees > turn)
        return std::nullopt;
    return degrees;
}

} // namespace

SetCameraLocation::SetCameraLocation(QWidget* parent, CameraSp* client)
    : QWidget(parent), SettingBorrower(this, client), m_ui(std::make_unique<Ui::SetCameraLocation>()),
      m_timer(new QTimer(this)) {
    m_ui->setupUi(this);
    m_timer->setInterval(1s);
    setWindowTitle(tr("摄像头安装位置窗口"));
    for (QPushButton* button : {m_ui->btn_1, m_ui->btn_2, m_ui->btn_3, m_ui->btn_4})
        button->setVisible(false);
    connect(m_ui->btn_refresh, &QToolButton::clicked, this, &SetCameraLocation::refresh);
    fetch();
}

SetCameraLocation::~SetCameraLocation() {
    qDebug() << "cameraLocationUi destroyed";
}

/// A new link may be to another camera.
void SetCameraLocation::clientChanged() {
    if (!m_read)
        return;
    for (QLabel* const label : {m_ui->label_1, m_ui->label_2, m_ui->label_3, m_ui->label_4})
        setOutdated(label, true);
    m_ui->view_horizon->setAttitude({});
}

void SetCameraLocation::refresh() {
    if (client() == nullptr)
        reportMissingClient();
    else
        fetch();
}

void SetCameraLocation::fetch() {
    if (client() == nullptr)
        return;
    // The same request four times: the camera answers every read with its next quantity.
    const std::vector<protocol::PropertyId> ids(orientation::quantities, protocol::PropertyId::orientation);
    const auto log = [](const std::vector<Value>& values) {
        for (const Value& value : values)
            qDebug() << value;
    };
    fetchSettings(this, ids, pauseAfterRead, log,
                  [this](const std::vector<Value>& values) { showQuantities(values); });
}

void SetCameraLocation::showQuantities(const std::vector<Value>& values) {
    struct Row {
        QLabel* label;
        QString prefix;
    };
    // The first prefix turns the two characters of its label's first text round; both are what users know.
    const Row rows[] = {{m_ui->label_1, tr("当前仰俯角:")},
                        {m_ui->label_2, tr("当前横滚角:")},
                        {m_ui->label_3, tr("当前偏航角:")},
                        {m_ui->label_4, tr("当前加速度:")}};
    m_read = true;
    std::size_t next = 0;
    std::vector<std::optional<double>> angles;
    for (const auto& [label, prefix] : rows) {
        const auto value = loggedQuantityOf(values.at(next++));
        label->setText(prefix + (value ? QString::number(*value) : tr("不支持,获取失败")));
        setOutdated(label, false);
        angles.push_back(degreesOf(value));
    }
    std::optional<Attitude> attitude;
    if (angles[0] && angles[1] && angles[2])
        attitude = {*angles[0], *angles[1], *angles[2]};
    m_ui->view_horizon->setAttitude(attitude);
}
