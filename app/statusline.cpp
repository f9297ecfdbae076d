#include "app/statusline.h"

#include "link/camerasp.h"

#include <QLabel>
#include <QStatusBar>
#include <QTime>

#include <algorithm>

using namespace std::chrono_literals;

namespace {

constexpr auto worthTelling = 500ms; // shorter actions are over before anybody wonders
constexpr auto tickInterval = 250ms;

std::chrono::milliseconds ageOf(const LinkUse& use) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 use.began);
}

} // namespace

StatusLine::StatusLine(QStatusBar* bar) : m_bar(bar), m_link(new QLabel(bar)) {
    m_link->setObjectName(QStringLiteral("label_link"));
    m_link->setAccessibleName(tr("连接"));
    m_bar->addPermanentWidget(m_link);
    m_tick.setInterval(tickInterval);
    connect(&m_tick, &QTimer::timeout, this, &StatusLine::showRunning);
}

void StatusLine::setClient(const CameraSp* client) {
    m_client = client;
    m_uses.clear();
    m_tick.stop();
}

void StatusLine::setLinkText(const QString& text) {
    m_link->setText(text);
}

void StatusLine::showState(const QString& text) {
    m_bar->showMessage(text);
}

void StatusLine::showOutcome(const QString& text) {
    const bool adapterGone = m_client != nullptr && m_client->portFailed();
    m_bar->showMessage(QTime::currentTime().toString(QStringLiteral("HH:mm:ss  ")) +
                       (adapterGone ? tr("串口转接器已断开，请插好后关闭并重新打开串口") : text));
}

bool StatusLine::isSilent() const {
    return m_bar->currentMessage().isEmpty();
}

void StatusLine::clientMissing() {
    showState(tr("请先打开串口"));
}

void StatusLine::useBegan(const std::shared_ptr<const LinkUse>& use) {
    if (use->name.isEmpty())
        return;
    if (use->blocking) {
        // Nothing can be painted before it ends, however long it takes.
        showState(tr("正在%1…").arg(use->name));
        m_bar->repaint();
        return;
    }
    m_uses.push_back(use);
    m_tick.start();
}

void StatusLine::useEnded(const LinkUse& use, bool succeeded) {
    std::erase_if(m_uses, [&use](const auto& other) {
        const auto running = other.lock();
        return running == nullptr || running.get() == &use;
    });
    if (use.name.isEmpty())
        return;
    QString text = succeeded ? tr("%1：完成").arg(use.name)
                             : tr("%1：没有得到结果，请检查接线、从机地址和波特率").arg(use.name);
    if (const auto age = ageOf(use); age >= worthTelling)
        text += tr("（用时 %1 秒）").arg(std::chrono::duration<double>(age).count(), 0, 'f', 1);
    showOutcome(text);
}

std::shared_ptr<const LinkUse> StatusLine::latestUse() {
    std::erase_if(m_uses, [](const auto& use) { return use.expired(); });
    return m_uses.empty() ? nullptr : m_uses.back().lock();
}

void StatusLine::showRunning() {
    const auto use = latestUse();
    if (use == nullptr) {
        m_tick.stop();
        if (m_bar->currentMessage() == m_runningText) // its window was closed before the end
            m_bar->clearMessage();
    } else if (ageOf(*use) >= worthTelling) {
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(ageOf(*use)).count();
        m_runningText = tr("正在%1…（%2 秒）").arg(use->name).arg(seconds);
        showState(m_runningText);
    }
}
