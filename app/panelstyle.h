// How the panels of the main window look.
#pragma once

#include <QProxyStyle>

/// Draws buttons and line edits, and the frames of widgets with the property "look": "panel", "field" (a
/// value), "heading" or "hint". A button with the property "primary" has a coloured border. A style sheet
/// that says the same takes a twentieth of the program's start.
class PanelStyle final : public QProxyStyle {
public:
    /// Takes the base; null is the desktop's style.
    explicit PanelStyle(QStyle* base) : QProxyStyle(base) {}

    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override;
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    [[nodiscard]] QRect subElementRect(SubElement element, const QStyleOption* option,
                                       const QWidget* widget) const override;
    [[nodiscard]] QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                                         const QWidget* widget) const override;
};

/// Gives the style to all that panels now contains, and the style to panels.
void applyPanelStyle(QWidget* panels);
