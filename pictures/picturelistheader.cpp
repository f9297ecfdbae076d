#include "pictures/picturelistheader.h"

#include "pictures/listcolumns.h"

#include <QAbstractItemView>
#include <QEvent>
#include <QLabel>
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
        m_labels.push_back(label);
        if (const int percent = m_columns[column++].percent; percent != 0) // one pixel is lost by cutting off
            leastWidth =
                qMax(leastWidth, (label->sizeHint().width() + 2 * columnInset + 1) * whole / percent);
    }
    setMinimumSize(leastWidth, m_labels.front()->sizeHint().height());
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
    for (const QRect& rect : columnRects(QRect(left, 0, rows->width(), height()), m_columns))
        m_labels[column++]->setGeometry(textRect(rect));
}
