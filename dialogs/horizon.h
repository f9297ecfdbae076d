// A drawing of how the camera is mounted.
#pragma once

#include <QWidget>

#include <optional>

/// Angles in degrees.
struct Attitude {
    double pitch = 0;
    double roll = 0;
    double yaw = 0;
};

/// An artificial horizon: the line is turned by the roll and moved by the pitch; a mark on the edge is turned
/// by the yaw. Empty without an attitude. User-interface thread.
class Horizon final : public QWidget {
public:
    using QWidget::QWidget;

    void setAttitude(const std::optional<Attitude>& attitude);
    [[nodiscard]] const std::optional<Attitude>& attitude() const { return m_attitude; }
    [[nodiscard]] QSize sizeHint() const override { return {130, 130}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {80, 80}; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    std::optional<Attitude> m_attitude;
};
