#include "tests/simulation/technician.h"

#include "pictures/imgdialog.h"
#include "tests/simulation/choice.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QSpinBox>

#include <algorithm>
#include <array>

namespace simulation {

namespace {

constexpr int afterwardsMs = 200;   // between answers to dialogs when all steps are done
constexpr std::uint32_t noFile = 4; // a refused replacement would lead to the same question again

/// Texts that a technician types, good and bad ones.
const QString& typedText(std::uint32_t choice) {
    static const std::array<QString, 8> texts{QStringLiteral("7"),          QStringLiteral("0"),
                                              QStringLiteral("90"),         QString(),
                                              QStringLiteral("300"),        QStringLiteral("SHELF900"),
                                              QStringLiteral("模型 3.bin"), QStringLiteral("-1")};
    return texts.at(choice % texts.size());
}

} // namespace

QList<QAction*> menuEntries(const QWidget& mainWindow) {
    QList<QAction*> entries;
    for (const QMenu* const menu : mainWindow.findChild<QMenuBar*>()->findChildren<QMenu*>()) {
        for (QAction* const entry : menu->actions()) {
            if (entry->objectName().startsWith(QLatin1String("action")))
                entries.append(entry);
        }
    }
    return entries;
}

Technician::Technician(Workplace& workplace, QWidget* mainWindow, const Scenario& scenario)
    : m_workplace(workplace), m_main(mainWindow), m_front(mainWindow), m_scenario(scenario) {
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, &Technician::next);
    qApp->installEventFilter(this);
}

void Technician::note(const QString& text) const {
    world::note([&text] { return text.toStdString(); });
}

bool Technician::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::Polish && !m_scenario.paints) {
        // Painting takes most of a session's processor time, and nobody looks.
        if (auto* const window = qobject_cast<QWidget*>(object); window != nullptr && window->isWindow())
            window->setUpdatesEnabled(false);
    }
    // A busy bar moves sixty times a second for a spectator. Else it stands still, as in a hidden window.
    if (event->type() == QEvent::StyleAnimationUpdate)
        return QGuiApplication::platformName() == QLatin1String("offscreen");
    if (event->type() == QEvent::Show) {
        if (const auto* const box = qobject_cast<QMessageBox*>(object)) {
            m_boxes.append(box->text());
            note(QStringLiteral("box: ") + box->text());
            if (m_boxHandler)
                m_boxHandler(box->text());
        }
    }
    return false;
}

void Technician::start() {
    const auto pause = m_scenario.steps.empty() ? 0 : m_scenario.steps.front().pauseMs;
    m_timer.start(static_cast<int>(pause));
}

void Technician::next() {
    if (m_check)
        m_check();
    const bool last = m_next >= m_scenario.steps.size();
    if (last) {
        if (answerDialog({StepKind::press, 0, 0, noFile}) || QApplication::activeModalWidget() != nullptr ||
            m_reopeningTries > 0) {
            m_timer.start(afterwardsMs);
            return;
        }
        if (!m_done) {
            m_done = true;
            emit done();
        }
        m_timer.start(afterwardsMs);
        return;
    }
    const Step step = m_scenario.steps[m_next++];
    // Before the step, which may run an event loop of its own.
    m_timer.start(m_next < m_scenario.steps.size() ? static_cast<int>(m_scenario.steps[m_next].pauseMs)
                                                   : afterwardsMs);
    world::note([&step] { return "-- " + toText(step); });
    perform(step);
}

void Technician::perform(const Step& step) {
    if ((infoOf(step.kind).fault && step.kind != StepKind::replug) || step.kind == StepKind::plug) {
        m_workplace.perform(step);
        return;
    }
    if (step.kind == StepKind::wait || answerDialog(step))
        return;
    if (QApplication::activeModalWidget() != nullptr || m_main == nullptr || !m_main->isVisible())
        return;
    switch (step.kind) {
    case StepKind::link:
        pressLink();
        break;
    case StepKind::press:
        press(step);
        break;
    case StepKind::menu:
        chooseMenu(step);
        break;
    case StepKind::type:
        type(step);
        break;
    case StepKind::row:
        chooseRow(step);
        break;
    case StepKind::front:
        turnToFront(step);
        break;
    case StepKind::close:
        closeFront();
        break;
    case StepKind::capture:
        pressNamed(*m_main, "btn_takepic");
        break;
    case StepKind::upload:
        upload(step);
        break;
    case StepKind::port:
        choosePort(step);
        break;
    case StepKind::aid:
        chooseAid(step);
        break;
    case StepKind::use:
        use(step);
        break;
    case StepKind::status:
        pressInStatusBar(step);
        break;
    case StepKind::drag:
        drag(step);
        break;
    case StepKind::replug:
        replug(step);
        break;
    case StepKind::closeProgram:
        note(QStringLiteral("closes the main window"));
        m_main->close();
        break;
    default:
        break;
    }
}

