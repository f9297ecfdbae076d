// The signs of outcomes, in windows and lamps.
#pragma once

#include <QWidget>

#include <cstdint>

/// They differ in shape: a ring with a line, a ring with hands, a disc with a tick, a rhombus with a cross.
enum class Sign : std::uint8_t { none, unknown, waiting, success, failure };

/// Draws the sign as large as the area allows; `edge` is the colour of texts on the same ground.
void paintSign(QPainter& painter, const QRectF& area, Sign sign, const QColor& edge);

/// A sign of a text's height, beside that text. User-interface thread.
class SignMark final : public QWidget {
public:
    using QWidget::QWidget;

    void setSign(Sign sign);
    [[nodiscard]] Sign sign() const { return m_sign; }
    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Sign m_sign = Sign::none;
};
