#include "app/linewait.h"

#include "link/camerasp.h"

#include <QMessageBox>

#include <chrono>

using namespace std::chrono_literals;

namespace {

constexpr auto pollInterval = 200ms;
constexpr auto standstill = 3s; // a download that goes on brings a block at least every second

} // namespace

LineWait::LineWait(QWidget* window) : QObject(window), m_window(window) {
    m_poll.setInterval(pollInterval);
    connect(&m_poll, &QTimer::timeout, this, &LineWait::look);
}

void LineWait::follow(CameraSp& client) {
    finish();
    m_client = &client;
    m_lastByte = client.clock().now();
    m_poll.start();
}

void LineWait::finish() {
    m_poll.stop();
    m_client = nullptr;
    delete m_question;
}

void LineWait::look() {
    const LineTurn::State line = m_client->lineState();
    const std::uint64_t done = m_client->progress().done;
    const Clock::Time now = m_client->clock().now();
    if (line.waitingJob != LineUser::upload || line.holder != LineUser::download) {
        delete m_question;
        m_lastByte = now;
    } else if (done != m_done) {
        m_lastByte = now;
    } else if (m_question == nullptr && now - m_lastByte > standstill) {
        ask();
    }
    m_done = done;
}

void LineWait::ask() {
    m_question = new QMessageBox(QMessageBox::Question, tr("图片下载没有结束"),
                                 tr("图片下载已停止前进，升级正在等待。是否中断下载并开始升级？"),
                                 QMessageBox::Yes | QMessageBox::No, m_window);
    m_question->setDefaultButton(QMessageBox::Yes);
    connect(m_question, &QMessageBox::finished, this, [this](int button) {
        if (m_client != nullptr) {
            if (button == QMessageBox::Yes)
                m_client->endDownload();
            m_lastByte = m_client->clock().now(); // asked again later
        }
        m_question->deleteLater();
        m_question = nullptr;
    });
    m_question->open();
}
