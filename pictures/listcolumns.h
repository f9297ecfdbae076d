// Where the columns of a picture list are; the header and the rows share it.
#pragma once

#include "pictures/picturegeneration.h"

#include <QRect>

#include <vector>

/// Free pixels left and right of a text in its column.
inline constexpr int columnInset = 2;

/// The columns of a row, left to right. Widths are whole pixels, cut off; the last column takes what is left.
[[nodiscard]] std::vector<QRect> columnRects(const QRect& row,
                                             std::span<const PictureGeneration::Column> columns);

/// The part of a column that its text may use.
[[nodiscard]] QRect textRect(const QRect& column);
