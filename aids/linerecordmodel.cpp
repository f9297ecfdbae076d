#include "aids/linerecordmodel.h"

#include "aids/linephrases.h"
#include "link/protocol/frame.h"

#include <QBrush>
#include <QColor>
#include <QGuiApplication>
#include <QPalette>

using service::LineRow;
using trace::LineItem;
using Role = service::Judgement::Role;

namespace {

constexpr trace::Time shortestSlack{500}; // shorter ones are not shown
constexpr int rememberedWords = 500;      // rows; a screen shows fewer

/// Readable on a light and on a dark ground.
QColor oddColour() {
    constexpr int middle = 128;
    const bool dark = QGuiApplication::palette().base().color().lightness() < middle;
    return dark ? QColor(0xFF, 0x8A, 0x80) : QColor(0xB0, 0x3A, 0x2E);
}

QString wrongText(const LineRow& row) {
    if (row.kind == LineRow::Kind::gap)
        return LineRecordModel::tr("缺少字节");
    if (row.kind == LineRow::Kind::nothing)
        return LineRecordModel::tr("没有应答");
    if (row.itemKind == LineItem::Kind::data && row.size != row.expected)
        return LineRecordModel::tr("没有发完");
    switch (row.role) {
    case Role::late:
        return LineRecordModel::tr("迟到或重复");
    case Role::foreign:
        return LineRecordModel::tr("命令不符");
    case Role::stray:
        return LineRecordModel::tr("杂散字节");
    case Role::broken:
        if (row.itemKind == LineItem::Kind::brokenOff)
            return LineRecordModel::tr("不完整");
        return row.itemKind == LineItem::Kind::badFrame && row.size < protocol::frameOverhead
                   ? LineRecordModel::tr("长度不可能")
                   : LineRecordModel::tr("校验码错误");
    case Role::request:
    case Role::answer:
    case Role::other:
        break;
    }
    return {};
}

QString oddText(const LineRow& row) {
    QStringList words;
    if (row.strayBefore > 0)
        words.append(LineRecordModel::tr("前有 %1 个杂散字节").arg(row.strayBefore));
    if (const QString wrong = wrongText(row); !wrong.isEmpty())
        words.append(wrong);
    return words.join(LineRecordModel::tr("，"));
}

QString tookText(const LineRow& row) {
    if (row.took == trace::Time{0})
        return {};
    const bool atMost = row.kind == LineRow::Kind::item && row.slack > shortestSlack;
    return (atMost ? LineRecordModel::tr("≤ %1 ms") : LineRecordModel::tr("%1 ms"))
        .arg(std::chrono::duration<double, std::milli>(row.took).count(), 0, 'f', 1);
}

QString caption(int column) {
    switch (column) {
    case LineRecordModel::timeColumn:
        return LineRecordModel::tr("时间");
    case LineRecordModel::directionColumn:
        return LineRecordModel::tr("方向");
    case LineRecordModel::wordsColumn:
        return LineRecordModel::tr("内容");
    case LineRecordModel::sizeColumn:
        return LineRecordModel::tr("字节");
    case LineRecordModel::tookColumn:
        return LineRecordModel::tr("用时");
    case LineRecordModel::oddColumn:
        return LineRecordModel::tr("异常");
    default:
        return {};
    }
}

} // namespace

LineRecordModel::LineRecordModel(QObject* parent) : QAbstractTableModel(parent), m_words(rememberedWords) {}

void LineRecordModel::setLog(std::shared_ptr<const service::LineLog> log) {
    beginResetModel();
    m_log = std::move(log);
    m_start = m_log == nullptr
                  ? QDateTime()
                  : QDateTime::fromString(QString::fromStdString(m_log->head.start), Qt::ISODateWithMs)
                        .toLocalTime();
    m_shown.clear();
    m_words.clear();
    m_next = 0;
    endResetModel();
    refresh();
}

void LineRecordModel::refresh() {
    if (m_log == nullptr)
        return;
    dropGone();
    addNew();
}

