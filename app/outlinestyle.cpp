#include "app/outlinestyle.h"

#include "app/readablecolors.h"
#include "linkaccess/signs.h"

#include <QPainter>
#include <QStyleOption>

namespace {

constexpr double borderWidth = 1;
constexpr double ringWidth = 2;
constexpr double cornerRadius = 2; // Fusion's

enum class Shape : std::uint8_t { rectangle, circle };

/// Over Fusion's own border, which is nearly as dark as a dark ground.
void paintOutline(QPainter& painter, const QStyleOption& option, bool focused,
                  Shape shape = Shape::rectangle) {
    const bool enabled = option.state.testFlag(QStyle::State_Enabled);
    if (!enabled)
        return;
    const double width = focused ? ringWidth : borderWidth;
    const QColor color = focused ? option.palette.color(QPalette::WindowText) : outlineColor(option.palette);
    const double inset = width / 2;
    const QRectF outline = QRectF(option.rect).adjusted(inset, inset, -inset, -inset);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, width));
    painter.setBrush(Qt::NoBrush);
    if (shape == Shape::circle)
        painter.drawEllipse(outline);
    else
        painter.drawRoundedRect(outline, cornerRadius, cornerRadius);
    painter.restore();
}

bool isFocusedByKey(const QStyleOption& option) {
    return option.state.testFlag(QStyle::State_HasFocus) &&
           option.state.testFlag(QStyle::State_KeyboardFocusChange);
}

} // namespace

OutlineStyle::OutlineStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

void OutlineStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                 const QWidget* widget) const {
    if (element == PE_FrameFocusRect) {
        if (option->state.testFlag(State_KeyboardFocusChange)) {
            const bool selected = option->state.testFlag(State_Selected);
            painter->setPen(option->palette.color(selected ? QPalette::HighlightedText : QPalette::Text));
            painter->setBrush(Qt::NoBrush);
            painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
        }
        return;
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    switch (element) {
    case PE_PanelButtonCommand:
        paintOutline(*painter, *option, isFocusedByKey(*option));
        break;
    case PE_FrameLineEdit:
    case PE_Frame:
        paintOutline(*painter, *option, option->state.testFlag(State_HasFocus));
        break;
    case PE_FrameGroupBox:
    case PE_IndicatorCheckBox:
        paintOutline(*painter, *option, false);
        break;
    case PE_IndicatorRadioButton:
        paintOutline(*painter, *option, false, Shape::circle);
        break;
    default:
        break;
    }
}

void OutlineStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const {
    QProxyStyle::drawControl(element, option, painter, widget);
    if (element == CE_ProgressBar)
        paintOutline(*painter, *option, false);
}

void OutlineStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                      QPainter* painter, const QWidget* widget) const {
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if (control == CC_SpinBox)
        paintOutline(*painter, *option, option->state.testFlag(State_HasFocus));
    else if (control == CC_ComboBox)
        paintOutline(*painter, *option, isFocusedByKey(*option));
}

QIcon OutlineStyle::standardIcon(StandardPixmap icon, const QStyleOption* option,
                                 const QWidget* widget) const {
    // For each menu bar. Fusion's is a file, and the first one read loads the libraries of all formats.
    if (icon == SP_ToolBarHorizontalExtensionButton)
        return signIcon(Sign::more);
    return QProxyStyle::standardIcon(icon, option, widget);
}
