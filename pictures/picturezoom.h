// The section of a picture that a view shows.
#pragma once

#include <QPixmap>
#include <QPointF>
#include <QSizeF>

/// Step 0 shows the whole picture, scaled into 600 x 400; each step enlarges it by the square root of 2, up
/// to 16 times. A section never reaches beyond the picture. Points and sizes are device-independent pixels.
class PictureZoom {
public:
    /// Shows the whole picture. A null picture has no zoom.
    void setPicture(const QPixmap& picture);
    [[nodiscard]] const QPixmap& picture() const { return m_picture; }

    [[nodiscard]] bool canZoomIn() const;
    [[nodiscard]] bool isZoomed() const { return m_step > 0; }
    /// anchor, from the middle of the view: what the view shows there stays there.
    void zoom(int steps, QPointF anchor, QSizeF view);
    void fit();
    /// Moves the section over the picture.
    void pan(QPointF by, QSizeF view);

    /// At most as large as the view.
    [[nodiscard]] QPixmap visible(QSizeF view, double devicePixelRatio) const;

private:
    /// Of the whole picture at this step.
    [[nodiscard]] QSizeF size() const;
    [[nodiscard]] QPointF clamped(QPointF middle, QSizeF view) const;

    QPixmap m_picture;
    QPixmap m_whole; ///< as step 0 shows it
    int m_step = 0;
    QPointF m_middle; ///< of the section, 0 to 1 of the picture's width and height
};
