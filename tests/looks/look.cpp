#include "tests/looks/look.h"

#include <QApplication>
#include <QEvent>
#include <QStyle>

#include <ostream>

namespace looks {

namespace {

QPalette lightColors() {
    return QApplication::style()->standardPalette();
}

QPalette darkColors() {
    const QColor ground(0x2b, 0x2b, 0x2b);
    QPalette palette(ground);
    palette.setColor(QPalette::Base, ground.darker(130));
    palette.setColor(QPalette::Highlight, QColor(0x2e, 0x7d, 0xd7));
    return palette;
}

/// White on black, as desktops for weak eyes have it.
QPalette contrastColors() {
    QPalette palette(Qt::black);
    palette.setColor(QPalette::Highlight, QColor(0x1a, 0xeb, 0xff));
    palette.setColor(QPalette::HighlightedText, Qt::black);
    for (const QPalette::ColorRole role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(0x3f, 0xf2, 0x3f));
    return palette;
}

constexpr double scaledFrom = 1.9;

} // namespace

void PrintTo(const Look& look, std::ostream* out) {
    *out << look.name;
}

QString pictureFolder() {
    return qEnvironmentVariable("CAMERA_LOOKS");
}

std::vector<Look> looksOfThisScale() {
    const Look light{"Light", &lightColors, 1};
    const Look dark{"Dark", &darkColors, 1};
    const Look contrast{"HighContrast", &contrastColors, 1};
    const Look largeText{"LargeText", &lightColors, 2};
    const Look largeDarkText{"LargeDarkText", &darkColors, 2};
    if (!pictureFolder().isEmpty())
        return {light, dark, contrast, largeText, largeDarkText};
    if (qEnvironmentVariable("QT_SCALE_FACTOR").toDouble() >= scaledFrom)
        return {dark};
    return {light, contrast, largeDarkText};
}

Presentation::Presentation(const Look& look)
    : m_colors(QApplication::palette()), m_font(QApplication::font()) {
    QFont font = m_font;
    font.setPointSizeF(font.pointSizeF() * look.textSize);
    QApplication::setFont(font);
    QApplication::setPalette(look.colors());
    QEvent changed(QEvent::ApplicationPaletteChange); // as a running event loop sends it
    QApplication::sendEvent(qApp, &changed);
}

Presentation::~Presentation() {
    QApplication::setPalette(m_colors);
    QApplication::setFont(m_font);
}

} // namespace looks
