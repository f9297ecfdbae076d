#include "dialogs/setcameraprotocol.h"

#include "dialogs/hexspinbox.h"
#include "link/protocol/cameratypes.h"
#include "ui_setcameraprotocol.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QRegularExpressionValidator>
#include <QTimer>

#include <array>
#include <chrono>

using namespace std::chrono_literals;
using protocol::CameraType;

namespace {

constexpr int highestAddress = 255;
constexpr auto focusDelay = 200ms; // the window has to be on the screen first

struct TypeChoice {
    QRadioButton* Ui::SetCameraProtocol::*button;
    CameraType type;
    int row;
    int column;
};

constexpr std::array typeChoices{
    TypeChoice{&Ui::SetCameraProtocol::rb_ost, CameraType::ostra, 0, 0},
    TypeChoice{&Ui::SetCameraProtocol::rb_dvl, CameraType::dorvel, 0, 1},
    TypeChoice{&Ui::SetCameraProtocol::rb_dx, CameraType::salesStatic, 1, 0},
    TypeChoice{&Ui::SetCameraProtocol::rb_quenta, CameraType::quenta, 0, 2},
    TypeChoice{&Ui::SetCameraProtocol::rb_dx_dt, CameraType::salesDynamic, 1, 1},
};

} // namespace

SetCameraProtocol::SetCameraProtocol(std::uint32_t* slaveAddress, std::uint32_t* cameraType, QWidget* parent)
    : QWidget(parent), m_ui(std::make_unique<Ui::SetCameraProtocol>()), m_slaveAddress(slaveAddress),
      m_cameraType(cameraType) {
    m_ui->setupUi(this);
    setWindowTitle(tr("摄像头设置"));
    addAddressField();
    arrangeTypes();

    connect(m_ui->btn_confirm, &QPushButton::clicked, this, &SetCameraProtocol::confirm);
    for (const TypeChoice& choice : typeChoices) {
        // On a click only, so that the technician can pick the type and then still correct the address.
        connect((*m_ui).*choice.button, &QRadioButton::clicked, this,
                [this, preset = protocol::infoOf(choice.type).usualAddress] {
                    addressField()->setValue(preset);
                });
    }
    selectType();
    addressField()->setValue(static_cast<int>(*m_slaveAddress));
    QTimer::singleShot(focusDelay, this, &SetCameraProtocol::focusAddress);
}

SetCameraProtocol::~SetCameraProtocol() = default;

void SetCameraProtocol::addAddressField() {
    auto* const field = new HexSpinBox(m_ui->sb_hex);
    field->setObjectName(QStringLiteral("hex_sb"));
    field->setRange(0, highestAddress);
    field->setAccessibleName(m_ui->label->text());
    field->setToolTip(tr("00 到 FF"));
    field->setMinimumHeight(m_ui->sb_hex->minimumHeight());
    static const QRegularExpression twoDigits(QStringLiteral("^[0-9A-Fa-f]{1,2}$"));
    field->lineEdit()->setValidator(new QRegularExpressionValidator(twoDigits, field));
    if (m_ui->sb_hex->layout() == nullptr) {
        auto* const layout = new QHBoxLayout(m_ui->sb_hex);
        layout->setObjectName(QStringLiteral("hex_layout"));
        layout->setSpacing(0);
        layout->setContentsMargins(0, 0, 0, 0);
    }
    m_ui->sb_hex->layout()->addWidget(field);
    setTabOrder(field, m_ui->rb_ost);
}

void SetCameraProtocol::arrangeTypes() {
    while (QLayoutItem* const item = m_ui->gridLayout->takeAt(0))
        delete item; // the place only; the button stays
    for (const TypeChoice& choice : typeChoices) {
        QRadioButton* const button = (*m_ui).*choice.button;
        const protocol::CameraTypeInfo& info = protocol::infoOf(choice.type);
        button->setText(QString::fromUtf8(info.name.data(), static_cast<qsizetype>(info.name.size())));
        button->setToolTip(tr("常用地址 %1，波特率 %2")
                               .arg(QString::number(info.usualAddress, 16).toUpper())
                               .arg(info.baudRate));
        m_ui->gridLayout->addWidget(button, choice.row, choice.column);
    }
}

void SetCameraProtocol::selectType() {
    m_ui->rb_ost->setChecked(true); // for any type that has no button
    for (const TypeChoice& choice : typeChoices) {
        if (static_cast<std::uint32_t>(choice.type) == *m_cameraType)
            ((*m_ui).*choice.button)->setChecked(true);
    }
}

void SetCameraProtocol::confirm() {
    // What was typed is taken over even if the field never lost the focus.
    addressField()->interpretText();
    *m_slaveAddress = static_cast<std::uint32_t>(addressField()->value());
    for (const TypeChoice& choice : typeChoices) {
        if (((*m_ui).*choice.button)->isChecked())
            *m_cameraType = static_cast<std::uint32_t>(choice.type);
    }
    close();
}

void SetCameraProtocol::focusAddress() {
    HexSpinBox* const field = addressField();
    field->setFocus(Qt::OtherFocusReason);
    field->setFocusPolicy(Qt::StrongFocus);
    field->lineEdit()->setFocus();
    field->lineEdit()->selectAll();
}

HexSpinBox* SetCameraProtocol::addressField() const {
    return m_ui->frame->findChild<HexSpinBox*>(QStringLiteral("hex_sb"));
}
