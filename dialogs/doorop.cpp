#include "dialogs/doorop.h"

#include "ui_doorop.h"

DoorOp::DoorOp(QWidget* parent, CameraSp* client)
    : QWidget(parent), ClientBorrower(this, client), m_ui(std::make_unique<Ui::DoorOp>()) {
    m_ui->setupUi(this);
    setWindowTitle(tr("开关门"));
    connect(m_ui->btn_open, &QPushButton::clicked, this,
            [this] { ask(tr("模拟开门"), &CameraSp::opDoor, true); });
    connect(m_ui->btn_close, &QPushButton::clicked, this,
            [this] { ask(tr("模拟关门"), &CameraSp::opDoor, false); });
}

DoorOp::~DoorOp() = default;
