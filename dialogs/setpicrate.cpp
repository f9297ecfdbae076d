#include "dialogs/setpicrate.h"

#include "dialogs/lineedits.h"
#include "dialogs/settingwrite.h"
#include "link/protocol/storetimes.h"
#include "ui_setpicrate.h"

#include <QDebug>

SetPicRate::SetPicRate(QWidget* parent, CameraSp* client)
    : QWidget(parent), SettingBorrower(this, client), m_ui(std::make_unique<Ui::SetPicRate>()) {
    m_ui->setupUi(this);
    setWindowTitle(tr("图片压缩率设置窗口"));
    pairWithButton(m_ui->et_setsn, m_ui->btn_setsn);

    auto* write = new SettingWrite(this, clock(),
                                   {.hint = m_ui->label_hint,
                                    .controls = {m_ui->btn_setsn, m_ui->btn_getsn, m_ui->et_setsn},
                                    .readBack = m_ui->btn_getsn,
                                    .seconds = protocol::compressionStoreSeconds,
                                    .emptyValue = tr("字符串为空,请填写后下发"),
                                    .started = tr("开始设置图片压缩率:"),
                                    .countdown = tr("设置中，倒计时:%1%2,请勿断电!"),
                                    .failed = tr("设置图片压缩率失败，请重试"),
                                    .resultTag = "qt set rate result:",
                                    .value = [this] { return m_ui->et_setsn->text(); },
                                    .write =
                                        [this](const QString& text) {
                                            // Whatever is typed goes out as a low byte, 0 if no number: the
                                            // camera decides what it takes.
                                            return writeSetting(protocol::PropertyId::compressionRate,
                                                                {static_cast<std::uint8_t>(text.toInt())});
                                        }});
    connect(m_ui->btn_setsn, &QPushButton::clicked, write, &SettingWrite::run);
    connect(m_ui->btn_getsn, &QPushButton::clicked, this, [this] {
        showByteSetting(protocol::PropertyId::compressionRate, m_ui->label_setsn, tr("当前图片压缩率:  "),
                        tr("获取图片压缩率失败"));
    });
}

SetPicRate::~SetPicRate() {
    qDebug() << "picrate destroyed";
}
