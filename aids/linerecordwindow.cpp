#include "aids/linerecordwindow.h"

#include "link/guarded.h"
#include "trace/recordingfile.h"
#include "ui_linerecordwindow.h"

#include <QAction>
#include <QClipboard>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QMessageBox>
#include <QSaveFile>
#include <QScrollBar>
#include <QStandardPaths>

#include <limits>
#include <sstream>

using namespace std::chrono_literals;

namespace {

constexpr auto refreshInterval = 200ms;
constexpr auto filterDelay = 250ms; // typing filters once
constexpr auto savedNoticeTime = 5s;
constexpr std::size_t shownBytes = 4096;
constexpr int bytesOfLine = 16;
constexpr int rowMargin = 6; // pixels

QString hexText(protocol::ByteView bytes) {
    const QByteArray raw(reinterpret_cast<const char*>(bytes.begin()), static_cast<qsizetype>(bytes.size()));
    return QString::fromLatin1(raw.toHex(' ').toUpper());
}

QString readable(protocol::ByteView bytes) {
    QString text;
    for (const std::uint8_t byte : bytes)
        text += byte >= 0x20 && byte < 0x7F ? QLatin1Char(static_cast<char>(byte)) : QLatin1Char('.');
    return text;
}

/// Lines of 16 bytes: offset, hexadecimal, characters.
QString dump(protocol::ByteView bytes) {
    QStringList lines;
    for (std::size_t at = 0; at < bytes.size(); at += bytesOfLine) {
        const protocol::ByteView line = bytes.range(at, at + bytesOfLine);
        lines.append(QStringLiteral("%1  %2  %3")
                         .arg(at, 4, 16, QLatin1Char('0'))
                         .arg(hexText(line), -(3 * bytesOfLine - 1))
                         .arg(readable(line)));
    }
    return lines.join(QLatin1Char('\n'));
}

QString documentsFolder() {
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

} // namespace

LineRecordWindow::LineRecordWindow(QWidget* parent, LineWatch* watch)
    : QWidget(parent), m_ui(std::make_unique<Ui::LineRecordWindow>()), m_watch(watch),
      m_model(new LineRecordModel(this)) {
    m_ui->setupUi(this);
    QTableView* const table = m_ui->table;
    table->setModel(m_model);
    table->verticalHeader()->hide();
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + rowMargin);
    table->horizontalHeader()->setSectionResizeMode(LineRecordModel::wordsColumn, QHeaderView::Stretch);
    table->horizontalHeader()->setHighlightSections(false);
    const auto setWidth = [&](int column, const char* widest) {
        table->setColumnWidth(column,
                              fontMetrics().horizontalAdvance(QString::fromUtf8(widest)) + 4 * rowMargin);
    };
    setWidth(LineRecordModel::timeColumn, "00:00:00.000");
    setWidth(LineRecordModel::directionColumn, "发送");
    setWidth(LineRecordModel::sizeColumn, "00000000");
    setWidth(LineRecordModel::tookColumn, "≤ 00000.0 ms");
    setWidth(LineRecordModel::oddColumn, "前有 00 个杂散字节");
    m_ui->text_bytes->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_ui->splitter->setStretchFactor(0, 3);
    m_ui->splitter->setStretchFactor(1, 1);
    connectControls();
    showLive();
    m_timer.start(refreshInterval);
}

LineRecordWindow::~LineRecordWindow() = default;

void LineRecordWindow::connectControls() {
    connect(&m_timer, &QTimer::timeout, this, &LineRecordWindow::refresh);
    m_filterPause.setSingleShot(true);
    m_filterPause.setInterval(filterDelay);
    connect(&m_filterPause, &QTimer::timeout, this, &LineRecordWindow::applyFilter);
    m_savedNotice.setSingleShot(true);
    m_savedNotice.setInterval(savedNoticeTime);
    connect(&m_savedNotice, &QTimer::timeout, this, &LineRecordWindow::showSummary);
    connect(m_ui->et_filter, &QLineEdit::textChanged, this, [this] { m_filterPause.start(); });
    connect(m_ui->cb_odd, &QCheckBox::toggled, this, &LineRecordWindow::applyFilter);
    connect(m_ui->cb_follow, &QCheckBox::toggled, this, &LineRecordWindow::setFollowing);
    const QScrollBar* const bar = m_ui->table->verticalScrollBar();
    connect(bar, &QScrollBar::actionTriggered, this, [this, bar] { // by the user, before the bar moves
        if (bar->sliderPosition() < bar->maximum())
            m_ui->cb_follow->setChecked(false);
    });
    connect(m_ui->table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &LineRecordWindow::enableButtons);
    connect(m_ui->table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            &LineRecordWindow::showCurrentRow);
    connect(m_model, &QAbstractItemModel::modelReset, this, &LineRecordWindow::showCurrentRow);
    connect(m_ui->btn_copytext, &QPushButton::clicked, this, &LineRecordWindow::copyText);
    connect(m_ui->btn_copyhex, &QPushButton::clicked, this, &LineRecordWindow::copyHex);
    connect(m_ui->btn_save, &QPushButton::clicked, this, &LineRecordWindow::chooseSaveFile);
    connect(m_ui->btn_openfile, &QPushButton::clicked, this, &LineRecordWindow::chooseRecording);
    connect(m_ui->btn_live, &QPushButton::clicked, this, &LineRecordWindow::showLive);
    addCopyActions();
}

