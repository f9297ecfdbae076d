#include "tests/looks/judge.h"

#include "tests/looks/shownparts.h"

#include <QtWidgets>

#include <algorithm>
#include <array>
#include <cmath>

namespace looks {

namespace {

constexpr double pictureScale = 2; // at least
constexpr int borderDepth = 3;     // pixels at which a border is looked for, from the outline inwards
constexpr int leastTextWidth = 10; // narrower texts are no more than an ellipsis
constexpr int ringMargin = 2;      // a focus ring may be outside

double channel(int value) {
    static const std::array<double, 256> table = [] {
        std::array<double, 256> values{};
        for (std::size_t each = 0; each < values.size(); ++each) {
            const double part = static_cast<double>(each) / 255;
            values.at(each) = part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
        }
        return values;
    }();
    return table.at(static_cast<std::size_t>(value));
}

/// From 0 (black) to 1, as the eye weighs colours.
double luminance(QRgb color) {
    return 0.2126 * channel(qRed(color)) + 0.7152 * channel(qGreen(color)) + 0.0722 * channel(qBlue(color));
}

double contrastOf(QRgb one, QRgb other) {
    const double first = luminance(one);
    const double second = luminance(other);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

/// In pixels of the picture.
QRect pixelsOf(const QImage& picture, const QRect& place) {
    const double ratio = picture.devicePixelRatio();
    const QRectF scaled(place.x() * ratio, place.y() * ratio, place.width() * ratio, place.height() * ratio);
    return scaled.toAlignedRect() & picture.rect();
}

using ColorCounts = QHash<QRgb, int>;

ColorCounts colorsIn(const QImage& picture, const QRect& place) {
    ColorCounts counts;
    const QRect pixels = pixelsOf(picture, place);
    for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
        const auto* const line = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
        for (int x = pixels.left(), begin = x; x <= pixels.right(); ++x) {
            if (x < pixels.right() && line[x + 1] == line[begin])
                continue; // most of a text is its ground
            counts[line[begin]] += x + 1 - begin;
            begin = x + 1;
        }
    }
    return counts;
}

/// Between the most frequent colour of the place and the one that differs most from it.
double textContrast(const QImage& picture, const QRect& place) {
    const ColorCounts counts = colorsIn(picture, place);
    if (counts.isEmpty())
        return 1;
    const auto ground = std::max_element(counts.begin(), counts.end());
    double best = 1;
    for (auto count = counts.begin(); count != counts.end(); ++count)
        best = std::max(best, contrastOf(ground.key(), count.key()));
    return best;
}

/// Of the border that a line from outside to inside crosses; `inwards` is one step.
double borderContrast(const QImage& picture, QPointF outside, QPointF inwards) {
    const double ratio = picture.devicePixelRatio();
    const auto at = [&picture, ratio](QPointF point) {
        const QPoint pixel(static_cast<int>(point.x() * ratio), static_cast<int>(point.y() * ratio));
        return picture.pixel(std::clamp(pixel.x(), 0, picture.width() - 1),
                             std::clamp(pixel.y(), 0, picture.height() - 1));
    };
    const QRgb ground = at(outside);
    double best = 1;
    for (double depth = 0; depth <= borderDepth + ringMargin; depth += 1 / ratio)
        best = std::max(best, contrastOf(ground, at(outside + inwards * depth)));
    return best;
}

QString withContrast(const QString& name, double contrast) {
    return QStringLiteral("%1: contrast %2").arg(name).arg(contrast, 0, 'f', 2);
}

bool isPartOfControl(const QWidget& widget) {
    for (const QWidget* parent = widget.parentWidget(); parent != nullptr; parent = parent->parentWidget()) {
        if (qobject_cast<const QAbstractScrollArea*>(parent) != nullptr ||
            qobject_cast<const QComboBox*>(parent) != nullptr ||
            qobject_cast<const QLineEdit*>(parent) != nullptr ||
            qobject_cast<const QAbstractSpinBox*>(parent) != nullptr)
            return true;
    }
    return false;
}

/// Pixels that the focus changes clearly.
qint64 changedPixels(const QImage& before, const QImage& after) {
    qint64 changed = 0;
    for (int y = 0; y < before.height(); ++y) {
        const auto* const old = reinterpret_cast<const QRgb*>(before.constScanLine(y));
        const auto* const now = reinterpret_cast<const QRgb*>(after.constScanLine(y));
        for (int x = 0; x < before.width(); ++x) {
            if (old[x] != now[x] && contrastOf(old[x], now[x]) >= visibleContrast)
                ++changed;
        }
    }
    return changed;
}

} // namespace

QImage pictureOf(QWidget& window) {
    const double ratio = std::max(pictureScale, window.devicePixelRatioF());
    QImage picture((window.size() * ratio), QImage::Format_RGB32);
    picture.setDevicePixelRatio(ratio);
    window.render(&picture);
    return picture;
}

QStringList cutTexts(QWidget& window) {
    QStringList faults;
    for (const ShownText& text : shownTexts(window)) {
        const bool fits =
            text.needed.width() <= text.room.width() && text.needed.height() <= text.room.height();
        if (!fits && !text.readableElsewhere)
            faults.append(QStringLiteral("%1 needs %2 x %3, has %4 x %5")
                              .arg(text.name)
                              .arg(text.needed.width())
                              .arg(text.needed.height())
                              .arg(text.room.width())
                              .arg(text.room.height()));
    }
    return faults;
}

QStringList misplacedWidgets(QWidget& window) {
    QStringList faults;
    for (const QWidget* const widget : shownWidgets(window)) {
        const bool isOnPicture =
            widget->parentWidget() == &window && window.inherits("ImgDialog"); // its buttons
        if (widget == &window || isPartOfControl(*widget) || isOnPicture)
            continue;
        if (!widget->parentWidget()->rect().contains(widget->geometry()))
            faults.append(nameOf(*widget) + QStringLiteral(" reaches out of ") +
                          nameOf(*widget->parentWidget()));
        for (const QObject* const each : widget->parentWidget()->children()) {
            const auto* const other = qobject_cast<const QWidget*>(each);
            if (other != nullptr && other < widget && other->isVisible() && !other->isWindow() &&
                other->geometry().intersects(widget->geometry()) &&
                qobject_cast<const QSizeGrip*>(other) == nullptr &&
                qobject_cast<const QSizeGrip*>(widget) == nullptr)
                faults.append(nameOf(*widget) + QStringLiteral(" and ") + nameOf(*other) +
                              QStringLiteral(" cover each other"));
        }
    }
    return faults;
}

QStringList paleTexts(QWidget& window, const QImage& picture) {
    QStringList faults;
    for (const ShownText& text : shownTexts(window)) {
        if (text.place.width() < leastTextWidth && text.readableElsewhere)
            continue;
        const double contrast = textContrast(picture, text.place);
        if (contrast < (text.enabled ? readableContrast : disabledContrast))
            faults.append(withContrast(text.name, contrast));
    }
    return faults;
}

QStringList paleBorders(QWidget& window, const QImage& picture) {
    QStringList faults;
    for (const ShownControl& control : shownControls(window)) {
        const QRectF outline = control.outline;
        const double left =
            borderContrast(picture, {outline.left() - ringMargin, outline.center().y()}, {1, 0});
        const double top =
            borderContrast(picture, {outline.center().x(), outline.top() - ringMargin}, {0, 1});
        if (const double contrast = std::min(left, top); contrast < visibleContrast)
            faults.append(withContrast(control.name, contrast));
    }
    return faults;
}

QStringList invisibleFocus(QWidget& window) {
    QStringList faults;
    window.setAttribute(Qt::WA_KeyboardFocusChange); // as after the Tab key
    for (const ShownControl& control : shownControls(window)) {
        if (!control.takesFocus)
            continue;
        const auto picture = [&] {
            constexpr QMargins around(ringMargin, ringMargin, ringMargin, ringMargin);
            const QRect whole(control.widget->mapTo(&window, QPoint()), control.widget->size());
            return window.grab(whole.marginsAdded(around) & window.rect())
                .toImage()
                .convertToFormat(QImage::Format_RGB32);
        };
        window.setFocus();
        const QImage without = picture();
        control.widget->setFocus(Qt::TabFocusReason);
        const QImage with = picture();
        window.setFocus();
        const double ratio = with.devicePixelRatio();
        const double least = (control.outline.width() + control.outline.height()) * ratio;
        if (const qint64 changed = changedPixels(without, with); static_cast<double>(changed) < least)
            faults.append(QStringLiteral("%1: the focus changes %2 pixels, less than %3")
                              .arg(control.name)
                              .arg(changed)
                              .arg(least));
    }
    return faults;
}

} // namespace looks
