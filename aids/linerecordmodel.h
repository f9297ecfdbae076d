// The rows of a line's log for a table.
#pragma once

#include "service/linelog.h"

#include <QAbstractTableModel>
#include <QCache>
#include <QDateTime>

#include <deque>
#include <memory>

/// Decodes a row into words when it is shown, copied or filtered by text.
class LineRecordModel final : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { timeColumn, directionColumn, wordsColumn, sizeColumn, tookColumn, oddColumn, columns };

    explicit LineRecordModel(QObject* parent = nullptr);

    /// Null: no rows.
    void setLog(std::shared_ptr<const service::LineLog> log);
    [[nodiscard]] const std::shared_ptr<const service::LineLog>& log() const { return m_log; }
    /// Takes the log's newer rows and drops those that it dropped.
    void refresh();
    /// Shows rows that hold the text in any column; an empty text: all.
    void setFilter(const QString& text, bool onlyOdd);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    /// The row's columns, separated by tabs.
    [[nodiscard]] QString textOf(int row) const;
    /// At most so many bytes of the row.
    [[nodiscard]] protocol::Bytes bytesOf(int row, std::size_t atMost) const;

private:
    /// The log may drop the row first.
    struct Shown {
        std::uint64_t number = 0;
        service::LineRow row;
    };

    [[nodiscard]] QString cell(const Shown& shown, int column) const;
    [[nodiscard]] QString words(const Shown& shown) const;
    [[nodiscard]] QString text(const Shown& shown) const;
    [[nodiscard]] bool passes(const Shown& shown) const;
    [[nodiscard]] const Shown& at(int row) const { return m_shown[static_cast<std::size_t>(row)]; }
    void dropGone();
    void addNew();

    std::shared_ptr<const service::LineLog> m_log;
    QDateTime m_start; ///< of the log's time 0
    std::deque<Shown> m_shown;
    std::uint64_t m_next = 0; ///< number of the first row not looked at
    QString m_filter;
    bool m_onlyOdd = false;
    mutable QCache<std::uint64_t, QString> m_words;
};
