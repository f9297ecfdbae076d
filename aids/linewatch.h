// Logs the open link and shows its quality.
#pragma once

#include "aids/qualitymark.h"
#include "link/camerasp.h"
#include "service/linelog.h"

#include <QTimer>

#include <memory>
#include <optional>

/// Owns the log of the open link, or of the last one. User-interface thread; the link's threads add to the
/// log's record.
class LineWatch final : public QObject {
    Q_OBJECT

public:
    /// The mark belongs to its window, which outlives this, as does the clock.
    LineWatch(Clock& clock, QualityMark* mark, QObject* parent);

    /// Begins a new log. The camera lives until linkClosed().
    void linkOpened(CameraSp& camera, const QString& port);
    /// Call it after the link's last use.
    void linkClosed();
    /// Of the open link, for the words of its picture commands.
    void setPictureOffset(std::uint8_t offset);

    /// Null before the first link.
    [[nodiscard]] const std::shared_ptr<service::LineLog>& log() const { return m_log; }
    /// Decodes what came since the last call.
    void update();

private:
    Clock& m_clock;
    QualityMark* m_mark;
    std::shared_ptr<service::LineLog> m_log;
    std::optional<LineObservation> m_observation; ///< of the open link
    QTimer m_timer;
};
