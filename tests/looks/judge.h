// Rules for the look of a window. Each function returns the faults that it finds, one sentence each.
#pragma once

#include <QImage>
#include <QStringList>

class QWidget;

namespace looks {

constexpr double readableContrast = 4.5; // of texts on their ground
constexpr double disabledContrast = 3;   // of texts of disabled controls
constexpr double visibleContrast = 3;    // of borders, and of a focus ring to the same place without it

/// The window as it is painted, sharper than the screen: thin strokes have their full colour.
[[nodiscard]] QImage pictureOf(QWidget& window);

/// Texts that do not fit their rooms.
[[nodiscard]] QStringList cutTexts(QWidget& window);
/// Widgets that reach out of their parents or cover each other.
[[nodiscard]] QStringList misplacedWidgets(QWidget& window);
[[nodiscard]] QStringList paleTexts(QWidget& window, const QImage& picture);
[[nodiscard]] QStringList paleBorders(QWidget& window, const QImage& picture);
/// Moves the focus through the window and back.
[[nodiscard]] QStringList invisibleFocus(QWidget& window);

} // namespace looks