void LineRecordWindow::addCopyActions() {
    const auto add = [this](const QString& text, void (LineRecordWindow::*slot)(), const QKeySequence& keys) {
        auto* const action = new QAction(text, m_ui->table);
        action->setShortcut(keys);
        action->setShortcutContext(Qt::WidgetShortcut);
        m_ui->table->addAction(action);
        connect(action, &QAction::triggered, this, slot);
    };
    add(m_ui->btn_copytext->text(), &LineRecordWindow::copyText, QKeySequence::Copy);
    add(m_ui->btn_copyhex->text(), &LineRecordWindow::copyHex, Qt::CTRL | Qt::SHIFT | Qt::Key_C);
}

QList<int> LineRecordWindow::selectedRows() const {
    QList<int> rows;
    for (const QModelIndex& index : m_ui->table->selectionModel()->selectedRows())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

// --- following ---------------------------------------------------------------------------------------------

void LineRecordWindow::refresh() {
    if (!m_file.isEmpty())
        return;
    m_watch->update();
    if (m_ui->cb_follow->isChecked()) {
        if (m_model->log() != m_watch->log())
            showLive();
        const int rows = m_model->rowCount();
        m_model->refresh();
        if (m_model->rowCount() != rows)
            scrollToNewest();
        enableButtons();
    }
    if (!m_savedNotice.isActive())
        showSummary();
}

void LineRecordWindow::setFollowing(bool following) {
    m_savedNotice.stop();
    refresh();
    if (following)
        scrollToNewest();
}

void LineRecordWindow::scrollToNewest() {
    m_ui->table->scrollToBottom();
}

void LineRecordWindow::applyFilter() {
    m_filterPause.stop();
    m_model->setFilter(m_ui->et_filter->text().trimmed(), m_ui->cb_odd->isChecked());
    if (m_ui->cb_follow->isChecked())
        scrollToNewest();
    showSummary();
}

void LineRecordWindow::showLive() {
    m_file.clear();
    m_watch->update();
    m_model->setLog(m_watch->log());
    m_ui->cb_follow->setEnabled(true);
    scrollToNewest();
    showTitle();
    showSummary();
    enableButtons();
}

// --- texts -------------------------------------------------------------------------------------------------

void LineRecordWindow::showTitle() {
    setWindowTitle(m_file.isEmpty() ? tr("通信记录") : tr("通信记录 - %1").arg(QFileInfo(m_file).fileName()));
}

void LineRecordWindow::showSummary() {
    m_savedNotice.stop();
    const auto& log = m_file.isEmpty() ? m_watch->log() : m_model->log();
    if (log == nullptr) {
        m_ui->label_summary->setText(tr("还没有记录，请打开串口"));
        return;
    }
    const std::uint64_t rows = log->rows.end() - log->rows.begin();
    QString text = tr("%1，%2：共 %3 条，显示 %4 条")
                       .arg(QString::fromStdString(log->head.device))
                       .arg(log->head.baudRate)
                       .arg(rows)
                       .arg(m_model->rowCount());
    if (const trace::LineItem* const upload = log->rows.dataUnderWay())
        text += tr("；正在发送升级数据 %1 / %2 字节").arg(upload->dataSize).arg(upload->expected);
    if (m_file.isEmpty() && !m_ui->cb_follow->isChecked())
        text += tr("；画面已停住，勾选“跟随”看最新");
    m_ui->label_summary->setText(text);
}

void LineRecordWindow::showCurrentRow() {
    const QModelIndex current = m_ui->table->currentIndex();
    if (!current.isValid()) {
        m_ui->text_bytes->clear();
        return;
    }
    const protocol::Bytes bytes = m_model->bytesOf(current.row(), shownBytes + 1);
    QString text = current.siblingAtColumn(LineRecordModel::wordsColumn).data().toString();
    text += QLatin1Char('\n') + dump(protocol::ByteView(bytes).range(0, shownBytes));
    if (bytes.size() > shownBytes)
        text += tr("\n只显示前 %1 字节，复制十六进制可得到全部").arg(shownBytes);
    m_ui->text_bytes->setPlainText(text);
}

void LineRecordWindow::enableButtons() {
    const bool selected = m_ui->table->selectionModel()->hasSelection();
    m_ui->btn_copytext->setEnabled(selected);
    m_ui->btn_copyhex->setEnabled(selected);
    const auto& log = m_model->log();
    m_ui->btn_save->setEnabled(log != nullptr && log->rows.begin() < log->rows.end());
    m_ui->btn_live->setEnabled(!m_file.isEmpty());
    m_ui->cb_follow->setEnabled(m_file.isEmpty());
}

void LineRecordWindow::tell(const QString& text, const QString& details) {
    auto* const box = new QMessageBox(QMessageBox::Warning, tr("通信记录"), text, QMessageBox::Ok, this);
    box->setTextFormat(Qt::PlainText);
    box->setDetailedText(details);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
}

// --- copying -----------------------------------------------------------------------------------------------

void LineRecordWindow::copyText() {
    QStringList lines;
    for (const int row : selectedRows())
        lines.append(m_model->textOf(row));
    if (!lines.isEmpty())
        QGuiApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
}

void LineRecordWindow::copyHex() {
    QStringList lines;
    for (const int row : selectedRows()) {
        const protocol::Bytes bytes = m_model->bytesOf(row, std::numeric_limits<std::size_t>::max());
        if (!bytes.empty())
            lines.append(hexText(bytes));
    }
    if (!lines.isEmpty())
        QGuiApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
}

// --- files -------------------------------------------------------------------------------------------------

void LineRecordWindow::chooseSaveFile() {
    const QString name = QString::fromStdString(trace::freshRecordingName(std::chrono::system_clock::now()));
    auto* const dialog = new QFileDialog(this, tr("保存录制"), documentsFolder(), tr("录制文件 (*.rec)"));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix(QStringLiteral("rec"));
    dialog->selectFile(name);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::fileSelected, this, &LineRecordWindow::save);
    dialog->open();
}

