// The texts and controls that a window shows, and their places.
#pragma once

#include <QRect>
#include <QString>

#include <vector>

class QWidget;

namespace looks {

/// Places are in the window.
struct ShownText {
    QString name; ///< for messages
    QString text;
    QRect room;  ///< that the text may take
    QRect place; ///< that it takes, cut at the room
    QSize needed;
    bool readableElsewhere = false; ///< whole in the tool tip
    bool enabled = true;
};

struct ShownControl {
    QWidget* widget;
    QString name;
    QRect outline; ///< where its border is
    bool takesFocus = false;
};

/// Visible descendants that the window manager does not treat as windows, and the window.
[[nodiscard]] std::vector<QWidget*> shownWidgets(QWidget& window);
[[nodiscard]] std::vector<ShownText> shownTexts(QWidget& window);
/// Enabled ones with a border.
[[nodiscard]] std::vector<ShownControl> shownControls(QWidget& window);
/// Class and object name.
[[nodiscard]] QString nameOf(const QWidget& widget);

} // namespace looks
