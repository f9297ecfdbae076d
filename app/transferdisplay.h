// Progress of the running transfer, in the status bar.
#pragma once

#include "link/clock.h"
#include "service/transfertext.h"

#include <QTimer>
#include <QWidget>

#include <memory>
#include <optional>

class CameraSp;
class QLabel;
class QProgressBar;
class QToolButton;

/// Attempts of a return wait, written by the job that makes them.
struct ReturnWaitProgress {
    std::atomic<int> attempt{0};
    int attempts = 0;
};

/// A bar and a line of text, hidden without a transfer. Polls the link's progress. In a status bar it is the
/// first permanent widget and leaves room for the message. User-interface thread.
class TransferDisplay final : public QWidget {
    Q_OBJECT

public:
    /// The clock outlives the display.
    explicit TransferDisplay(QWidget* parent = nullptr, const Clock& clock = Clock::system());

    /// Shows an upload and its wait for the line until finish(), which the client outlives.
    void followUpload(const CameraSp& client);
    /// Shows a picture download from its first byte on.
    void followDownload(const TransferProgress& progress);
    /// Shows the wait for the camera's return instead.
    void followReturnWait(std::shared_ptr<const ReturnWaitProgress> progress);
    void finish();
    /// Call it when the message of the status bar changed.
    void fit();

signals:
    /// The button beside an upload or return wait was pressed.
    void stopWanted();

protected:
    void moveEvent(QMoveEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void follow(const TransferProgress* transfer);
    /// Of an upload or return wait; a download has none.
    void offerStop(bool offered);
    void refresh();
    void refreshTransfer();
    void showWait(const QString& text);
    void showText(const QString& text);

    const Clock& m_clock;
    QLabel* m_label;
    QProgressBar* m_bar;
    QToolButton* m_stop;
    QTimer m_poll;
    std::optional<Clock::Time> m_sendingSince;
    const TransferProgress* m_transfer = nullptr;
    const CameraSp* m_uploading = nullptr; ///< client of the upload
    std::shared_ptr<const ReturnWaitProgress> m_returnWait;
};
