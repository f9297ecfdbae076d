#include "dialogs/setsn.h"

#include "dialogs/settingwrite.h"
#include "late/late.h"
#include "link/protocol/storetimes.h"
#include "linkaccess/cameratext.h"
#include "ui_setsn.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDebug>
#include <QRandomGenerator64>

namespace {

// A serial number is this part of the hexadecimal digest.
constexpr qsizetype snFirstDigit = 8;
constexpr qsizetype snDigits = 16;
constexpr int randomBound = 1'000'000'000;

} // namespace

SetSN::SetSN(QWidget* parent, CameraSp* client)
    : QWidget(parent), ClientBorrower(this, client), m_ui(std::make_unique<Ui::SetSN>()) {
    m_ui->setupUi(this);
    setWindowTitle(tr("SN设置窗口"));
    m_ui->et_setsn2->setVisible(false);
    m_ui->et_setsn->setMinimumHeight(m_ui->et_setsn->fontMetrics().height()); // for the hint
    // A number of the camera's own length is shown on one line; a longer one does not stretch the window.
    m_ui->label_setsn->setMinimumWidth(
        m_ui->label_setsn->fontMetrics().horizontalAdvance(tr("当前序列号:  ") + QString(snDigits, u'0')));

    auto* write = new SettingWrite(this, clock(),
                                   {.hint = m_ui->label_hint,
                                    .controls = {m_ui->btn_setsn, m_ui->btn_getsn, m_ui->et_setsn},
                                    .readBack = m_ui->btn_getsn,
                                    .seconds = protocol::serialNumberStoreSeconds,
                                    .emptyValue = tr("字符串为空,请填写SN后下发"),
                                    .started = tr("开始设置SN:"),
                                    .countdown = tr("SN设置中，倒计时:%1%2,请勿断电!"),
                                    .failed = tr("设置SN失败，请重试"),
                                    .resultTag = "set sn result:",
                                    .value = [this] { return m_ui->et_setsn->text(); },
                                    .write =
                                        [this](const QString& sn) {
                                            return ask(tr("写入序列号"), &CameraSp::setSn, sn.toStdString());
                                        }});
    connect(m_ui->btn_gensn, &QPushButton::clicked, this, &SetSN::generate);
    connect(m_ui->btn_setsn, &QPushButton::clicked, write, &SettingWrite::run);
    connect(m_ui->btn_getsn, &QPushButton::clicked, this, &SetSN::showCameraSn);
}

SetSN::~SetSN() {
    qDebug() << "snUi destroyed";
}

QString SetSN::serialNumberOf(const QString& seed) {
    const QByteArray digest = QCryptographicHash::hash(seed.toUtf8(), QCryptographicHash::Md5);
    return QString::fromLatin1(digest.toHex().mid(snFirstDigit, snDigits));
}

void SetSN::generate() {
    // The random part keeps two numbers of one second apart.
    const QString seed = late::adapterText() + QString::number(QDateTime::currentSecsSinceEpoch()) +
                         QString::number(QRandomGenerator64::global()->bounded(randomBound));
    m_ui->et_setsn->setText(serialNumberOf(seed));
}

void SetSN::showCameraSn() {
    m_ui->label_setsn->clear();
    const std::string answer = ask(tr("读取序列号"), &CameraSp::getSn);
    // A camera may give back the zero byte that ends the number on the wire.
    const QString sn = cameraText(answer);
    qDebug() << "sn:" << sn;
    showCameraText(m_ui->label_setsn, tr("当前序列号:  ") + sn);
}
