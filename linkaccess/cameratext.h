// Texts of the camera in windows.
#pragma once

#include <QString>

#include <string_view>

class QLabel;

/// The bytes up to the first zero, as text.
[[nodiscard]] QString cameraText(std::string_view bytes);

/// Shows text of the camera as plain, selectable text. Lines are cut after 120 characters; the tool tip then
/// has the whole text.
void showCameraText(QLabel* label, const QString& text);

/// At most this many characters; an ellipsis ends a line that was longer.
[[nodiscard]] QString shortened(const QString& line, qsizetype length);
