#include "aids/checkupwindow.h"

#include "late/late.h"
#include "linkaccess/focuskeeper.h"
#include "linkaccess/signs.h"
#include "service/report.h"
#include "service/reportwords.h"
#include "ui_checkupwindow.h"

#include <QClipboard>
#include <QFileDialog>
#include <QGuiApplication>
#include <QHeaderView>
#include <QPixmap>
#include <QStyle>

#include <array>

using namespace std::chrono_literals;

namespace {

constexpr auto watchInterval = 100ms;
constexpr std::string_view serialNumber = "serialNumber";

QIcon iconOf(service::Verdict verdict) {
    constexpr std::array signs{Sign::success, Sign::warning, Sign::failure};
    return signIcon(signs.at(static_cast<std::size_t>(verdict)));
}

/// Appends a row of texts and returns its number.
int addRow(QTableWidget* table, const QStringList& texts) {
    const int row = table->rowCount();
    table->insertRow(row);
    for (int column = 0; column < texts.size(); ++column) {
        auto* const item = new QTableWidgetItem(texts[column]);
        item->setToolTip(texts[column].toHtmlEscaped());
        table->setItem(row, column, item);
    }
    return row;
}

} // namespace

/// The result of the work on the pool.
struct CheckupWindow::Run {
    service::Checkup checkup;

    [[nodiscard]] QString outcomeText(const CommandReport&) const {
        if (!checkup.interruption.isEmpty())
            return checkup.interruption;
        return checkup.isSilent() ? QString() : service::verdictWords(checkup.verdict());
    }
};

CheckupWindow::CheckupWindow(LinkOwner& owner, service::Visit& visit, QWidget* parent, CameraSp* client)
    : QWidget(parent), ClientBorrower(this, client), m_owner(owner), m_visit(visit),
      m_ui(std::make_unique<Ui::CheckupWindow>()) {
    m_ui->setupUi(this);
    setSign(m_ui->btn_start, Sign::check);
    m_ui->btn_print->setVisible(late::canPrint());
    QHeaderView* const header = m_ui->table_lines->horizontalHeader();
    header->setSectionResizeMode(QHeaderView::Stretch);
    header->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    m_ui->table_visit->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    connect(m_ui->btn_start, &QPushButton::clicked, this, &CheckupWindow::start);
    connect(m_ui->btn_stop, &QPushButton::clicked, this, &CheckupWindow::stop);
    connect(m_ui->btn_copy, &QPushButton::clicked, this, &CheckupWindow::copy);
    connect(m_ui->btn_save, &QPushButton::clicked, this, [this] { save(*m_shown); });
    connect(m_ui->btn_print, &QPushButton::clicked, this, &CheckupWindow::print);
    connect(m_ui->btn_save_visit, &QPushButton::clicked, this, &CheckupWindow::saveVisit);
    connect(m_ui->table_visit, &QTableWidget::itemSelectionChanged, this, &CheckupWindow::chooseVisited);
    m_watch.setInterval(watchInterval);
    connect(&m_watch, &QTimer::timeout, this, &CheckupWindow::yieldToUpload);
    showVisit();
    showControls();
}

CheckupWindow::~CheckupWindow() {
    if (m_stopped)
        *m_stopped = true;
}

// --- the check-up ------------------------------------------------------------------------------------------

