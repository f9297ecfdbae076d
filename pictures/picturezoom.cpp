#include "pictures/picturezoom.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr QSize wholeSize{600, 400};
constexpr int mostSteps = 8;
constexpr QPointF pictureMiddle{0.5, 0.5};

double clampedMiddle(double middle, double view, double picture) {
    const double half = std::min(view / picture, 1.0) / 2;
    return std::clamp(middle, half, 1 - half);
}

} // namespace

void PictureZoom::setPicture(const QPixmap& picture) {
    m_picture = picture;
    m_whole =
        picture.isNull() ? QPixmap() : picture.scaled(wholeSize, Qt::KeepAspectRatio, Qt::FastTransformation);
    fit();
}

bool PictureZoom::canZoomIn() const {
    return !m_picture.isNull() && m_step < mostSteps;
}

void PictureZoom::zoom(int steps, QPointF anchor, QSizeF view) {
    if (m_picture.isNull())
        return;
    const auto fraction = [&anchor, this] {
        return QPointF(anchor.x() / size().width(), anchor.y() / size().height());
    };
    const QPointF fixed = m_middle + fraction();
    m_step = std::clamp(m_step + steps, 0, mostSteps);
    m_middle = clamped(fixed - fraction(), view);
}

void PictureZoom::fit() {
    m_step = 0;
    m_middle = pictureMiddle;
}

void PictureZoom::pan(QPointF by, QSizeF view) {
    if (!isZoomed())
        return;
    m_middle = clamped(m_middle + QPointF(by.x() / size().width(), by.y() / size().height()), view);
}

QPixmap PictureZoom::visible(QSizeF view, double devicePixelRatio) const {
    if (!isZoomed())
        return m_whole;
    const QSizeF shown = size().boundedTo(view);
    const QPointF middle = clamped(m_middle, view); // the view may have grown
    QRectF section(0, 0, shown.width() * m_picture.width() / size().width(),
                   shown.height() * m_picture.height() / size().height());
    section.moveCenter({middle.x() * m_picture.width(), middle.y() * m_picture.height()});

    QPixmap visible((shown * devicePixelRatio).toSize().expandedTo({1, 1}));
    visible.setDevicePixelRatio(devicePixelRatio);
    visible.fill(Qt::transparent);
    QPainter painter(&visible);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawPixmap(QRectF({}, shown), m_picture, section);
    return visible;
}

QSizeF PictureZoom::size() const {
    return QSizeF(m_whole.size()) * std::pow(std::numbers::sqrt2, m_step);
}

QPointF PictureZoom::clamped(QPointF middle, QSizeF view) const {
    return {clampedMiddle(middle.x(), view.width(), size().width()),
            clampedMiddle(middle.y(), view.height(), size().height())};
}
