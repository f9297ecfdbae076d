#include "app/picturearea.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>

namespace {

constexpr double previousOpacity = 0.35;
constexpr int captionGap = 4;

} // namespace

PictureArea::PictureArea(QWidget* parent) : QLabel(parent) {
    setForegroundRole(QPalette::PlaceholderText);
}

void PictureArea::setTaken(const TakenPicture& picture) {
    m_taken = picture;
    m_scaled = {};
    m_previous = false;
    tell();
}

void PictureArea::setOfPreviousCamera(bool previous) {
    m_previous = previous;
    tell();
}

QString PictureArea::caption() const {
    if (m_taken.image.isNull())
        return {};
    const QString facts = tr("图片 %1，%2，%3 × %4，%5 字节")
                              .arg(m_taken.id)
                              .arg(m_taken.time.toString(QStringLiteral("HH:mm:ss")))
                              .arg(m_taken.image.width())
                              .arg(m_taken.image.height())
                              .arg(m_taken.file.size());
    return m_previous ? tr("上一台摄像头：%1").arg(facts) : facts;
}

void PictureArea::tell() {
    const QString text = caption();
    setToolTip(text.isEmpty() ? QString() : tr("%1\n双击在单独的窗口里查看").arg(text));
    setAccessibleDescription(text);
    update();
}

const QPixmap& PictureArea::scaledFor(QSize area, double ratio) {
    const QSize whole = m_taken.image.isNull() ? pixmap().size() : m_taken.image.size();
    const QSize pixels = whole.scaled(area * ratio, Qt::KeepAspectRatio).expandedTo({1, 1});
    if (m_taken.image.isNull() || m_scaled.size() != pixels) {
        const QImage image = m_taken.image.isNull() ? pixmap().toImage() : m_taken.image;
        m_scaled = QPixmap::fromImage(image.scaled(pixels, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    }
    m_scaled.setDevicePixelRatio(ratio);
    return m_scaled;
}

void PictureArea::paintEvent(QPaintEvent* event) {
    if (!hasPicture()) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    drawFrame(&painter);
    QRect area = contentsRect();
    const QString text = caption();
    if (!text.isEmpty()) {
        const int height = fontMetrics().height() + captionGap;
        const QRect line(area.left(), area.bottom() + 1 - height, area.width(), height);
        area.setBottom(line.top() - 1);
        painter.setPen(QGuiApplication::palette().color(QPalette::Text)); // the label's own is for its text
        painter.drawText(line, Qt::AlignCenter, fontMetrics().elidedText(text, Qt::ElideRight, line.width()));
    }
    const QPixmap& picture = scaledFor(area.size(), painter.deviceTransform().m11());
    const QSizeF size = picture.deviceIndependentSize();
    painter.setOpacity(m_previous ? previousOpacity : 1);
    painter.drawPixmap(QRectF(area).center() - QPointF(size.width(), size.height()) / 2, picture);
}

void PictureArea::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && hasPicture() && !m_taken.file.isEmpty() && m_viewer)
        m_viewer(m_taken);
    else
        QLabel::mouseDoubleClickEvent(event);
}
