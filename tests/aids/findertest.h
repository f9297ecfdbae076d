// The window that finds cameras, for tests.
#pragma once

#include "aids/camerafinderwindow.h"
#include "tests/support/guitest.h"

#include <QListWidget>
#include <QTableWidget>

namespace findertest {

/// Opens the window by its menu entry.
inline CameraFinderWindow& openFinder(const QWidget& main) {
    guitest::trigger(main, "actionFindCamera");
    return *guitest::openWindows<CameraFinderWindow>().at(0);
}

inline QStringList choices(const QWidget& finder, const char* list, bool checkedOnly) {
    const auto* const widget = guitest::find<QListWidget>(finder, list);
    QStringList texts;
    for (int row = 0; row < widget->count(); ++row) {
        if (!checkedOnly || widget->item(row)->checkState() == Qt::Checked)
            texts.append(widget->item(row)->text());
    }
    return texts;
}

inline void checkOnly(const QWidget& finder, const char* list, const QStringList& wanted) {
    const auto* const widget = guitest::find<QListWidget>(finder, list);
    for (int row = 0; row < widget->count(); ++row)
        widget->item(row)->setCheckState(wanted.contains(widget->item(row)->text()) ? Qt::Checked
                                                                                    : Qt::Unchecked);
}

/// Rows of a table without their last column.
inline QStringList rows(const QWidget& window, const char* name) {
    const auto* const table = guitest::find<QTableWidget>(window, name);
    QStringList texts;
    for (int row = 0; row < table->rowCount(); ++row) {
        QStringList cells;
        for (int column = 0; column + 1 < table->columnCount(); ++column)
            cells.append(table->item(row, column)->text());
        texts.append(cells.join(' '));
    }
    return texts;
}

inline QString state(const QWidget& finder) {
    return guitest::text(finder, "label_state");
}

inline bool hasEnded(const QWidget& finder) {
    return guitest::eventually([&finder] { return guitest::isEnabled(finder, "btn_start"); }, 20000);
}

} // namespace findertest
