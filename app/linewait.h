// Ends a stalled download that keeps an upload waiting.
#pragma once

#include "link/clock.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <cstdint>

class CameraSp;
class QMessageBox;
class QWidget;

/// Watches an upload that waits for its turn. If a picture download has the line and stalls, asks whether to
/// end it. User-interface thread.
class LineWait final : public QObject {
    Q_OBJECT

public:
    explicit LineWait(QWidget* window);

    /// From the start of an upload until finish(); the client lives that long.
    void follow(CameraSp& client);
    void finish();

private:
    void look();
    void ask();

    QWidget* m_window;
    CameraSp* m_client = nullptr;
    QTimer m_poll;
    Clock::Time m_lastByte; ///< of the download
    std::uint64_t m_done = 0;
    QPointer<QMessageBox> m_question;
};
