// Texts that come from the camera, as windows show them.
#pragma once

#include <QString>

#include <string_view>

class QLabel;

/// The bytes up to the first zero as text.
[[nodiscard]] QString cameraText(std::string_view bytes);

/// Shows a text that holds camera text: never as markup, selectable, each line cut after 120 characters, then
/// with the whole text as tool tip.
void showCameraText(QLabel* label, const QString& text);

/// One line of at most so many characters, the last of them an ellipsis if it was longer.
[[nodiscard]] QString shortened(const QString& line, qsizetype length);