void LineRecordWindow::save(const QString& path) {
    const auto& log = m_model->log();
    if (log == nullptr)
        return;
    QSaveFile file(path);
    const bool opened = file.open(QIODevice::WriteOnly);
    if (opened) {
        service::writeRecording(*log, m_ui->cb_blank->isChecked(), [&file](const std::string& lines) {
            file.write(lines.data(), static_cast<qint64>(lines.size()));
        });
    }
    if (!opened || !file.commit())
        tell(tr("没有保存，请换一个文件夹"), path + QLatin1Char('\n') + file.errorString());
    else
        showSaved(path);
}

void LineRecordWindow::showSaved(const QString& path) {
    m_ui->label_summary->setText(tr("已保存 %1").arg(path));
    m_savedNotice.start();
}

void LineRecordWindow::chooseRecording() {
    auto* const dialog = new QFileDialog(this, tr("打开录制"), documentsFolder(),
                                         tr("录制文件 (*.rec)") + QStringLiteral(";;") + tr("所有文件 (*)"));
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QFileDialog::fileSelected, this, &LineRecordWindow::openRecording);
    dialog->open();
}

void LineRecordWindow::openRecording(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        tell(tr("文件无法读取，请重新选择"), path + QLatin1Char('\n') + file.errorString());
        return;
    }
    std::shared_ptr<service::LineLog> log;
    try {
        std::istringstream text(file.readAll().toStdString());
        log = std::make_shared<service::LineLog>(trace::readRecording(text));
    } catch (...) {
        tell(tr("这不是完整的录制文件，请重新选择"), QString::fromStdString(exceptionText()));
        return;
    }
    m_file = path;
    m_model->setLog(std::move(log));
    m_ui->table->scrollToTop();
    showTitle();
    showSummary();
    enableButtons();
}
