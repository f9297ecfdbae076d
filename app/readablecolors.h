// Colours that can be told from their ground, whatever the desktop's.
#pragma once

#include <QColor>

class QPalette;

/// From 1 (the same) to 21 (black and white), as WCAG 2.1 defines it.
[[nodiscard]] double contrastOf(const QColor& one, const QColor& other);

/// For borders of controls.
[[nodiscard]] QColor outlineColor(const QPalette& palette);

/// Deepens the colours of hints, links and disabled texts of the program where they are too pale.
void deepenPaleTexts();
