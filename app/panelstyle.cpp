#include "app/panelstyle.h"

#include "app/outlinestyle.h"
#include "app/readablecolors.h"

#include <QApplication>
#include <QPainter>
#include <QStyleOption>
#include <QWidget>

namespace {

// Margins contain the border.
constexpr QMargins buttonMargins{11, 5, 11, 5};
constexpr QMargins fieldMargins{7, 3, 7, 3};
constexpr int panelRadius = 6;
constexpr int fieldRadius = 3;
constexpr int headingBar = 3;

QMargins marginsOf(const QString& look) {
    if (look == QLatin1String("field"))
        return fieldMargins;
    if (look == QLatin1String("heading"))
        return {headingBar + 7, 0, 0, 0};
    if (look == QLatin1String("hint"))
        return {9, 9, 9, 9};
    return {1, 1, 1, 1};
}

QString lookOf(const QWidget* widget) {
    return widget == nullptr ? QString() : widget->property("look").toString();
}

/// A box whose border lies inside the rectangle.
void drawBox(QPainter* painter, const QRect& rect, const QPen& pen, const QBrush& background, int radius) {
    const qreal half = pen.widthF() / 2;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(pen);
    painter->setBrush(background);
    painter->drawRoundedRect(QRectF(rect).adjusted(half, half, -half, -half), radius, radius);
    painter->restore();
}

void drawFrame(const QString& look, const QStyleOption& option, QPainter* painter) {
    const QPalette& colors = option.palette;
    const QColor background = colors.color(QPalette::Active, QPalette::Base); // also while disabled
    if (look == QLatin1String("heading"))
        painter->fillRect(QRect(option.rect.topLeft(), QSize(headingBar, option.rect.height())),
                          colors.highlight());
    else if (look == QLatin1String("hint"))
        drawBox(painter, option.rect, QPen(outlineColor(colors), 1, Qt::DashLine), Qt::NoBrush, panelRadius);
    else if (look == QLatin1String("field"))
        drawBox(painter, option.rect, QPen(outlineColor(colors)), background, fieldRadius);
    else
        drawBox(painter, option.rect, QPen(outlineColor(colors)), background, panelRadius);
}

QBrush buttonBackground(const QStyleOption& option) {
    if (!option.state.testFlag(QStyle::State_Enabled))
        return option.palette.button();
    if (option.state.testFlag(QStyle::State_Sunken))
        return option.palette.mid();
    return option.state.testFlag(QStyle::State_MouseOver) ? option.palette.midlight()
                                                          : option.palette.button();
}

void drawButton(const QStyleOption& option, bool primary, QPainter* painter) {
    const bool focus = option.state.testFlag(QStyle::State_HasFocus);
    QPen pen(outlineColor(option.palette));
    if (!option.state.testFlag(QStyle::State_Enabled))
        pen = QPen(option.palette.color(QPalette::Midlight), primary ? 2 : 1);
    else if (primary)
        pen = QPen(option.palette.color(QPalette::Highlight), focus ? 3 : 2);
    else if (focus)
        pen = QPen(option.palette.color(QPalette::Text), 2);
    drawBox(painter, option.rect, pen, buttonBackground(option), fieldRadius);
}

} // namespace

void PanelStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                             const QWidget* widget) const {
    if (const QString look = lookOf(widget); element == CE_ShapedFrame && !look.isEmpty()) {
        drawFrame(look, *option, painter);
    } else if (const auto* const button = qstyleoption_cast<const QStyleOptionButton*>(option);
               element == CE_PushButton && button != nullptr) {
        drawButton(*button, widget != nullptr && widget->property("primary").toBool(), painter);
        QStyleOptionButton label = *button;
        label.rect = button->rect.marginsRemoved(buttonMargins);
        proxy()->drawControl(CE_PushButtonLabel, &label, painter, widget);
    } else {
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

void PanelStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const {
    if (element != PE_PanelLineEdit) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        return;
    }
    const bool focus = option->state.testFlag(State_HasFocus);
    const QPen pen =
        focus ? QPen(option->palette.color(QPalette::Highlight), 2) : QPen(outlineColor(option->palette));
    drawBox(painter, option->rect, pen, option->palette.color(QPalette::Active, QPalette::Base), fieldRadius);
}

QRect PanelStyle::subElementRect(SubElement element, const QStyleOption* option,
                                 const QWidget* widget) const {
    if (element == SE_LineEditContents)
        return option->rect.marginsRemoved(fieldMargins);
    if (const QString look = lookOf(widget); element == SE_ShapedFrameContents && !look.isEmpty())
        return option->rect.marginsRemoved(marginsOf(look));
    return QProxyStyle::subElementRect(element, option, widget);
}

QSize PanelStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contents,
                                   const QWidget* widget) const {
    if (type == CT_PushButton)
        return contents.grownBy(buttonMargins);
    if (type == CT_LineEdit)
        return contents.grownBy(fieldMargins);
    return QProxyStyle::sizeFromContents(type, option, contents, widget);
}

void applyPanelStyle(QWidget* panels) {
    const bool outlined = qobject_cast<OutlineStyle*>(QApplication::style()) != nullptr;
    auto* const style = new PanelStyle(outlined ? new OutlineStyle : nullptr);
    for (QWidget* const widget : panels->findChildren<QWidget*>())
        widget->setStyle(style);
    style->setParent(panels); // the last child outlives the others
}
