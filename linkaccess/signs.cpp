#include "linkaccess/signs.h"

#include <QPainter>

#include <algorithm>

namespace {

constexpr QColor successColor(0x2e, 0x9e, 0x4f);
constexpr QColor failureColor(0xc6, 0x28, 0x28);
// Signs are drawn on a square of this side.
constexpr double side = 20;
constexpr double outlineWidth = 1.2;
constexpr double markWidth = 2.2;
constexpr QPointF middle(side / 2, side / 2);

void paintRing(QPainter& painter) {
    painter.drawEllipse(middle, 7.5, 7.5);
}

} // namespace

void paintSign(QPainter& painter, const QRectF& area, Sign sign, const QColor& edge) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const double scale = std::min(area.width(), area.height()) / side;
    painter.translate(area.center() - middle * scale);
    painter.scale(scale, scale);
    painter.setPen(QPen(edge, outlineWidth));
    const QPen mark(Qt::white, markWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    switch (sign) {
    case Sign::none:
        break;
    case Sign::unknown:
        paintRing(painter);
        painter.drawLine(QPointF(7, 10), QPointF(13, 10));
        break;
    case Sign::waiting:
        paintRing(painter);
        painter.drawPolyline(QPolygonF{{10, 5.5}, {10, 10}, {13, 12}});
        break;
    case Sign::success:
        painter.setBrush(successColor);
        painter.drawEllipse(middle, 9, 9);
        painter.setPen(mark);
        painter.drawPolyline(QPolygonF{{6, 10.5}, {9, 13.5}, {14.5, 7}});
        break;
    case Sign::failure:
        painter.setBrush(failureColor);
        painter.drawPolygon(QPolygonF{{10, 0.7}, {19.3, 10}, {10, 19.3}, {0.7, 10}});
        painter.setPen(mark);
        painter.drawLine(QPointF(7, 7), QPointF(13, 13));
        painter.drawLine(QPointF(7, 13), QPointF(13, 7));
        break;
    }
    painter.restore();
}

void SignMark::setSign(Sign sign) {
    m_sign = sign;
    setVisible(sign != Sign::none);
    update();
}

QSize SignMark::sizeHint() const {
    const int height = fontMetrics().height();
    return {height, height};
}

void SignMark::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    paintSign(painter, rect(), m_sign, palette().color(QPalette::WindowText));
}
