#include "app/statusline.h"

#include "link/camerasp.h"
#include "service/reportwords.h"

#include <QLabel>
#include <QPushButton>
#include <QStatusBar>
#include <QTime>

#include <algorithm>

using namespace std::chrono_literals;

namespace {

constexpr auto worthTelling = 500ms; // shorter actions need no duration
constexpr auto worthCounting = 1s;   // of a blocking command, which was announced at its start
constexpr auto tickInterval = 250ms;

} // namespace

StatusLine::StatusLine(QStatusBar* bar, const Clock& clock)
    : m_clock(clock), m_bar(bar), m_link(new QLabel(bar)),
      m_searchLink(addLink("link_search", tr("查找摄像头"))),
      m_reopenLink(addLink("btn_reopen", tr("重新打开"))) {
    m_link->setObjectName(QStringLiteral("label_link"));
    m_link->setAccessibleDescription(tr("连接"));
    m_bar->addPermanentWidget(m_link);
    connect(m_bar, &QStatusBar::messageChanged, m_bar, &QWidget::setToolTip); // large texts are cut
    connect(m_searchLink, &QPushButton::clicked, this, &StatusLine::searchWanted);
    connect(m_reopenLink, &QPushButton::clicked, this, &StatusLine::reopeningWanted);
    m_tick.setInterval(tickInterval);
    connect(&m_tick, &QTimer::timeout, this, &StatusLine::tick);
}

QPushButton* StatusLine::addLink(const char* name, const QString& text) {
    auto* const link = new QPushButton(text, m_bar);
    link->setObjectName(QLatin1String(name));
    link->setFlat(true);
    link->setCursor(Qt::PointingHandCursor);
    m_bar->addPermanentWidget(link);
    offer(link, false);
    return link;
}

void StatusLine::offer(QPushButton* link, bool offered) {
    if (offered && link->styleSheet().isEmpty()) // costs time, which the start does not have
        link->setStyleSheet(QStringLiteral(
            "QPushButton { color: palette(link); text-decoration: underline; border: none; padding: 0 4px; }"
            "QPushButton:focus { border: 1px dotted palette(link); }"));
    link->setVisible(offered);
    link->setFocusPolicy(offered ? Qt::StrongFocus : Qt::NoFocus);
}

bool StatusLine::isReopeningFocused() const {
    return m_reopenLink->hasFocus();
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
    if (m_held)
        return;
    offer(m_searchLink, false);
    m_bar->showMessage(text);
}

void StatusLine::holdState(const QString& text) {
    m_held = false;
    showState(text);
    m_held = true;
}

void StatusLine::showOutcome(const QString& text) {
    const bool adapterGone = m_client != nullptr && m_client->portFailed();
    showState(QTime::currentTime().toString(QStringLiteral("HH:mm:ss  ")) +
              (adapterGone ? tr("串口转接器已断开，请插好后关闭并重新打开串口") : text));
    if (adapterGone && !m_held)
        emit adapterMissed();
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
    m_uses.push_back(use);
    if (use->blocking) {
        m_runningText = tr("正在%1…").arg(use->name);
        showState(m_runningText);
        m_bar->repaint(); // no events are processed before it ends
    }
    m_tick.start();
}

void StatusLine::useEnded(const LinkUse& use, const UseOutcome& outcome) {
    std::erase_if(m_uses, [&use](const auto& other) {
        const auto running = other.lock();
        return running == nullptr || running.get() == &use;
    });
    if (use.name.isEmpty())
        return;
    const QString words = outcome.text.isEmpty() ? reportWords(outcome.report) : outcome.text;
    QString text = (outcome.partly ? tr("%1：部分没有读到（%2）") : tr("%1：%2")).arg(use.name, words);
    if (const auto age = ageOf(use); age >= worthTelling)
        text += tr("（用时 %1 秒）").arg(std::chrono::duration<double>(age).count(), 0, 'f', 1);
    showOutcome(text);
    const bool silent = outcome.report.end == CommandEnd::noAnswer && !outcome.partly;
    offer(m_searchLink, silent && !m_held && m_client != nullptr && !m_client->portFailed());
}

std::shared_ptr<const LinkUse> StatusLine::latestUse() {
    std::erase_if(m_uses, [](const auto& use) { return use.expired(); });
    return m_uses.empty() ? nullptr : m_uses.back().lock();
}

bool StatusLine::showRunning(std::chrono::milliseconds from) {
    const auto use = latestUse();
    if (use == nullptr || ageOf(*use) < from)
        return false;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(ageOf(*use)).count();
    const QString text = tr("正在%1…（%2 秒）").arg(use->name).arg(seconds);
    if (text == m_bar->currentMessage())
        return false;
    m_runningText = text;
    showState(text);
    return true;
}

std::chrono::milliseconds StatusLine::ageOf(const LinkUse& use) const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(m_clock.now() - use.began);
}

void StatusLine::tick() {
    if (latestUse() != nullptr) {
        showRunning(worthTelling);
        return;
    }
    m_tick.stop();
    if (m_bar->currentMessage() == m_runningText) // its window was closed before the end
        m_bar->clearMessage();
}

void StatusLine::keepCounting() {
    if (showRunning(worthCounting))
        m_bar->repaint();
}