// --- windows -----------------------------------------------------------------------------------------------

/// The main window first, the others in the order of their opening.
QList<QWidget*> Technician::windows() const {
    QList<QWidget*> open{m_main};
    for (QObject* const child : m_main->children()) {
        auto* const window = qobject_cast<QWidget*>(child);
        if (window != nullptr && window->isWindow() && window->isVisible() &&
            window->windowType() == Qt::Window)
            open.append(window);
    }
    for (ImgDialog* const view : m_main->findChildren<ImgDialog*>()) {
        if (view->isVisible())
            open.append(view);
    }
    return open;
}

QWidget* Technician::frontWindow() const {
    return m_front != nullptr && m_front->isVisible() ? m_front.data() : m_main.data();
}

void Technician::pressLink() {
    note(QStringLiteral("presses btn_open"));
    const bool openBefore = named(*m_main, "btn_open")->text() == QStringLiteral("关闭串口");
    const qsizetype boxesBefore = m_boxes.size();
    const world::Time before = world::now();
    const QPointer<Technician> self(this);
    named(*m_main, "btn_open")->click();
    const bool asked = self == nullptr || m_boxes.size() != boxesBefore;
    if (!asked && openBefore && m_linkHandler)
        m_linkHandler(world::now() - before);
}

void Technician::press(const Step& step) {
    QWidget* const window = frontWindow();
    QList<QAbstractButton*> buttons = usable<QAbstractButton>(*window);
    buttons.removeIf([](const QAbstractButton* each) {
        return each->objectName() == QLatin1String("btn_open") ||
               each->objectName() == QLatin1String("btn_more") ||
               each->objectName() == QLatin1String("btn_print") || // asks the system for its printers
               each->objectName().startsWith(QLatin1String("qt_"));
    });
    QAbstractButton* const button = chosen(buttons, step.choice);
    if (button == nullptr || button->testAttribute(Qt::WA_TransparentForMouseEvents))
        return;
    if (button->objectName() == QLatin1String("btn_download_all")) {
        pressDownload(*window);
        return;
    }
    note(QStringLiteral("presses ") + button->objectName());
    button->click();
}

void Technician::chooseMenu(const Step& step) {
    QList<QAction*> entries = menuEntries(*m_main);
    entries.removeIf([](const QAction* entry) { return !entry->isEnabled(); });
    constexpr qsizetype mostWindows = 6;
    if (QAction* const entry = chosen(entries, step.choice);
        entry != nullptr && windows().size() <= mostWindows) {
        note(QStringLiteral("chooses ") + entry->objectName());
        triggerAndFollow(*entry);
    }
}

void Technician::triggerAndFollow(QAction& entry) {
    const QList<QWidget*> before = windows();
    const QPointer<Technician> self(this);
    entry.trigger();
    if (self == nullptr || m_main == nullptr)
        return;
    for (QWidget* const window : windows()) {
        if (!before.contains(window))
            m_front = window;
    }
}

void Technician::type(const Step& step) {
    QWidget* const window = frontWindow();
    const QString& text = typedText(step.detail);
    QList<QWidget*> fields;
    for (QLineEdit* const edit : usable<QLineEdit>(*window))
        fields.append(edit);
    for (QSpinBox* const spin : usable<QSpinBox>(*window))
        fields.append(spin);
    if (window != m_main) {
        for (QComboBox* const box : usable<QComboBox>(*window))
            fields.append(box);
    }
    QWidget* const field = chosen(fields, step.choice);
    if (field != nullptr)
        note(QStringLiteral("types into ") + field->objectName());
    if (auto* const edit = qobject_cast<QLineEdit*>(field))
        edit->setText(text);
    else if (auto* const spin = qobject_cast<QSpinBox*>(field))
        spin->setValue(text.toInt());
    else if (auto* const box = qobject_cast<QComboBox*>(field))
        box->setCurrentIndex(box->count() > 0 ? static_cast<int>(step.detail) % box->count() : -1);
}

