#include "pictures/picturelistdelegate.h"

#include "pictures/listcolumns.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>

namespace {
constexpr int rowHeight = 24; // pixels
} // namespace

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
        if (rect.contains(event->pos()))
            return QStyledItemDelegate::helpEvent(event, view, option, index.siblingAtColumn(column));
        ++column;
    }
    return QStyledItemDelegate::helpEvent(event, view, option, index);
}
