// The header labels of a picture list.
#pragma once

#include "pictures/picturegeneration.h"

#include <QPointer>
#include <QWidget>

class QAbstractItemView;
class QLabel;

/// One label per column, standing over the column as the delegate paints it: whatever the window's width and
/// whether or not the list shows its scroll bar. A mark over a label shows by which column the list is
/// sorted.
class PictureListHeader final : public QWidget {
    Q_OBJECT

public:
    explicit PictureListHeader(QWidget* parent = nullptr) : QWidget(parent) {}

    /// Makes the labels; to be called once.
    void setUp(const PictureGeneration& generation, QAbstractItemView* list);

    /// Sorts as a click on the label does: upwards, then downwards, then in the camera's order again.
    void sortBy(int column);

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void placeLabels();
    /// -1: none.
    [[nodiscard]] int columnAt(QPoint position) const;
    [[nodiscard]] int markHeight() const;

    std::span<const PictureGeneration::Column> m_columns;
    QPointer<QAbstractItemView> m_list;
    std::vector<QLabel*> m_labels;
    int m_pressed = -1;    ///< column under the mouse button
    int m_sortColumn = -1; ///< -1: the camera's order
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
};
