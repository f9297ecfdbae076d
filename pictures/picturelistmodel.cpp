#include "pictures/picturelistmodel.h"

#include <QDebug>

#include <algorithm>
#include <limits>
#include <numeric>
#include <tuple>

namespace {

using SortKey = std::tuple<quint64, quint64, QString>;

/// Numbers first; an action, such as "20240131-7", is two numbers.
SortKey sortKey(const QString& cell) {
    const QStringList parts = cell.split(QLatin1Char('-'));
    bool isNumber = false;
    const quint64 number = parts.front().toULongLong(&isNumber);
    return {isNumber ? number : std::numeric_limits<quint64>::max(), parts.value(1).toULongLong(), cell};
}

} // namespace

PictureListModel::PictureListModel(const PictureGeneration& generation, QObject* parent)
    : QAbstractTableModel(parent), m_generation(generation) {}

int PictureListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int PictureListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_generation.columns.size());
}

QVariant PictureListModel::data(const QModelIndex& index, int role) const {
    if (index.column() < 0 || !hasRow(index.row())) {
        qDebug() << "invilidddd";
        return {};
    }
    const QString text = cell(index.row(), index.column());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return text;
    case Qt::ToolTipRole:
        return tr("项目:%1").arg(text);
    default:
        return {};
    }
}

void PictureListModel::appendRow(const QStringList& cells) {
    const int row = rowCount();
    beginInsertRows({}, row, row);
    addRow(cells);
    endInsertRows();
    sortAgain();
}

void PictureListModel::appendPictures(const std::vector<protocol::RecordBytes>& records) {
    if (records.empty())
        return;
    const int first = rowCount();
    beginInsertRows({}, first, first + static_cast<int>(records.size()) - 1);
    m_rows.reserve(m_rows.size() + records.size());
    for (const protocol::RecordBytes& record : records)
        addRow(m_generation.cells(m_generation.parse(record)));
    endInsertRows();
    sortAgain();
}

bool PictureListModel::removeRows(int row, int count, const QModelIndex& parent) {
    if (parent.isValid() || count < 1 || row < 0 || row > rowCount() - count)
        return false;
    beginRemoveRows({}, row, row + count - 1);
    m_rows.erase(m_rows.begin() + row, m_rows.begin() + row + count);
    endRemoveRows();
    return true;
}

void PictureListModel::clear() {
    beginResetModel();
    m_rows.clear();
    m_added = 0;
    endResetModel();
}

void PictureListModel::sort(int column, Qt::SortOrder order) {
    m_sortColumn = column;
    m_sortOrder = order;
    emit layoutAboutToBeChanged({}, VerticalSortHint);
    const std::vector<int> oldRows = sortedRows();
    std::vector<Row> sorted;
    sorted.reserve(m_rows.size());
    std::vector<int> newRows(m_rows.size());
    for (const int oldRow : oldRows) {
        newRows[static_cast<std::size_t>(oldRow)] = static_cast<int>(sorted.size());
        sorted.push_back(std::move(m_rows[static_cast<std::size_t>(oldRow)]));
    }
    m_rows = std::move(sorted);
    const QModelIndexList before = persistentIndexList();
    QModelIndexList after;
    for (const QModelIndex& index : before)
        after.append(createIndex(newRows[static_cast<std::size_t>(index.row())], index.column()));
    changePersistentIndexList(before, after);
    emit layoutChanged({}, VerticalSortHint);
}

std::vector<int> PictureListModel::sortedRows() const {
    std::vector<SortKey> keys;
    keys.reserve(m_rows.size());
    for (const Row& row : m_rows)
        keys.push_back(m_sortColumn < 0 ? SortKey() : sortKey(row.cells.value(m_sortColumn)));
    std::vector<int> rows(m_rows.size());
    std::iota(rows.begin(), rows.end(), 0);
    std::sort(rows.begin(), rows.end(), [&](int left, int right) {
        const auto l = static_cast<std::size_t>(left);
        const auto r = static_cast<std::size_t>(right);
        if (keys[l] != keys[r])
            return m_sortOrder == Qt::AscendingOrder ? keys[l] < keys[r] : keys[r] < keys[l];
        return m_rows[l].place < m_rows[r].place;
    });
    return rows;
}

void PictureListModel::addRow(const QStringList& cells) {
    m_rows.push_back({cells, m_added++});
}

void PictureListModel::sortAgain() {
    if (m_sortColumn >= 0)
        sort(m_sortColumn, m_sortOrder);
}

unsigned PictureListModel::pictureId(int row) const {
    return cell(row, 0).toUInt();
}

int PictureListModel::rowOfPicture(unsigned id) const {
    int row = 0;
    while (hasRow(row) && pictureId(row) != id)
        ++row;
    return hasRow(row) ? row : -1;
}

qint64 PictureListModel::pictureSize(int row) const {
    return hasRow(row) ? qint64{cell(row, m_generation.sizeColumn).toUInt()} : -1;
}

bool PictureListModel::hasRow(int row) const {
    return row >= 0 && row < rowCount();
}

QStringList PictureListModel::rowTexts(int row) const {
    return hasRow(row) ? m_rows[static_cast<std::size_t>(row)].cells : QStringList();
}

QString PictureListModel::cell(int row, int column) const {
    return hasRow(row) ? m_rows[static_cast<std::size_t>(row)].cells.value(column) : QString();
}
