#include "dialogs/horizon.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace {

constexpr QColor sky(0x8f, 0xbc, 0xe6);
constexpr QColor ground(0xa9, 0x8a, 0x66);
// The drawing has its middle at 0 and this radius.
constexpr double radius = 100;
constexpr double unitsPerDegree = 1; // of pitch
constexpr double farAway = 2 * radius;

void paintGround(QPainter& painter, const Attitude& attitude) {
    // Beyond 90 degrees the horizon comes back from the other side.
    const double pitch = std::remainder(attitude.pitch, 360);
    painter.save();
    painter.rotate(-attitude.roll);
    painter.translate(0, std::clamp(pitch * unitsPerDegree, -farAway, farAway));
    painter.fillRect(QRectF(-2 * farAway, 0, 4 * farAway, 4 * farAway), ground);
    painter.drawLine(QPointF(-2 * farAway, 0), QPointF(2 * farAway, 0));
    painter.restore();
}

void paintCamera(QPainter& painter) {
    painter.drawLine(QPointF(-50, 0), QPointF(-15, 0));
    painter.drawLine(QPointF(15, 0), QPointF(50, 0));
    painter.drawEllipse(QPointF(), 5, 5);
}

void paintYaw(QPainter& painter, double yaw) {
    painter.save();
    painter.rotate(yaw);
    painter.drawPolygon(QPolygonF{{0, -radius + 4}, {-9, -radius + 22}, {9, -radius + 22}});
    painter.restore();
}

} // namespace

void Horizon::setAttitude(const std::optional<Attitude>& attitude) {
    m_attitude = attitude;
    update();
}

void Horizon::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const double scale = std::min(width(), height()) / (2 * radius + 4);
    painter.translate(QRectF(rect()).center());
    painter.scale(scale, scale);
    const QColor edge = palette().color(QPalette::WindowText);
    painter.setPen(QPen(edge, 2));
    if (m_attitude) {
        QPainterPath circle;
        circle.addEllipse(QPointF(), radius, radius);
        painter.save();
        painter.setClipPath(circle);
        painter.fillPath(circle, sky);
        painter.setPen(QPen(Qt::black, 2));
        paintGround(painter, *m_attitude);
        painter.setPen(QPen(Qt::black, 4));
        paintCamera(painter);
        painter.setPen(QPen(Qt::black, 1));
        painter.setBrush(Qt::black);
        paintYaw(painter, m_attitude->yaw);
        painter.restore();
    }
    painter.drawEllipse(QPointF(), radius, radius);
}
