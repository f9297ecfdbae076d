// The signs of outcomes and actions: one family, drawn for this program.
#pragma once

#include <QIcon>
#include <QWidget>

#include <cstdint>

/// Outcomes differ in shape: a ring with a line, a ring with hands, a disc with a tick, a triangle with a
/// stroke and a dot, a rhombus with a cross. Actions are drawn with one stroke width and no colour.
enum class Sign : std::uint8_t {
    none,
    // outcomes
    unknown,
    waiting,
    success,
    warning,
    failure,
    // actions
    open, ///< of the port: a plug
    close,
    heartbeat,
    picture,
    upload,
    check,
    find,
    log,
    more, ///< entries of a bar that is too narrow
};

/// Draws the sign as large as the area allows; `edge` is the colour of texts on the same ground.
void paintSign(QPainter& painter, const QRectF& area, Sign sign, const QColor& edge);

/// Drawn when it is shown, in the palette's colour of button texts at that time.
[[nodiscard]] QIcon signIcon(Sign sign);
/// Puts the sign before the button's text, as high as the text.
void setSign(class QAbstractButton* button, Sign sign);

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