void CheckupWindow::start() {
    m_shown.reset();
    m_ui->table_lines->setRowCount(0);
    m_ui->table_visit->clearSelection();
    m_ui->label_icon->clear();
    showPicture({});
    if (client() == nullptr) {
        reportMissingClient();
        m_ui->label_verdict->setText(tr("请先打开串口"));
        showControls();
        return;
    }
    m_ui->label_verdict->setText(tr("正在检查…"));
    m_stopped = std::make_shared<std::atomic<bool>>(false);
    const auto read = reporter<service::CheckLine>(
        this, [this](const auto& line) { addLine(line.reading->translatedTitle(), line.value); });
    const auto work = [read, stopped = m_stopped, facts = m_owner.linkFacts(),
                       began = QDateTime::currentDateTime(),
                       takesPicture = m_ui->cb_picture->isChecked()](CameraSp* camera) {
        service::LineQuality quality;
        const LineObservation counted(*camera, quality);
        Run run{service::runCheckup(*camera, facts.type, quality, read, stopped.get())};
        run.checkup.at = began;
        run.checkup.port = facts.port;
        run.checkup.address = facts.address;
        if (takesPicture && run.checkup.interruption.isEmpty() && !run.checkup.isSilent() && !*stopped)
            service::takeCheckupPicture(*camera, run.checkup);
        return run;
    };
    runOnPool(tr("一键检查"), this, work, [this](const Run& run) { end(run); });
    m_watch.start();
    showControls();
}

void CheckupWindow::stop() {
    if (!m_stopped)
        return;
    *m_stopped = true;
    if (client() != nullptr)
        client()->endDownload();
}

void CheckupWindow::yieldToUpload() {
    if (client() != nullptr && client()->lineState().waitingJob == LineUser::upload)
        client()->endDownload();
}

void CheckupWindow::end(const Run& run) {
    m_watch.stop();
    m_stopped.reset();
    const service::Checkup& checkup = run.checkup;
    if (!checkup.interruption.isEmpty()) {
        m_ui->label_verdict->setText(tr("检查没有做完：%1").arg(checkup.interruption));
    } else if (checkup.isSilent()) {
        m_ui->label_verdict->setText(reportWords({CommandEnd::noAnswer}));
    } else {
        const std::size_t place = m_visit.add(checkup);
        showVisit();
        m_ui->table_visit->selectRow(static_cast<int>(place)); // shows it
    }
    showControls();
}

void CheckupWindow::clientChanged() {
    if (m_stopped) {
        *m_stopped = true;
        m_stopped.reset();
        m_watch.stop();
        m_ui->label_verdict->setText(tr("检查没有做完：%1").arg(reportWords({CommandEnd::stopped})));
    }
    showControls();
}

void CheckupWindow::showControls() {
    const bool running = m_stopped != nullptr;
    FocusKeeper::of(this).keep([this, running] {
        m_ui->btn_start->setEnabled(!running);
        m_ui->cb_picture->setEnabled(!running);
        m_ui->btn_stop->setEnabled(running);
        m_ui->table_visit->setEnabled(!running);
        m_ui->btn_copy->setEnabled(m_shown.has_value());
        m_ui->btn_save->setEnabled(m_shown.has_value());
        m_ui->btn_print->setEnabled(m_shown.has_value());
        m_ui->btn_save_visit->setEnabled(!m_visit.checkups().empty());
    });
}

// --- what is shown -----------------------------------------------------------------------------------------

void CheckupWindow::addLine(const QString& title, const service::ReadValue& value) {
    QTableWidget* const table = m_ui->table_lines;
    const int row = addRow(table, {title, value.text, service::verdictWithReason(value)});
    table->item(row, 2)->setIcon(iconOf(value.verdict));
    table->resizeRowToContents(row);
    table->scrollToBottom();
}

void CheckupWindow::showCheckup(const service::Checkup& checkup) {
    m_ui->table_lines->setRowCount(0);
    for (const service::CheckLine& line : checkup.lines)
        addLine(line.reading->translatedTitle(), line.value);
    addLine(tr("通信"), service::lineValue(checkup.line));
    showVerdict(checkup);
    showPicture(checkup.picture);
    if (!checkup.pictureFailure.isEmpty())
        m_ui->label_picture->setText(tr("没有拍到图片：%1").arg(checkup.pictureFailure));
    m_shown = checkup;
    showControls();
}

void CheckupWindow::showVerdict(const service::Checkup& checkup) {
    const int size = style()->pixelMetric(QStyle::PM_LargeIconSize, nullptr, this);
    m_ui->label_icon->setPixmap(iconOf(checkup.verdict()).pixmap({size, size}, devicePixelRatioF()));
    m_ui->label_verdict->setText(service::verdictLine(checkup));
}

