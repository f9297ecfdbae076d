// The status bar: the link, the current action, the last outcome.
#pragma once

#include "linkaccess/linkuse.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <memory>
#include <vector>

class CameraSp;
class QLabel;
class QPushButton;
class QStatusBar;

/// Writes the status bar: left a state, the current action, or an outcome with the time of day; right the
/// link. After an action without a usable answer the message ends with a link to the search for cameras,
/// after a lost adapter is back with one that reopens the link. User-interface thread.
class StatusLine final : public QObject, public LinkUseObserver {
    Q_OBJECT

public:
    /// The bar belongs to the window, which outlives this, as does the clock.
    explicit StatusLine(QStatusBar* bar, const Clock& clock = Clock::system());

    /// The open link's client, or null. Drops actions of an earlier link.
    void setClient(const CameraSp* client);
    /// Text of the right side.
    void setLinkText(const QString& text);

    /// Shows a message until the next one.
    void showState(const QString& text);
    /// Shows a message until it is released; hides messages of other actions meanwhile.
    void holdState(const QString& text);
    void releaseState() { m_held = false; }
    /// Shows an outcome with the time of day, or that the adapter is gone.
    void showOutcome(const QString& text);
    /// True if the bar shows no message.
    [[nodiscard]] bool isSilent() const;
    /// Shows the button "重新打开", or hides it. Move the focus away before.
    void offerReopening(bool offered) { offer(m_reopenLink, offered); }
    [[nodiscard]] bool isReopeningFocused() const;

    void clientMissing() override;
    void useBegan(const std::shared_ptr<const LinkUse>& use) override;
    void useEnded(const LinkUse& use, const UseOutcome& outcome) override;

    /// Paints the seconds of the current action. For a command that blocks this thread; processes no events.
    /// Call it often.
    void keepCounting();

signals:
    void searchWanted();
    void reopeningWanted();
    /// An outcome was shown after the open link's port had failed.
    void adapterMissed();

private:
    /// Adds a hidden button that looks like a link.
    QPushButton* addLink(const char* name, const QString& text);
    /// Also decides about the tab stop: a hidden control must be none.
    static void offer(QPushButton* link, bool offered);
    /// The newest running action with a name.
    [[nodiscard]] std::shared_ptr<const LinkUse> latestUse();
    /// True if the message changed.
    bool showRunning(std::chrono::milliseconds from);
    void tick();

    [[nodiscard]] std::chrono::milliseconds ageOf(const LinkUse& use) const;

    const Clock& m_clock;
    QStatusBar* m_bar;
    QLabel* m_link;
    QPushButton* m_searchLink;
    QPushButton* m_reopenLink;
    const CameraSp* m_client = nullptr;
    std::vector<std::weak_ptr<const LinkUse>> m_uses;
    QString m_runningText; ///< last text of showRunning
    QTimer m_tick;
    bool m_held = false;
};
