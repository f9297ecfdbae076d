#include "practice/practicewindow.h"

#include "aids/manual.h"
#include "app/mainwindow.h"
#include "app/windowkeys.h"
#include "link/protocol/cameratypes.h"
#include "ui_practicewindow.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QScreen>
#include <QScrollBar>
#include <QShortcut>

using emulator::Lesson;
using emulator::lessons;
using emulator::VirtualCamera;
using protocol::CameraTypeInfo;

namespace {

constexpr std::chrono::milliseconds lookInterval{200};
constexpr int narrow = 300; // pixels, beside a main window
constexpr int wide = 400;
const QString portName = QStringLiteral("练习摄像头");

int freeRow() {
    return static_cast<int>(lessons().size());
}

/// Null for the practice without a lesson.
const Lesson* lessonOf(int row) {
    return row == freeRow() ? nullptr : &lessons()[static_cast<std::size_t>(row)];
}

QString paragraph(const QStringList& lines, const QString& style) {
    QStringList escaped;
    for (const QString& line : lines)
        escaped.append(line.toHtmlEscaped());
    return QStringLiteral("<p style=\"%1\">%2</p>").arg(style, escaped.join(QStringLiteral("<br>")));
}

} // namespace

PracticeWindow::PracticeWindow(Clock& clock) : m_clock(clock), m_ui(std::make_unique<Ui::PracticeWindow>()) {
    m_ui->setupUi(this);
    fillList();
    connectControls();
    m_lookTimer.setInterval(lookInterval);
    connect(&m_lookTimer, &QTimer::timeout, this, &PracticeWindow::look);
}

PracticeWindow::~PracticeWindow() {
    if (m_tool != nullptr)
        m_tool->disconnect(this);
    delete m_tool; // before the camera
}

MainWindow* PracticeWindow::tool() const {
    return m_tool;
}

void PracticeWindow::fillList() {
    QStringList rows;
    for (const Lesson& lesson : lessons())
        rows.append(tr("第 %1 课：%2\n%3")
                        .arg(rows.size() + 1)
                        .arg(QString::fromUtf8(lesson.title), QString::fromUtf8(lesson.learns)));
    rows.append(tr("自由练习\n没有题目，摄像头一切正常。"));
    m_ui->list_lessons->addItems(rows);
    m_ui->list_lessons->setCurrentRow(0);
    for (const CameraTypeInfo& type : protocol::cameraTypes)
        m_ui->sel_type->addItem(
            QString::fromUtf8(type.name.data(), static_cast<qsizetype>(type.name.size())));
    m_ui->sel_type->setEnabled(false);
}

void PracticeWindow::connectControls() {
    QListWidget* const list = m_ui->list_lessons;
    const auto startChosen = [this, list] { start(list->currentRow()); };
    connect(list, &QListWidget::currentRowChanged, this,
            [this](int row) { m_ui->sel_type->setEnabled(row == freeRow()); });
    connect(list, &QListWidget::itemActivated, this, startChosen);
    connect(m_ui->btn_start, &QPushButton::clicked, this, startChosen);
    connect(m_ui->btn_again, &QPushButton::clicked, this, [this] { start(m_row); });
    connect(m_ui->btn_next, &QPushButton::clicked, this, [this] { start(m_row + 1); });
    connect(m_ui->btn_list, &QPushButton::clicked, this,
            [this] { m_ui->pages->setCurrentWidget(m_ui->page_list); });
    const auto showManual = [this] {
        openManual(firstFile(manualPlaces(QCoreApplication::applicationDirPath())), this);
    };
    connect(m_ui->btn_manual, &QPushButton::clicked, this, showManual);
    connect(new QShortcut(QKeySequence::HelpContents, this), &QShortcut::activated, this, showManual);
    pressButtonsByEnter(this);
}

// --- a lesson ----------------------------------------------------------------------------------------------

