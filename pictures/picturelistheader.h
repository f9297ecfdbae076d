// The header labels of a picture list.
#pragma once

#include "pictures/picturegeneration.h"

#include <QPointer>
#include <QWidget>

class QAbstractItemView;
class QLabel;

/// One label per column, standing over the column as the delegate paints it: whatever the window's width and
/// whether or not the list shows its scroll bar.
class PictureListHeader final : public QWidget {
    Q_OBJECT

public:
    explicit PictureListHeader(QWidget* parent = nullptr) : QWidget(parent) {}

    /// Makes the labels; to be called once.
    void setUp(const PictureGeneration& generation, QAbstractItemView* list);

    bool eventFilter(QObject* watched, QEvent* event) override;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void placeLabels();

    std::span<const PictureGeneration::Column> m_columns;
    QPointer<QAbstractItemView> m_list;
    std::vector<QLabel*> m_labels;
};