void CheckupWindow::showPicture(const QByteArray& picture) {
    QPixmap pixmap;
    m_ui->label_picture->clear();
    if (pixmap.loadFromData(picture))
        m_ui->label_picture->setPixmap(pixmap.scaled(m_ui->label_picture->contentsRect().size(),
                                                     Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

void CheckupWindow::showVisit() {
    const QSignalBlocker blocker(m_ui->table_visit);
    m_ui->table_visit->setRowCount(0);
    for (const service::Checkup& checkup : m_visit.checkups()) {
        const int row = addRow(m_ui->table_visit,
                               {checkup.at.toString(QStringLiteral("HH:mm:ss")), checkup.textOf(serialNumber),
                                service::verdictWords(checkup.verdict())});
        m_ui->table_visit->item(row, 2)->setIcon(iconOf(checkup.verdict()));
    }
    m_ui->label_visit->setText(tr("本次服务：%1 台").arg(m_visit.checkups().size()));
}

void CheckupWindow::chooseVisited() {
    const QModelIndexList rows = m_ui->table_visit->selectionModel()->selectedRows();
    if (!rows.isEmpty() && !m_stopped)
        showCheckup(m_visit.checkups().at(static_cast<std::size_t>(rows.front().row())));
}

// --- handing over ------------------------------------------------------------------------------------------

void CheckupWindow::copy() const {
    QGuiApplication::clipboard()->setText(service::checkupText(*m_shown));
}

QString CheckupWindow::fileName(const service::Checkup& checkup) const {
    const QString serial = checkup.textOf(serialNumber);
    return tr("检查-%1").arg(checkup.at.toString(QStringLiteral("yyyyMMdd-HHmmss"))) +
           (serial.isEmpty() ? QString() : QLatin1Char('-') + serial);
}

void CheckupWindow::save(const service::Checkup& checkup) {
    askForFile(fileName(checkup),
               [checkup](const QString& path) { return service::writeReport(checkup, path); });
}

void CheckupWindow::saveVisit() {
    const std::vector<service::Checkup>& checkups = m_visit.checkups();
    askForFile(tr("服务-%1").arg(checkups.front().at.toString(QStringLiteral("yyyyMMdd"))),
               [checkups](const QString& path) { return service::writeReport(checkups, path); });
}

void CheckupWindow::askForFile(const QString& name, std::function<QString(const QString& path)> write) {
    struct Format {
        QString filter;
        QString extension;
    };
    const std::array formats{Format{tr("PDF 文件 (*.pdf)"), QStringLiteral("pdf")},
                             Format{tr("网页 (*.html)"), QStringLiteral("html")},
                             Format{tr("表格 (*.csv)"), QStringLiteral("csv")}};
    auto* const dialog = new QFileDialog(this, tr("保存报告"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    QStringList filters;
    for (const Format& format : formats)
        filters.append(format.filter);
    dialog->setNameFilters(filters);
    dialog->setDefaultSuffix(formats.front().extension);
    connect(dialog, &QFileDialog::filterSelected, dialog, [dialog, formats](const QString& filter) {
        for (const Format& format : formats) {
            if (format.filter == filter)
                dialog->setDefaultSuffix(format.extension);
        }
    });
    dialog->selectFile(name);
    connect(dialog, &QFileDialog::fileSelected, this, [this, write = std::move(write)](const QString& path) {
        const QString failure = write(path);
        m_ui->label_saved->setText(failure.isEmpty() ? tr("已保存到 %1").arg(QDir::toNativeSeparators(path))
                                                     : failure);
    });
    dialog->open();
}

void CheckupWindow::print() {
    late::printOnPaper(
        this, [checkup = *m_shown](QPagedPaintDevice& printer) { service::printCheckups(checkup, printer); });
}
