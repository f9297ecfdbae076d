#include "app/readablecolors.h"

#include <QApplication>
#include <QPalette>

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr double readable = 4.5; // contrast of texts
constexpr double visible = 3;    // of borders
constexpr double disabled = 3.5; // of disabled texts; styles shade their grounds
constexpr double step = 0.05;    // of a mixture
constexpr QColor grey(0x80, 0x80, 0x80);

double luminance(const QColor& color) {
    const auto channel = [](double value) {
        return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(color.redF()) + 0.7152 * channel(color.greenF()) +
           0.0722 * channel(color.blueF());
}

/// `part` of the upper colour over the lower one.
QColor mixed(const QColor& upper, const QColor& lower, double part) {
    const auto channel = [part](int over, int under) {
        return static_cast<int>(std::lround(part * over + (1 - part) * under));
    };
    return {channel(upper.red(), lower.red()), channel(upper.green(), lower.green()),
            channel(upper.blue(), lower.blue())};
}

struct PaleRole {
    QPalette::ColorGroup group;
    QPalette::ColorRole role;
    QPalette::ColorRole text; ///< towards which it is deepened
    double contrast;
};

constexpr std::array paleRoles{
    PaleRole{QPalette::Active, QPalette::PlaceholderText, QPalette::Text, readable},
    PaleRole{QPalette::Inactive, QPalette::PlaceholderText, QPalette::Text, readable},
    PaleRole{QPalette::Disabled, QPalette::PlaceholderText, QPalette::Text, disabled},
    PaleRole{QPalette::Active, QPalette::Link, QPalette::Text, readable},
    PaleRole{QPalette::Inactive, QPalette::Link, QPalette::Text, readable},
    PaleRole{QPalette::Disabled, QPalette::Text, QPalette::Text, disabled},
    PaleRole{QPalette::Disabled, QPalette::WindowText, QPalette::WindowText, disabled},
    PaleRole{QPalette::Disabled, QPalette::ButtonText, QPalette::ButtonText, disabled},
};

/// The role's colour, as deep as its contrast to fields, windows and buttons demands.
QColor deepened(const QPalette& palette, const PaleRole& pale) {
    const QColor base = palette.color(pale.group, QPalette::Base);
    const std::array grounds{base, palette.color(pale.group, QPalette::Window),
                             palette.color(pale.group, QPalette::Button)};
    const QColor own = palette.color(pale.group, pale.role);
    const QColor text = palette.color(QPalette::Active, pale.text);
    const QColor shown = mixed(own, base, own.alphaF());
    const auto isDeep = [&](const QColor& color) {
        return std::all_of(grounds.begin(), grounds.end(),
                           [&](const QColor& ground) { return contrastOf(color, ground) >= pale.contrast; });
    };
    if (isDeep(shown))
        return own;
    for (double part = step; part < 1; part += step) {
        if (const QColor color = mixed(text, shown, part); isDeep(color))
            return color;
    }
    return text;
}

/// The selection's colour, as far from that of its texts as needed.
QColor selectionGround(const QPalette& palette, QPalette::ColorGroup group) {
    const QColor own = palette.color(group, QPalette::Highlight);
    const QColor text = palette.color(group, QPalette::HighlightedText);
    const QColor farthest =
        contrastOf(text, Qt::black) > contrastOf(text, Qt::white) ? QColor(Qt::black) : QColor(Qt::white);
    QColor ground = own;
    for (double part = step; part < 1 && contrastOf(ground, text) < readable; part += step)
        ground = mixed(farthest, own, part);
    return ground;
}

} // namespace

double contrastOf(const QColor& one, const QColor& other) {
    const double first = luminance(one);
    const double second = luminance(other);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

QColor outlineColor(const QPalette& palette) {
    const bool stands = contrastOf(grey, palette.color(QPalette::Window)) >= visible &&
                        contrastOf(grey, palette.color(QPalette::Base)) >= visible;
    return stands ? grey : palette.color(QPalette::Active, QPalette::WindowText);
}

void deepenPaleTexts() {
    const QPalette colors = QApplication::palette();
    QPalette changes = colors; // other roles go on following the desktop
    bool isChanged = false;
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
        const QColor ground = selectionGround(colors, group);
        if (ground == colors.color(group, QPalette::Highlight))
            continue;
        changes.setColor(group, QPalette::Highlight, ground);
        isChanged = true;
    }
    for (const PaleRole& pale : paleRoles) {
        const QColor color = deepened(colors, pale);
        if (color == colors.color(pale.group, pale.role))
            continue;
        changes.setColor(pale.group, pale.role, color);
        isChanged = true;
    }
    if (isChanged)
        QApplication::setPalette(changes);
}
