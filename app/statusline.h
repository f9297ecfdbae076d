// The status bar's story: what is open, what is being done, and how the last action ended.
#pragma once

#include "linkaccess/linkuse.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <memory>
#include <vector>

class CameraSp;
class QLabel;
class QStatusBar;

/// Writes the status bar. At the left a line that is either a state, an action under way, or an outcome with
/// the time of day; at the right the link. User-interface thread only.
class StatusLine final : public QObject, public LinkUseObserver {
    Q_OBJECT

public:
    /// The bar belongs to the window, which outlives this, as does the clock.
    explicit StatusLine(QStatusBar* bar, const Clock& clock = Clock::system());

    /// The open link's client, or null; actions of an earlier link are forgotten.
    void setClient(const CameraSp* client);
    /// What the right side says of the link.
    void setLinkText(const QString& text);

    /// Shows a message until the next one.
    void showState(const QString& text);
    /// Shows a message until it is released: what other actions tell meanwhile is not shown.
    void holdState(const QString& text);
    void releaseState() { m_held = false; }
    /// Shows how an action ended, with the time of day; when the adapter is gone, that instead.
    void showOutcome(const QString& text);
    /// Whether anything has been said yet.
    [[nodiscard]] bool isSilent() const;

    void clientMissing() override;
    void useBegan(const std::shared_ptr<const LinkUse>& use) override;
    void useEnded(const LinkUse& use, const UseOutcome& outcome) override;

    /// Paints the seconds that the action under way has taken. For a command that blocks this thread: no
    /// event is processed. To be called often.
    void keepCounting();

private:
    /// The action that began last and is still running, if it has a name.
    [[nodiscard]] std::shared_ptr<const LinkUse> latestUse();
    /// True when the line has changed.
    bool showRunning(std::chrono::milliseconds from);
    void tick();

    [[nodiscard]] std::chrono::milliseconds ageOf(const LinkUse& use) const;

    const Clock& m_clock;
    QStatusBar* m_bar;
    QLabel* m_link;
    const CameraSp* m_client = nullptr;
    std::vector<std::weak_ptr<const LinkUse>> m_uses;
    QString m_runningText; ///< the last one of showRunning
    QTimer m_tick;
    bool m_held = false;
};
