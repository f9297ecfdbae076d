#include "pictures/picturelistmodel.h"

#include <QDebug>

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
    m_rows.push_back(cells);
    endInsertRows();
}

void PictureListModel::appendPictures(const std::vector<protocol::RecordBytes>& records) {
    if (records.empty())
        return;
    const int first = rowCount();
    beginInsertRows({}, first, first + static_cast<int>(records.size()) - 1);
    m_rows.reserve(m_rows.size() + records.size());
    for (const protocol::RecordBytes& record : records)
        m_rows.push_back(m_generation.cells(m_generation.parse(record)));
    endInsertRows();
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
    endResetModel();
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
    return hasRow(row) ? m_rows[static_cast<std::size_t>(row)] : QStringList();
}

QString PictureListModel::cell(int row, int column) const {
    return hasRow(row) ? m_rows[static_cast<std::size_t>(row)].value(column) : QString();
}
