// The picture area of the main window.
#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QDateTime>
#include <QImage>
#include <QLabel>
#include <QPixmap>

#include <functional>

/// A downloaded picture.
struct TakenPicture {
    unsigned id = 0;
    QByteArray file; ///< as the camera sent it
    QImage image;
    QDateTime time; ///< of the download
};

/// Paints the picture itself, not the label's pixmap, as large as it fits at the screen's resolution, and
/// below it what it is. Empty while the label has no pixmap. A double click opens the picture.
class PictureArea final : public QLabel {
    Q_DECLARE_TR_FUNCTIONS(PictureArea)

public:
    using Viewer = std::function<void(const TakenPicture& picture)>;

    explicit PictureArea(QWidget* parent = nullptr);

    void setViewer(Viewer viewer) { m_viewer = std::move(viewer); }
    void setTaken(const TakenPicture& picture);
    /// Before the label is cleared.
    void forget() { setTaken({}); }
    /// Greys the picture of a camera that is no longer in use.
    void setOfPreviousCamera(bool previous);
    /// Id, time and size of the picture; empty without one.
    [[nodiscard]] QString caption() const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    [[nodiscard]] bool hasPicture() const { return !pixmap().isNull(); }
    void tell();
    /// The picture for an area of this size; `ratio` pixels of the device are one of the area.
    const QPixmap& scaledFor(QSize area, double ratio);

    TakenPicture m_taken;
    Viewer m_viewer;
    bool m_previous = false;
    QPixmap m_scaled; ///< the last one painted
};
