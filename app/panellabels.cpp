#include "app/panellabels.h"

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QPainter>

namespace {

constexpr int leastPathLength = 12; // characters
constexpr int lineGap = 3;          // Chinese letters are higher than a line of some fonts

} // namespace

PathLabel::PathLabel(QWidget* parent) : QLabel(parent) {
    auto* const copy = new QAction(tr("复制路径"), this);
    connect(copy, &QAction::triggered, this, [this] { QGuiApplication::clipboard()->setText(text()); });
    addAction(copy);
    setContextMenuPolicy(Qt::ActionsContextMenu);
}

QSize PathLabel::sizeHint() const {
    return minimumSizeHint();
}

QSize PathLabel::minimumSizeHint() const {
    const QFontMetrics metrics = fontMetrics();
    return {metrics.averageCharWidth() * leastPathLength, 2 * metrics.height() + lineGap};
}

QString PathLabel::shownPath() const {
    return fontMetrics().elidedText(text(), Qt::ElideMiddle, contentsRect().width());
}

void PathLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    const QRect area = contentsRect();
    const QPalette& colors = palette();
    painter.setPen(colors.color(QPalette::PlaceholderText));
    painter.drawText(area, Qt::AlignLeft | Qt::AlignTop, property("caption").toString());
    painter.setPen(colors.color(foregroundRole()));
    painter.drawText(area.adjusted(0, fontMetrics().height() + lineGap, 0, 0), Qt::AlignLeft | Qt::AlignTop,
                     shownPath());
}