void Technician::chooseRow(const Step& step) {
    for (QWidget* const window : windows()) {
        auto* const list = named<QListView>(*window, "listview");
        if (list == nullptr || !window->isEnabled() || !list->isEnabled() || list->model()->rowCount() == 0)
            continue;
        const int row = static_cast<int>(step.choice) % list->model()->rowCount();
        const QModelIndex index = list->model()->index(row, 0);
        list->setCurrentIndex(index);
        emit list->customContextMenuRequested(list->visualRect(index).center());
        for (QMenu* const menu : window->findChildren<QMenu*>()) {
            if (!menu->isVisible())
                continue;
            QAction* const entry = chosen(menu->actions(), step.detail);
            if (entry != nullptr) {
                note(QStringLiteral("row %1: ").arg(row) + entry->text());
                entry->trigger();
            }
            menu->close();
        }
        return;
    }
}

void Technician::turnToFront(const Step& step) {
    m_front = chosen(windows(), step.choice);
}

void Technician::closeFront() {
    QWidget* const window = frontWindow();
    if (window != m_main) {
        note(QStringLiteral("closes ") + QLatin1String(window->metaObject()->className()));
        window->close();
    }
}

// --- the main window ---------------------------------------------------------------------------------------

void Technician::upload(const Step& step) {
    static constexpr std::array<std::array<const char*, 3>, 3> uploads{
        {{"btn_apppath", "label_apppath", "btn_appupdate"},
         {"btn_firewarepath", "label_firewarepath", "btn_firewareupdate"},
         {"btn_modelpath", "label_modelpath", "btn_modelupdate"}}};
    const auto& [path, label, start] = uploads.at(step.choice % uploads.size());
    auto* const choose = named(*m_main, path);
    if (!choose->isEnabled())
        return;
    const bool chosenBefore = !named<QLabel>(*m_main, label)->text().isEmpty();
    if (!chosenBefore || step.detail % 4 == 0) {
        // The dialog runs an event loop of its own: this answers it.
        QTimer answer;
        connect(&answer, &QTimer::timeout, this, [this, &step] {
            answerDialog({step.kind, step.detail / 4, 0, 0});
        });
        answer.start(20);
        const QPointer<Technician> self(this);
        choose->click();
        if (self == nullptr || m_main == nullptr || QApplication::activeModalWidget() != nullptr)
            return;
    }
    constexpr std::uint32_t addressOneOf = 6;
    constexpr std::uint32_t longestMs = 6000;
    if (step.detail / 4 % addressOneOf == 0) {
        QTimer::singleShot(static_cast<int>(step.choice * addressOneOf % longestMs), this,
                           [this, address = step.detail % 256] { changeAddress(static_cast<int>(address)); });
    }
    note(QStringLiteral("presses ") + QLatin1String(start));
    named(*m_main, start)->click();
}

void Technician::changeAddress(int address) {
    if (m_main == nullptr || !m_main->isVisible() || QApplication::activeModalWidget() != nullptr)
        return;
    note(QStringLiteral("changes the address"));
    named<QAction>(*m_main, "actionaddress")->trigger();
    for (QWidget* const window : windows()) {
        if (auto* const field = named<QSpinBox>(*window, "hex_sb")) {
            field->setValue(address);
            pressNamed(*window, "btn_confirm");
            return;
        }
    }
}

void Technician::choosePort(const Step& step) {
    auto* const box = named<QComboBox>(*m_main, step.choice % 2 == 0 ? "sel_ports" : "sel_baund");
    if (!box->isEnabled() || box->count() == 0)
        return;
    if (step.choice % 2 == 0) {
        box->showPopup(); // fills the list anew
        box->hidePopup();
    }
    if (box->count() > 0)
        box->setCurrentIndex(static_cast<int>(step.detail) % box->count());
    note(QStringLiteral("chooses ") + box->currentText());
}

} // namespace simulation
