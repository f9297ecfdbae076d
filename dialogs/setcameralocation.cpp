#include "dialogs/setcameralocation.h"

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

} // namespace

SetCameraLocation::SetCameraLocation(QWidget* parent, CameraSp* client)
    : QWidget(parent), SettingBorrower(this, client), m_ui(std::make_unique<Ui::SetCameraLocation>()),
      m_timer(new QTimer(this)) {
    m_ui->setupUi(this);
    m_timer->setInterval(1s);
    setWindowTitle(tr("摄像头安装位置窗口"));
    for (QPushButton* button : {m_ui->btn_1, m_ui->btn_2, m_ui->btn_3, m_ui->btn_4})
        button->setVisible(false);
    fetch();
}

SetCameraLocation::~SetCameraLocation() {
    qDebug() << "cameraLocationUi destroyed";
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
    std::size_t next = 0;
    for (const auto& [label, prefix] : rows) {
        const auto value = loggedQuantityOf(values.at(next++));
        label->setText(prefix + (value ? QString::number(*value) : tr("不支持,获取失败")));
    }
}
