// Paints a whole row of a picture list.
#pragma once

#include "pictures/picturegeneration.h"

#include <QStyledItemDelegate>

/// Splits the row into the generation's columns. Base of the two generations' delegates.
class PictureListDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    static constexpr int rowHeight = 24; ///< pixels, whatever the font

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    /// The tool tip is that of the column under the mouse; a time is also shown as date and time of day.
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

protected:
    PictureListDelegate(const PictureGeneration& generation, QObject* parent);

private:
    /// No unit is known; the cameras' times look like seconds since 1970. False without a time.
    static bool showTime(QPoint globalPosition, QAbstractItemView* view, const QModelIndex& cell);

    const PictureGeneration& m_generation;
};
