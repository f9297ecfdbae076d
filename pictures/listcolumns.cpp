#include "pictures/listcolumns.h"

std::vector<QRect> columnRects(const QRect& row, std::span<const PictureGeneration::Column> columns) {
    constexpr int whole = 100;
    std::vector<QRect> rects;
    int left = row.left();
    for (const PictureGeneration::Column& column : columns) {
        const int rest = row.left() + row.width() - left;
        const int width = column.percent == 0 ? rest : row.width() * column.percent / whole;
        rects.emplace_back(left, row.top(), width, row.height());
        left += width;
    }
    return rects;
}

QRect textRect(const QRect& column) {
    return column.adjusted(columnInset, 0, -columnInset, 0);
}