void PracticeWindow::start(int row) {
    if (!closeTool())
        return;
    m_row = row;
    m_ui->list_lessons->setCurrentRow(row);
    m_camera = std::make_unique<emulator::MemoryFront>(
        cameraOf(row), portName.toStdString(),
        emulator::MemoryPort{tr("虚拟摄像头").toStdString(), tr("不用接线").toStdString()});
    m_camera->followRate();
    m_earlier.clear();
    m_ui->pages->setCurrentWidget(m_ui->page_lesson);
    m_ui->btn_next->setEnabled(row < freeRow());
    if (const Lesson* const lesson = lessonOf(row)) {
        m_ui->label_title->setText(tr("第 %1 课：%2").arg(row + 1).arg(QString::fromUtf8(lesson->title)));
        m_lesson.emplace(
            *lesson, *m_camera,
            [this](const std::string& line) { m_said.append(QString::fromStdString(line)); },
            [this](bool in) { in ? m_camera->comeBack() : m_camera->vanish(); });
        look();
        m_lookTimer.start();
    } else {
        m_ui->label_title->setText(tr("自由练习：%1").arg(m_ui->sel_type->currentText()));
        showStep(
            {tr("1. 打开菜单“设置 → 摄像头设置”，选择“%1”，点击“确认”。").arg(m_ui->sel_type->currentText()),
             tr("2. 选择串口“%1”，点击“打开串口”。").arg(portName),
             tr("3. 心跳、拍照、设置、升级都可以试，不会弄坏什么。")});
    }
    openTool();
}

VirtualCamera PracticeWindow::cameraOf(int row) const {
    if (const Lesson* const lesson = lessonOf(row))
        return emulator::lessonCamera(*lesson);
    const auto type = static_cast<std::uint32_t>(m_ui->sel_type->currentIndex());
    return VirtualCamera(emulator::settingsForType(protocol::cameraTypeInfo(type).type));
}

void PracticeWindow::openTool() {
    m_tool = new MainWindow(nullptr, m_clock);
    m_tool->setAttribute(Qt::WA_DeleteOnClose);
    connect(m_tool, &QObject::destroyed, this, &PracticeWindow::endLesson);
    m_tool->show();
    placeBesideTool();
}

void PracticeWindow::placeBesideTool() {
    const QRect room = screen()->availableGeometry();
    const int least = std::min(m_tool->width(), m_tool->sizeHint().width()); // narrower ones cut texts
    m_tool->resize(std::clamp(room.width() - narrow, least, m_tool->width()), m_tool->height());
    const int beside = room.width() - m_tool->frameGeometry().width();
    resize(std::clamp(beside, narrow, wide), m_tool->height());
    const int spare = std::max(0, beside - frameGeometry().width());
    const int top = m_tool->frameGeometry().top();
    m_tool->move(room.left() + spare / 2, top);
    move(room.right() + 1 - frameGeometry().width() - (spare + 1) / 2, top);
    m_tool->activateWindow();
}

bool PracticeWindow::closeTool() {
    if (m_tool == nullptr)
        return true;
    if (!m_tool->close())
        return false;
    m_tool->disconnect(this);
    delete m_tool;
    endLesson();
    return true;
}

void PracticeWindow::endLesson() {
    m_lookTimer.stop();
    m_lesson.reset();
    m_camera.reset();
    m_ui->pages->setCurrentWidget(m_ui->page_list);
}

void PracticeWindow::closeEvent(QCloseEvent* event) {
    event->setAccepted(closeTool());
}

// --- its steps ---------------------------------------------------------------------------------------------

void PracticeWindow::look() {
    const bool solvedBefore = m_lesson->solved();
    m_lesson->look();
    if (m_said.isEmpty())
        return;
    if (m_lesson->solved() && !solvedBefore)
        m_said.append(tr("这一课完成了。点击“下一课”继续。"));
    showStep(std::exchange(m_said, {}));
}

void PracticeWindow::showStep(const QStringList& lines) {
    m_ui->text_steps->setHtml(m_earlier + paragraph(lines, QStringLiteral("font-weight:bold")));
    m_earlier += paragraph(lines, {});
    QScrollBar* const bar = m_ui->text_steps->verticalScrollBar();
    bar->setValue(bar->maximum());
}