void LineRecordModel::setFilter(const QString& text, bool onlyOdd) {
    if (text == m_filter && onlyOdd == m_onlyOdd)
        return;
    beginResetModel();
    m_filter = text;
    m_onlyOdd = onlyOdd;
    m_shown.clear();
    const std::uint64_t end = std::exchange(m_next, 0);
    for (std::uint64_t number = m_log == nullptr ? end : m_log->rows.begin(); number < end; ++number) {
        if (const Shown shown{number, m_log->rows.row(number)}; passes(shown))
            m_shown.push_back(shown);
    }
    m_next = end;
    endResetModel();
}

void LineRecordModel::dropGone() {
    int gone = 0;
    while (gone < rowCount() && at(gone).number < m_log->rows.begin())
        ++gone;
    if (gone == 0)
        return;
    beginRemoveRows({}, 0, gone - 1);
    m_shown.erase(m_shown.begin(), m_shown.begin() + gone);
    endRemoveRows();
}

void LineRecordModel::addNew() {
    std::vector<Shown> added;
    for (m_next = std::max(m_next, m_log->rows.begin()); m_next < m_log->rows.end(); ++m_next) {
        if (const Shown shown{m_next, m_log->rows.row(m_next)}; passes(shown))
            added.push_back(shown);
    }
    if (added.empty())
        return;
    beginInsertRows({}, rowCount(), rowCount() + static_cast<int>(added.size()) - 1);
    m_shown.insert(m_shown.end(), added.begin(), added.end());
    endInsertRows();
}

bool LineRecordModel::passes(const Shown& shown) const {
    return (!m_onlyOdd || shown.row.isOdd()) &&
           (m_filter.isEmpty() || text(shown).contains(m_filter, Qt::CaseInsensitive));
}

int LineRecordModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_shown.size());
}

int LineRecordModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : columns;
}

QVariant LineRecordModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount() || index.column() >= columns)
        return {};
    const Shown& shown = at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return cell(shown, index.column());
    case Qt::ForegroundRole:
        return shown.row.isOdd() ? QVariant(QBrush(oddColour())) : QVariant();
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(index.column() == sizeColumn || index.column() == tookColumn
                                       ? Qt::AlignRight | Qt::AlignVCenter
                                       : Qt::AlignLeft | Qt::AlignVCenter);
    default:
        return {};
    }
}

QVariant LineRecordModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    return caption(section);
}

QString LineRecordModel::cell(const Shown& shown, int column) const {
    const LineRow& row = shown.row;
    switch (column) {
    case timeColumn:
        return m_start.addMSecs(std::chrono::duration_cast<std::chrono::milliseconds>(row.at).count())
            .toString(QStringLiteral("HH:mm:ss.zzz"));
    case directionColumn:
        return row.from == trace::Side::tool ? tr("发送") : tr("接收");
    case wordsColumn:
        return words(shown);
    case sizeColumn:
        return row.kind == LineRow::Kind::item ? QString::number(row.size) : QString();
    case tookColumn:
        return tookText(row);
    case oddColumn:
        return oddText(row);
    default:
        return {};
    }
}

QString LineRecordModel::words(const Shown& shown) const {
    if (const QString* const known = m_words.object(shown.number))
        return *known;
    QString text = QString::fromStdString(
        service::wordsOf(shown.row, m_log->record, m_log->head.pictureOffset, &chinesePhrase));
    m_words.insert(shown.number, new QString(text));
    return text;
}

QString LineRecordModel::text(const Shown& shown) const {
    QStringList cells;
    for (int column = 0; column < columns; ++column)
        cells.append(cell(shown, column));
    return cells.join(QLatin1Char('\t'));
}

QString LineRecordModel::textOf(int row) const {
    return text(at(row));
}

protocol::Bytes LineRecordModel::bytesOf(int row, std::size_t atMost) const {
    const service::LineRow& wanted = at(row).row;
    return wanted.kind == LineRow::Kind::item ? service::bytesOf(wanted, m_log->record, atMost)
                                              : protocol::Bytes();
}
