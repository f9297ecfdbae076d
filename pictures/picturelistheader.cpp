#include "pictures/picturelistheader.h"

#include "pictures/listcolumns.h"

#include <QAbstractItemView>
#include <QEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QTimer>

void PictureListHeader::setUp(const PictureGeneration& generation, QAbstractItemView* list) {
    m_columns = generation.columns;
    m_list = list;
    constexpr int whole = 100;
    int leastWidth = 0;
    std::size_t column = 0;
    for (const QString& title : generation.columnTitles()) {
        auto* label = new QLabel(title, this);
        label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        label->setToolTip(tr("点击排序，第三次恢复原来的顺序（Ctrl+%1）").arg(column + 1));
        m_labels.push_back(label);
        if (const int percent = m_columns[column++].percent; percent != 0) // one pixel is lost by cutting off
            leastWidth =
                qMax(leastWidth, (label->sizeHint().width() + 2 * columnInset + 1) * whole / percent);
    }
    setMinimumSize(leastWidth, m_labels.front()->sizeHint().height() + markHeight());
    list->viewport()->installEventFilter(this);
    placeLabels();
}

bool PictureListHeader::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Resize || event->type() == QEvent::Show)
        placeLabels();
    // The list by itself keeps rows that are too wide for a moment after it got narrower.
    if (event->type() == QEvent::Resize)
        QTimer::singleShot(0, m_list, &QAbstractItemView::doItemsLayout);
    return QWidget::eventFilter(watched, event);
}

void PictureListHeader::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placeLabels();
}

void PictureListHeader::placeLabels() {
    if (m_list == nullptr)
        return;
    const QWidget* rows = m_list->viewport();
    const int left = mapFromGlobal(rows->mapToGlobal(QPoint(0, 0))).x();
    std::size_t column = 0;
    const QRect row(left, markHeight(), rows->width(), height() - markHeight());
    for (const QRect& rect : columnRects(row, m_columns))
        m_labels[column++]->setGeometry(textRect(rect));
}

int PictureListHeader::markHeight() const {
    return fontMetrics().height() / 2;
}

// --- sorting -----------------------------------------------------------------------------------------------

int PictureListHeader::columnAt(QPoint position) const {
    for (std::size_t column = 0; column < m_labels.size(); ++column) {
        const QRect label = m_labels[column]->geometry();
        if (label.left() <= position.x() && position.x() <= label.right() && rect().contains(position))
            return static_cast<int>(column);
    }
    return -1;
}

void PictureListHeader::sortBy(int column) {
    const bool again = column == m_sortColumn;
    const bool restored = again && m_sortOrder == Qt::DescendingOrder;
    m_sortOrder = again && !restored ? Qt::DescendingOrder : Qt::AscendingOrder;
    m_sortColumn = restored ? -1 : column;
    m_list->model()->sort(m_sortColumn, m_sortOrder);
    update();
}

void PictureListHeader::mousePressEvent(QMouseEvent* event) {
    m_pressed = event->button() == Qt::LeftButton ? columnAt(event->position().toPoint()) : -1;
}

void PictureListHeader::mouseReleaseEvent(QMouseEvent* event) {
    if (m_pressed >= 0 && columnAt(event->position().toPoint()) == m_pressed)
        sortBy(m_pressed);
    m_pressed = -1;
}

void PictureListHeader::paintEvent(QPaintEvent* /*event*/) {
    if (m_sortColumn < 0)
        return;
    const QLabel* const label = m_labels[static_cast<std::size_t>(m_sortColumn)];
    const int height = markHeight();
    const double middle = label->x() + label->sizeHint().width() / 2.0;
    const bool upwards = m_sortOrder == Qt::AscendingOrder;
    const double halfWidth = 0.8 * height;
    const double base = upwards ? height - 1 : 1;
    const double tip = upwards ? 1 : height - 1;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(palette().color(QPalette::WindowText));
    painter.drawPolygon(QPolygonF{{middle - halfWidth, base}, {middle, tip}, {middle + halfWidth, base}});
}
