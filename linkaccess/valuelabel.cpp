#include "linkaccess/valuelabel.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

void ValueLabel::setOfPreviousCamera(bool previous) {
    m_previous = previous;
    update();
}

bool ValueLabel::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip || !toolTip().isEmpty() || heightForWidth(width()) <= height())
        return QLabel::event(event);
    QToolTip::showText(static_cast<const QHelpEvent*>(event)->globalPos(), text(), this);
    return true;
}

void ValueLabel::paintEvent(QPaintEvent* event) {
    const bool hinting = text().isEmpty();
    if (!hinting && !m_previous) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    drawFrame(&painter);
    const QPalette& colors = palette();
    painter.setPen(colors.color(QPalette::PlaceholderText));
    const int vertical = static_cast<int>(alignment() & Qt::AlignVertical_Mask);
    const int gap = qMax(indent(), 0);
    const QRect place = contentsRect().adjusted(gap, gap, 0, 0); // as Qt at the left and the top
    painter.drawText(place, Qt::AlignLeft | Qt::TextWordWrap | vertical,
                     hinting ? property("hint").toString() : text());
}
