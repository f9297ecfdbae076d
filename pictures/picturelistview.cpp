#include "pictures/picturelistview.h"

#include "pictures/picturelistdelegate.h"

#include <QFontInfo>
#include <QPainter>

namespace {
constexpr int lineGap = 4; // Chinese letters are higher than a line of some fonts
} // namespace

PictureListView::PictureListView(QWidget* parent) : QListView(parent) {
    constexpr int most = PictureListDelegate::rowHeight - lineGap;
    if (const int height = fontMetrics().height(); height > most) {
        QFont smaller = font();
        smaller.setPixelSize(fontInfo().pixelSize() * most / height);
        setFont(smaller);
    }
}

QVariant PictureListView::inputMethodQuery(Qt::InputMethodQuery query) const {
    if (query == Qt::ImCursorRectangle && currentIndex().isValid())
        return visualRect(currentIndex()).intersected(viewport()->rect());
    return QListView::inputMethodQuery(query);
}

void PictureListView::paintEvent(QPaintEvent* event) {
    QListView::paintEvent(event);
    if (model() == nullptr || model()->rowCount() > 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.drawText(viewport()->rect(), Qt::AlignCenter, tr("按“刷新列表”读取"));
}

void PictureListSummary::setText(const QString& text) {
    setAccessibleName(text);
    updateGeometry();
    update();
}

QSize PictureListSummary::sizeHint() const {
    return {fontMetrics().horizontalAdvance(text()), fontMetrics().height()};
}

void PictureListSummary::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(rect(), Qt::AlignLeft | Qt::AlignVCenter, text());
}
