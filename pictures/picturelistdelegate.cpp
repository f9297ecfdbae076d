#include "pictures/picturelistdelegate.h"

#include "pictures/listcolumns.h"

#include <QAbstractItemView>
#include <QDateTime>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

PictureListDelegate::PictureListDelegate(const PictureGeneration& generation, QObject* parent)
    : QStyledItemDelegate(parent), m_generation(generation) {}

void PictureListDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                const QModelIndex& index) const {
    const bool enabled = option.state.testFlag(QStyle::State_Enabled);
    const bool selected = option.state.testFlag(QStyle::State_Selected);
    const QPalette::ColorGroup group = enabled ? QPalette::Normal : QPalette::Disabled;
    painter->save();
    if (selected)
        painter->fillRect(option.rect, option.palette.brush(group, QPalette::Highlight));
    painter->setFont(option.font);
    painter->setPen(option.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text));
    int column = 0;
    for (const QRect& rect : columnRects(option.rect, m_generation.columns)) {
        const QRect place = textRect(rect);
        const QString text = index.siblingAtColumn(column++).data(Qt::DisplayRole).toString();
        painter->drawText(place, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                          option.fontMetrics.elidedText(text, Qt::ElideRight, place.width()));
    }
    painter->restore();
}

QSize PictureListDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& /*index*/) const {
    return {option.rect.width(), rowHeight};
}

bool PictureListDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                                    const QStyleOptionViewItem& option, const QModelIndex& index) {
    int column = 0;
    for (const QRect& rect : columnRects(option.rect, m_generation.columns)) {
        if (rect.contains(event->pos())) {
            const QModelIndex cell = index.siblingAtColumn(column);
            const bool isTime = event->type() == QEvent::ToolTip && column == m_generation.timeColumn;
            return (isTime && showTime(event->globalPos(), view, cell)) ||
                   QStyledItemDelegate::helpEvent(event, view, option, cell);
        }
        ++column;
    }
    return QStyledItemDelegate::helpEvent(event, view, option, index);
}

bool PictureListDelegate::showTime(QPoint globalPosition, QAbstractItemView* view, const QModelIndex& cell) {
    const qint64 seconds = cell.data(Qt::DisplayRole).toString().toLongLong();
    if (seconds == 0)
        return false; // a camera without a clock
    const QString time = QDateTime::fromSecsSinceEpoch(seconds).toString(u"yyyy-MM-dd HH:mm:ss");
    const QString item = cell.data(Qt::ToolTipRole).toString();
    QToolTip::showText(globalPosition, item + QLatin1Char('\n') + tr("按秒数换算：%1").arg(time),
                       view->viewport());
    return true;
}
