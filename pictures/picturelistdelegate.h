// Paints a whole row of a picture list.
#pragma once

#include "pictures/picturegeneration.h"

#include <QStyledItemDelegate>

/// Splits the row into the generation's columns. Base of the two generations' delegates.
class PictureListDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    /// The tool tip is that of the column under the mouse.
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

protected:
    PictureListDelegate(const PictureGeneration& generation, QObject* parent);

private:
    const PictureGeneration& m_generation;
};
