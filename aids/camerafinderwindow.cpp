#include "aids/camerafinderwindow.h"

#include "linkaccess/focuskeeper.h"
#include "linkaccess/signs.h"
#include "service/reportwords.h"
#include "ui_camerafinderwindow.h"

#include <QHeaderView>
#include <QTime>

#include <algorithm>

namespace {

constexpr std::size_t portsAtOnce = 4; // other jobs need the pool as well
constexpr std::size_t usualRates = 2;  // the first ones; cameras leave the factory with them

QString hexadecimal(std::uint8_t address) {
    return QStringLiteral("%1").arg(address, 2, 16, QLatin1Char('0')).toUpper();
}

QString clockText(qint64 seconds) {
    return QStringLiteral("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
}

void addChoice(QListWidget* list, const QString& text, bool checked) {
    auto* const item = new QListWidgetItem(text, list);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
    item->setCheckState(checked ? Qt::Checked : Qt::Unchecked);
}

QStringList checkedIn(const QListWidget* list) {
    QStringList texts;
    for (int row = 0; row < list->count(); ++row) {
        if (list->item(row)->checkState() == Qt::Checked)
            texts.append(list->item(row)->text());
    }
    return texts;
}

} // namespace

CameraFinderWindow::CameraFinderWindow(LinkOwner& owner, QWidget* parent, CameraSp* client)
    : QWidget(parent), ClientBorrower(this, client), m_owner(owner),
      m_ui(std::make_unique<Ui::CameraFinderWindow>()) {
    m_ui->setupUi(this);
    setSign(m_ui->btn_start, Sign::find);
    fillChoices();
    QSizePolicy policy = m_ui->bar_progress->sizePolicy();
    policy.setRetainSizeWhenHidden(true); // nothing moves when a search begins
    m_ui->bar_progress->setSizePolicy(policy);
    m_ui->table_found->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    connect(m_ui->btn_start, &QPushButton::clicked, this, &CameraFinderWindow::start);
    connect(m_ui->btn_stop, &QPushButton::clicked, this, &CameraFinderWindow::stop);
    connect(m_ui->btn_use, &QPushButton::clicked, this, &CameraFinderWindow::use);
    connect(m_ui->table_found, &QTableWidget::itemActivated, this, &CameraFinderWindow::use);
    connect(m_ui->table_found, &QTableWidget::itemSelectionChanged, this, &CameraFinderWindow::showChoices);
    showChoices();
}

CameraFinderWindow::~CameraFinderWindow() {
    if (m_search)
        m_search->stop();
}

void CameraFinderWindow::fillChoices() {
    refreshPorts();
    std::size_t rates = 0;
    for (const std::uint32_t rate : protocol::baudRates)
        addChoice(m_ui->list_rates, QString::number(rate), rates++ < usualRates);
    QStringList usual;
    for (const std::uint8_t address : service::usualAddresses())
        usual.append(hexadecimal(address));
    m_ui->rb_usual->setText(m_ui->rb_usual->text().arg(usual.join(tr("、"))));
}

void CameraFinderWindow::refreshPorts() {
    const QStringList ports = m_owner.choosablePorts();
    const QStringList unchecked = [this] {
        QStringList texts;
        const QStringList checked = checkedIn(m_ui->list_ports);
        for (int row = 0; row < m_ui->list_ports->count(); ++row)
            texts.append(m_ui->list_ports->item(row)->text());
        texts.removeIf([&checked](const QString& text) { return checked.contains(text); });
        return texts;
    }();
    m_ui->list_ports->clear();
    for (const QString& port : ports)
        addChoice(m_ui->list_ports, port, !unchecked.contains(port));
}

void CameraFinderWindow::showChoices() {
    const bool linked = client() != nullptr;
    const bool running = m_search != nullptr;
    FocusKeeper::of(this).keep([this, linked, running] {
        m_ui->group_ports->setEnabled(!linked && !running);
        m_ui->group_rates->setEnabled(!linked && !running);
        m_ui->group_addresses->setEnabled(!running);
        m_ui->btn_start->setEnabled(!running);
        m_ui->btn_stop->setEnabled(running && !m_search->stopped());
        m_ui->btn_use->setEnabled(!m_ui->table_found->selectedItems().isEmpty());
    });
    m_ui->bar_progress->setVisible(running);
    const LinkFacts facts = m_owner.linkFacts();
    m_ui->label_scope->setText(
        linked ? tr("串口已打开，只查找 %1（波特率 %2）。").arg(facts.port).arg(facts.baudRate)
               : tr("只发送心跳，列出有应答的摄像头。"));
}

// --- the search --------------------------------------------------------------------------------------------

std::vector<service::FindPlan> CameraFinderWindow::chosenPlans() const {
    service::FindPlan plan;
    plan.addresses = m_ui->rb_all->isChecked() ? service::allAddresses() : service::usualAddresses();
    if (client() != nullptr) {
        const LinkFacts facts = m_owner.linkFacts();
        plan.port = facts.port.toStdString();
        plan.rates = {facts.baudRate};
        return {plan};
    }
    for (const QString& rate : checkedIn(m_ui->list_rates))
        plan.rates.push_back(rate.toUInt());
    std::vector<service::FindPlan> plans;
    for (const QString& port : checkedIn(m_ui->list_ports)) {
        plan.port = port.toStdString();
        plans.push_back(plan);
    }
    return plans;
}

void CameraFinderWindow::start() {
    if (client() == nullptr)
        refreshPorts();
    std::vector<service::FindPlan> plans = chosenPlans();
    m_attempts = 0;
    for (const service::FindPlan& plan : plans)
        m_attempts += plan.attempts();
    if (m_attempts == 0) {
        m_ui->label_state->setText(tr("请至少选择一个串口和一个波特率"));
        return;
    }
    m_tried = 0;
    m_found.clear();
    m_ui->table_found->setRowCount(0);
    m_ui->label_failures->clear();
    m_since.start();
    if (client() != nullptr)
        startOnLink(plans.front());
    else
        startOnPorts(std::move(plans));
    showProgress();
    showChoices();
}

service::PortSearchObserver CameraFinderWindow::observer() {
    const auto tried = reporter<int>(this, [this](int) {
        ++m_tried;
        showProgress();
    });
    return {[tried] { tried(0); },
            reporter<service::FoundCamera>(this, [this](const auto& camera) { addFound(camera); }),
            [failed = reporter<QString>(this, [this](const QString& text) { addFailure(text); })](
                const std::string& port, const FailureText& failure) {
                failed(QStringLiteral("%1：%2").arg(QString::fromStdString(port), failure.inShort()));
            }};
}

void CameraFinderWindow::startOnPorts(std::vector<service::FindPlan> plans) {
    m_jobs = std::min(plans.size(), portsAtOnce);
    m_search = std::make_shared<service::PortSearch>(std::move(plans));
    for (std::size_t job = 0; job < m_jobs; ++job) {
        runWithoutClient(
            this,
            [search = m_search, observer = observer()] {
                search->run(observer);
                return 0;
            },
            [this, search = m_search](int) { end(search, outcome()); });
    }
}

void CameraFinderWindow::startOnLink(const service::FindPlan& plan) {
    struct End {
        service::FindEnd end = service::FindEnd::complete;
        LineUser busyWith = LineUser::none;
        std::optional<FailureText> failure;
    };
    m_jobs = 1;
    m_search = std::make_shared<service::PortSearch>(std::vector<service::FindPlan>());
    const service::PortSearchObserver events = observer();
    const service::FindObserver found{[events](std::size_t) { events.tried(); }, events.found};
    const auto work = [plan, search = m_search, found](CameraSp* camera) -> End {
        try {
            const service::FindEnd end = service::findCameras(*camera, plan, found, search->stopped());
            const LineTurn::State line = camera->lineState();
            return {end, line.waitingJob != LineUser::none ? line.waitingJob : line.holder, {}};
        } catch (...) {
            return {service::FindEnd::stopped, LineUser::none, failureText(std::current_exception())};
        }
    };
    // Without a name: the status bar stays with the actions of other windows.
    runOnPool(QString(), this, work, [this, search = m_search](const End& ended) {
        if (ended.failure)
            addFailure(ended.failure->what + QLatin1Char(' ') + ended.failure->advice);
        end(search, ended.end == service::FindEnd::lineBusy
                        ? tr("%1，查找已停止").arg(reportWords({CommandEnd::lineBusy, ended.busyWith}))
                        : outcome());
    });
}

void CameraFinderWindow::stop() {
    if (m_search)
        m_search->stop();
    showChoices();
}

void CameraFinderWindow::end(const Search& search, const QString& text) {
    if (search != m_search || --m_jobs > 0)
        return;
    m_search.reset();
    m_ui->bar_progress->reset();
    m_ui->label_state->setText(text);
    showChoices();
}

QString CameraFinderWindow::outcome() const {
    if (m_search && m_search->stopped())
        return tr("已停止，找到 %1 台").arg(m_found.size());
    if (m_found.empty())
        return m_ui->rb_all->isChecked() ? tr("没有摄像头应答，请检查电源和接线")
                                         : tr("没有摄像头应答，请检查电源和接线，或选择全部地址和波特率");
    return tr("找到 %1 台，选中一行，点击“使用”").arg(m_found.size());
}

void CameraFinderWindow::releasePort(const QString& port) {
    if (m_search)
        m_search->stop();
    service::PortSearch::waitUntilFree(port.toStdString());
}

void CameraFinderWindow::clientChanged() {
    if (const Search search = m_search) {
        search->stop();
        m_jobs = 1;
        end(search, tr("串口已打开或关闭，查找已停止"));
    }
    if (client() == nullptr)
        refreshPorts();
    showChoices();
}

// --- what was found ----------------------------------------------------------------------------------------

void CameraFinderWindow::showProgress() {
    m_ui->bar_progress->setMaximum(static_cast<int>(m_attempts));
    m_ui->bar_progress->setValue(static_cast<int>(m_tried));
    QString text = tr("已试 %1 / %2 次，找到 %3 台").arg(m_tried).arg(m_attempts).arg(m_found.size());
    if (m_tried > m_jobs) {
        const double each = static_cast<double>(m_since.elapsed()) / static_cast<double>(m_tried);
        const auto left = static_cast<qint64>(each * static_cast<double>(m_attempts - m_tried) / 1000);
        text += tr("，剩余 %1").arg(clockText(left));
    }
    m_ui->label_state->setText(text);
}

void CameraFinderWindow::addFound(const service::FoundCamera& camera) {
    m_found.push_back(camera);
    QTableWidget* const table = m_ui->table_found;
    const int row = table->rowCount();
    table->insertRow(row);
    const QStringList cells{QString::fromStdString(camera.port), QString::number(camera.baudRate),
                            tr("%1（%2）").arg(camera.address).arg(hexadecimal(camera.address)),
                            QTime::currentTime().toString(QStringLiteral("HH:mm:ss"))};
    for (int column = 0; column < cells.size(); ++column)
        table->setItem(row, column, new QTableWidgetItem(cells[column]));
    if (row == 0)
        table->selectRow(0);
    showProgress();
}

void CameraFinderWindow::addFailure(const QString& text) {
    const QString before = m_ui->label_failures->text();
    m_ui->label_failures->setText(before.isEmpty() ? text : before + QLatin1Char('\n') + text);
}

void CameraFinderWindow::use() {
    const int row = m_ui->table_found->currentRow();
    if (row < 0 || static_cast<std::size_t>(row) >= m_found.size())
        return;
    const service::FoundCamera camera = m_found[static_cast<std::size_t>(row)];
    m_owner.useCamera(camera);
}
