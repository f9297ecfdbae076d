// Files for the three uploads: their kinds and facts.
#pragma once

#include <QString>

#include <array>
#include <cstdint>
#include <optional>

enum class ImageKind : std::uint8_t { app, fireware, model };

inline constexpr std::array allImageKinds{ImageKind::app, ImageKind::fireware, ImageKind::model};

/// Words for the technician.
[[nodiscard]] QString imageKindName(ImageKind kind);

/// The kind that the file's name tells; none if it tells no kind or several.
[[nodiscard]] std::optional<ImageKind> imageKindOf(const QString& path);

/// MD5 of a file in hexadecimal; empty if it cannot be read. Reads the whole file. Any thread.
[[nodiscard]] QString md5Of(const QString& path);

/// Path, size, time and MD5 of a file, a line each; path and reason without an MD5. User-interface thread.
[[nodiscard]] QString imageFacts(const QString& path, const QString& md5);
