// The rows of a picture list.
#pragma once

#include "pictures/picturegeneration.h"

#include <QAbstractTableModel>

/// One row per picture, its cells as text; made once when the row comes in. Rows come in the camera's order,
/// unless sorted. Base of the two generations' models.
class PictureListModel : public QAbstractTableModel {
    Q_OBJECT

public:
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    /// Display and edit: the cell; tool tip: the cell with its caption; anything else is empty.
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

    void appendRow(const QStringList& cells);
    /// Appends a whole catalogue with one notification.
    void appendPictures(const std::vector<protocol::RecordBytes>& records);
    bool removeRows(int row, int count, const QModelIndex& parent = {}) override;
    void clear();
    /// By numbers where the cells are numbers; rows that come later are sorted too. Column -1 restores the
    /// camera's order.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    /// Cells of a row; empty for a row that is not there.
    [[nodiscard]] QStringList rowTexts(int row) const;
    /// Read back from the row's text; 0 for a row that is not there.
    [[nodiscard]] unsigned pictureId(int row) const;
    /// The first row of this picture; -1 if there is none.
    [[nodiscard]] int rowOfPicture(unsigned id) const;
    /// Bytes, 0 to 0xFFFFFFFF; -1 for a row that is not there.
    [[nodiscard]] qint64 pictureSize(int row) const;

    [[nodiscard]] const PictureGeneration& generation() const { return m_generation; }

    [[nodiscard]] bool hasRow(int row) const;

protected:
    PictureListModel(const PictureGeneration& generation, QObject* parent);

    /// Empty where there is no such row or cell.
    [[nodiscard]] QString cell(int row, int column) const;

private:
    struct Row {
        QStringList cells;
        int place = 0; ///< in the camera's order
    };
    void addRow(const QStringList& cells);
    [[nodiscard]] std::vector<int> sortedRows() const;
    void sortAgain();

    const PictureGeneration& m_generation;
    std::vector<Row> m_rows;
    int m_added = 0;       ///< rows since the list was empty
    int m_sortColumn = -1; ///< -1: the camera's order
    Qt::SortOrder m_sortOrder = Qt::AscendingOrder;
};
