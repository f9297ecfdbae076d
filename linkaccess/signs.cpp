#include "linkaccess/signs.h"

#include <QAbstractButton>
#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>

namespace {

constexpr QColor successColor(0x2e, 0x9e, 0x4f);
constexpr QColor warningColor(0xf9, 0xa8, 0x25);
constexpr QColor failureColor(0xc6, 0x28, 0x28);
// Signs are drawn on a square of this side.
constexpr double side = 20;
constexpr double outlineWidth = 1.2;
constexpr double markWidth = 2.2;
constexpr double strokeWidth = 1.6; ///< of actions
constexpr QPointF middle(side / 2, side / 2);

void paintRing(QPainter& painter) {
    painter.drawEllipse(middle, 7.5, 7.5);
}

void paintOutcome(QPainter& painter, Sign sign) {
    const QPen mark(Qt::white, markWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    switch (sign) {
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
    case Sign::warning:
        painter.setBrush(warningColor);
        painter.drawPolygon(QPolygonF{{10, 1.5}, {19, 18}, {1, 18}});
        painter.setPen(QPen(Qt::black, markWidth, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(10, 7.5), QPointF(10, 11.5));
        painter.drawPoint(QPointF(10, 15));
        break;
    case Sign::failure:
        painter.setBrush(failureColor);
        painter.drawPolygon(QPolygonF{{10, 0.7}, {19.3, 10}, {10, 19.3}, {0.7, 10}});
        painter.setPen(mark);
        painter.drawLine(QPointF(7, 7), QPointF(13, 13));
        painter.drawLine(QPointF(7, 13), QPointF(13, 7));
        break;
    default:
        break;
    }
}

void addLine(QPainterPath& path, const QPolygonF& points) {
    path.addPolygon(points);
}

QPainterPath plug() {
    QPainterPath path;
    addLine(path, {{7, 2}, {7, 6}});
    addLine(path, {{13, 2}, {13, 6}});
    path.moveTo(4.5, 6);
    path.lineTo(15.5, 6);
    path.lineTo(15.5, 9);
    path.arcTo(QRectF(4.5, 3.5, 11, 11), 0, -180);
    path.closeSubpath();
    addLine(path, {{10, 14.5}, {10, 18}});
    return path;
}

QPainterPath pathOf(Sign sign) {
    QPainterPath path;
    switch (sign) {
    case Sign::open:
        return plug();
    case Sign::close:
        path = plug();
        addLine(path, {{2.5, 2.5}, {17.5, 17.5}});
        break;
    case Sign::heartbeat:
        addLine(path, {{1.5, 10}, {6, 10}, {8.5, 4}, {12, 16}, {14, 10}, {18.5, 10}});
        break;
    case Sign::picture:
        path.addRoundedRect(QRectF(2, 5.5, 16, 11), 2, 2);
        addLine(path, {{6.5, 5.5}, {8, 3}, {12, 3}, {13.5, 5.5}});
        path.addEllipse(QPointF(10, 11), 3, 3);
        break;
    case Sign::upload:
        addLine(path, {{10, 13}, {10, 2.5}});
        addLine(path, {{6, 6.5}, {10, 2.5}, {14, 6.5}});
        addLine(path, {{3, 12}, {3, 17}, {17, 17}, {17, 12}});
        break;
    case Sign::check:
        path.addRoundedRect(QRectF(3.5, 3.5, 13, 14.5), 1.5, 1.5);
        path.addRect(QRectF(7.5, 2, 5, 3));
        addLine(path, {{6.8, 11.3}, {9.2, 13.7}, {13.4, 8.8}});
        break;
    case Sign::find:
        path.addEllipse(QPointF(8.5, 8.5), 5.8, 5.8);
        addLine(path, {{12.8, 12.8}, {17.8, 17.8}});
        break;
    case Sign::log:
        path.addRoundedRect(QRectF(3, 2.5, 14, 15), 1.5, 1.5);
        addLine(path, {{6.3, 7}, {13.7, 7}});
        addLine(path, {{6.3, 10}, {13.7, 10}});
        addLine(path, {{6.3, 13}, {10.5, 13}});
        break;
    case Sign::more:
        addLine(path, {{4, 5}, {9, 10}, {4, 15}});
        addLine(path, {{11, 5}, {16, 10}, {11, 15}});
        break;
    default:
        break;
    }
    return path;
}

class SignEngine final : public QIconEngine {
public:
    explicit SignEngine(Sign sign) : m_sign(sign) {}

    void paint(QPainter* painter, const QRect& area, QIcon::Mode mode, QIcon::State /*state*/) override {
        const QPalette::ColorGroup group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        const auto role = mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::ButtonText;
        paintSign(*painter, area, m_sign, QGuiApplication::palette().color(group, role));
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap picture(size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        paint(&painter, QRect({}, size), mode, state);
        return picture;
    }
    [[nodiscard]] QIconEngine* clone() const override { return new SignEngine(m_sign); }

private:
    Sign m_sign;
};

} // namespace

void paintSign(QPainter& painter, const QRectF& area, Sign sign, const QColor& edge) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const double scale = std::min(area.width(), area.height()) / side;
    painter.translate(area.center() - middle * scale);
    painter.scale(scale, scale);
    painter.setPen(QPen(edge, outlineWidth));
    if (sign < Sign::open) {
        paintOutcome(painter, sign);
    } else {
        painter.setPen(QPen(edge, strokeWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPath(pathOf(sign));
    }
    painter.restore();
}

QIcon signIcon(Sign sign) {
    return QIcon(new SignEngine(sign));
}

void setSign(QAbstractButton* button, Sign sign) {
    const int height = button->fontMetrics().height();
    button->setIconSize({height, height});
    button->setIcon(signIcon(sign));
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
