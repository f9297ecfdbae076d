#include "dialogs/setpwmheat.h"

#include "dialogs/settingwrite.h"
#include "link/protocol/storetimes.h"
#include "ui_setpwmheat.h"

#include <QDebug>

SetPwmHeat::SetPwmHeat(QWidget* parent, CameraSp* client)
    : QWidget(parent), SettingBorrower(this, client), m_ui(std::make_unique<Ui::SetPwmHeat>()) {
    m_ui->setupUi(this);
    setWindowTitle(tr("加热丝占空比设置窗口"));
    m_ui->cb_setheat->addItems({"30", "40", "50", "60"});
    m_ui->cb_setheat->setCurrentIndex(0);
    m_ui->et_setheat->setVisible(false);

    auto* write = new SettingWrite(
        this, clock(),
        {.hint = m_ui->label_hint,
         .controls = {m_ui->btn_setheat, m_ui->btn_getheat, m_ui->et_setheat, m_ui->cb_setheat},
         .readBack = m_ui->btn_getheat,
         .seconds = protocol::heaterStoreSeconds,
         .emptyValue = {}, // the combo box always has a text
         .started = tr("开始设置加热丝占空比:"),
         .countdown = tr("设置中，倒计时:%1%2,请勿断电!"),
         .failed = tr("设置占空比失败，请重试"),
         .resultTag = "qt set heat result:",
         .value = [this] { return m_ui->cb_setheat->currentText(); },
         .write =
             [this](const QString& text) {
                 return writeSetting(protocol::PropertyId::heaterDuty,
                                     {static_cast<std::uint8_t>(text.toInt())});
             }});
    connect(m_ui->btn_setheat, &QPushButton::clicked, write, &SettingWrite::run);
    connect(m_ui->btn_getheat, &QPushButton::clicked, this, [this] {
        showByteSetting(protocol::PropertyId::heaterDuty, m_ui->label_setheat, tr("当前占空比:  "),
                        tr("获取占空比失败"));
    });
}

SetPwmHeat::~SetPwmHeat() {
    qDebug() << "pwmHeatUi destroyed";
}
