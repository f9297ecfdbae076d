// The technician's steps in the windows of the aids, in lists and pictures, with files and the adapter.
#include "aids/camerafinderwindow.h"
#include "aids/checkupwindow.h"
#include "aids/linerecordwindow.h"
#include "pictures/imgdialog.h"
#include "pictures/picturelistwindow.h"
#include "tests/simulation/choice.h"
#include "tests/simulation/technician.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDragEnterEvent>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QMainWindow>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QStatusBar>
#include <QTableView>
#include <QTableWidget>
#include <QUrl>
#include <QWheelEvent>

#include <algorithm>
#include <array>

namespace simulation {

namespace {

constexpr int reopeningTries = 12;
constexpr int reopeningPauseMs = 500;

void check(QListWidget& list, const std::function<bool(int row)>& checked) {
    for (int row = 0; row < list.count(); ++row)
        list.item(row)->setCheckState(checked(row) ? Qt::Checked : Qt::Unchecked);
}

bool isDownloading(const QWidget& list) {
    return named(list, "btn_download_all")->text() == QStringLiteral("停止下载");
}

QPushButton* moreButton(const QWidget& mainWindow) {
    return named<QPushButton>(mainWindow, "btn_more");
}

} // namespace

QList<QAction*> aidEntries(const QWidget& mainWindow) {
    QList<QAction*> entries = named<QMenu>(*moreButton(mainWindow), "menu_more")->actions();
    // It starts a program.
    entries.removeIf(
        [](const QAction* entry) { return entry->objectName() == QLatin1String("actionManual"); });
    return entries;
}

void Technician::silently(const std::function<void()>& action) {
    const QPointer<Technician> self(this);
    if (m_silenceHandler)
        m_silenceHandler(true);
    action();
    if (self != nullptr && m_silenceHandler)
        m_silenceHandler(false);
}

void Technician::pressNamed(const QWidget& window, const char* name) {
    auto* const button = named(window, name);
    if (button == nullptr || !button->isVisible() || !button->isEnabled())
        return;
    note(QStringLiteral("presses ") + QLatin1String(name));
    button->click();
}

void Technician::chooseAid(const Step& step) {
    moreButton(*m_main)->click();
    QAction* const entry = chosen(aidEntries(*m_main), step.choice);
    named<QMenu>(*moreButton(*m_main), "menu_more")->close();
    note(QStringLiteral("chooses ") + entry->objectName());
    triggerAndFollow(*entry);
}

/// Opens the first, and now and then one more.
void Technician::use(const Step& step) {
    using Use = void (Technician::*)(QWidget&, std::uint32_t);
    std::vector<std::pair<QWidget*, Use>> found;
    for (QWidget* const window : windows()) {
        if (!window->isEnabled())
            continue;
        if (qobject_cast<CameraFinderWindow*>(window) != nullptr)
            found.emplace_back(window, &Technician::useFinder);
        else if (qobject_cast<CheckupWindow*>(window) != nullptr)
            found.emplace_back(window, &Technician::useCheckup);
        else if (qobject_cast<LineRecordWindow*>(window) != nullptr)
            found.emplace_back(window, &Technician::useLineRecord);
        else if (qobject_cast<PictureListWindow*>(window) != nullptr)
            found.emplace_back(window, &Technician::useList);
        else if (qobject_cast<ImgDialog*>(window) != nullptr)
            found.emplace_back(window, &Technician::usePictureView);
    }
    constexpr std::uint32_t moreOneOf = 5;
    if (found.empty() || step.choice % moreOneOf == 0) {
        openOneMore(step.detail);
        return;
    }
    const auto [window, action] = found.at(step.choice / moreOneOf % found.size());
    m_front = window;
    (this->*action)(*window, step.detail);
}

/// An aid, or one list of pictures, mostly that of the camera's type.
void Technician::openOneMore(std::uint32_t choice) {
    const bool listOpen = m_main->findChild<PictureListWindow*>() != nullptr;
    const bool v1 = protocol::infoOf(m_scenario.type).pictures == protocol::PictureCommands::v1;
    const bool other = choice / 2 % 8 == 0;
    auto* const list = named<QAction>(*m_main, v1 != other ? "actionPicInfoV1" : "actionPicInfo");
    if (choice % 2 == 0 && !listOpen && list->isEnabled()) {
        note(QStringLiteral("chooses ") + list->objectName());
        triggerAndFollow(*list);
    } else {
        chooseAid({StepKind::aid, 0, choice / 2, 0});
    }
}

// --- search ------------------------------------------------------------------------------------------------

void Technician::useFinder(QWidget& finder, std::uint32_t action) {
    switch (action % 8) {
    case 0:
        pressNamed(finder, "btn_stop");
        break;
    case 1:
    case 2:
    case 3:
        useFound(finder, action / 8);
        break;
    default:
        startSearch(finder, action / 8);
        break;
    }
}

/// Of one rate or two and mostly the usual addresses: all of them last for many minutes.
void Technician::startSearch(const QWidget& finder, std::uint32_t choice) {
    if (!named(finder, "btn_start")->isEnabled())
        return;
    auto& rates = *named<QListWidget>(finder, "list_rates");
    const int one = static_cast<int>(choice) % rates.count();
    check(rates, [one, two = choice % 3 == 0](int row) { return row == one || (row == 0 && two); });
    auto& ports = *named<QListWidget>(finder, "list_ports");
    check(ports,
          [choice](int row) { return row == 0 || (choice / 4 + static_cast<unsigned>(row)) % 3 != 0; });
    constexpr std::uint32_t allOneOf = 16;
    named(finder, choice % allOneOf == 1 ? "rb_all" : "rb_usual")->click();
    pressNamed(finder, "btn_start");
}

void Technician::useFound(QWidget& finder, std::uint32_t choice) {
    auto& table = *named<QTableWidget>(finder, "table_found");
    if (table.rowCount() == 0)
        return;
    const int row = static_cast<int>(choice) % table.rowCount();
    table.selectRow(row);
    const QStringList camera{table.item(row, 0)->text(), table.item(row, 1)->text(),
                             table.item(row, 2)->text().section(QChar(u'（'), 0, 0)};
    const qsizetype boxesBefore = m_boxes.size();
    const QPointer<Technician> self(this);
    pressNamed(finder, "btn_use");
    if (self != nullptr && m_boxes.size() == boxesBefore && m_usedHandler)
        m_usedHandler(camera);
}

void Technician::stopLongJobs() {
    if (m_main == nullptr)
        return;
    for (const CameraFinderWindow* const finder : m_main->findChildren<CameraFinderWindow*>())
        pressNamed(*finder, "btn_stop");
    for (const PictureListWindow* const list : m_main->findChildren<PictureListWindow*>()) {
        if (isDownloading(*list))
            pressDownload(*list);
    }
}

// --- check-up and record -----------------------------------------------------------------------------------

void Technician::useCheckup(QWidget& checkup, std::uint32_t action) {
    static constexpr std::array<const char*, 8> buttons{
        "btn_start", "btn_start", "btn_start", "btn_stop", "btn_copy", "btn_save", "btn_save_visit", nullptr};
    const char* const button = buttons.at(action % buttons.size());
    const std::uint32_t choice = action / static_cast<std::uint32_t>(buttons.size());
    if (button == nullptr) {
        auto& visit = *named<QTableWidget>(checkup, "table_visit");
        if (visit.isEnabled() && visit.rowCount() > 0)
            silently([&] { visit.selectRow(static_cast<int>(choice) % visit.rowCount()); });
        return;
    }
    auto* const picture = named<QCheckBox>(checkup, "cb_picture");
    if (picture->isEnabled())
        picture->setChecked(choice % 2 == 0);
    pressNamed(checkup, button);
}

void Technician::useLineRecord(QWidget& record, std::uint32_t action) {
    static constexpr std::array<const char*, 8> buttons{"cb_odd",       "cb_follow",   "cb_blank",
                                                        "btn_copytext", "btn_copyhex", "btn_save",
                                                        "btn_openfile", "btn_live"};
    static const QStringList filters{QString(), QStringLiteral("01"), QStringLiteral("心跳"),
                                     QStringLiteral("图片"), QStringLiteral("没有")};
    const std::uint32_t choice = action / 16;
    silently([&] {
        if (action % 16 < 2) {
            named<QLineEdit>(record, "et_filter")->setText(filters.at(choice % filters.size()));
        } else if (action % 16 < 6) {
            auto& table = *named<QTableView>(record, "table");
            if (const int rows = table.model()->rowCount(); rows > 0)
                table.selectRow(static_cast<int>(choice) % rows);
        } else {
            pressNamed(record, buttons.at(action % buttons.size()));
        }
    });
}

// --- pictures ----------------------------------------------------------------------------------------------

void Technician::useList(QWidget& list, std::uint32_t action) {
    const auto* const pictures = named<QListView>(list, "listview")->model();
    if (pictures->rowCount() == 0)
        pressNamed(list, "btn_refresh"); // answers at once
    if (pictures->rowCount() == 0)
        return;
    constexpr std::uint32_t view = 1; // entry of the menu of a row
    switch (action % 4) {
    case 0:
        pressNamed(list, "btn_copy_list");
        break;
    case 1:
    case 2:
        chooseRow({StepKind::row, 0, action / 4, view});
        break;
    default:
        pressDownload(list);
        break;
    }
}

/// The button starts and stops.
void Technician::pressDownload(const QWidget& list) {
    const auto lists = m_main->findChildren<PictureListWindow*>();
    const auto downloading =
        std::count_if(lists.begin(), lists.end(), [](const QWidget* each) { return isDownloading(*each); });
    if (downloading == 1 && isDownloading(list) && m_stopHandler)
        m_stopHandler();
    pressNamed(list, "btn_download_all");
}

void Technician::usePictureView(QWidget& view, std::uint32_t action) {
    static constexpr std::array<const char*, 7> buttons{
        "btn_previous", "btn_next", "btn_zoom_in", "btn_zoom_out", "btn_fit", "btn_save_as", "btn_copy"};
    const std::uint32_t choice = action % (buttons.size() + 1);
    if (choice < 2) {
        pressNamed(view, buttons.at(choice)); // downloads another picture
    } else if (choice < buttons.size()) {
        silently([&] { pressNamed(view, buttons.at(choice)); });
    } else {
        note(QStringLiteral("turns the wheel"));
        const QPointF place(view.rect().center());
        QWheelEvent turn(place, view.mapToGlobal(place), {}, {0, action / 8 % 3 == 0 ? -120 : 120},
                         Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        silently([&] { QApplication::sendEvent(&view, &turn); });
    }
}

// --- the main window ---------------------------------------------------------------------------------------

void Technician::pressInStatusBar(const Step& step) {
    QList<QAbstractButton*> buttons =
        usable<QAbstractButton>(*qobject_cast<QMainWindow*>(m_main.data())->statusBar());
    buttons.removeIf(
        [](const QAbstractButton* each) { return each->objectName() == QLatin1String("btn_more"); });
    if (QAbstractButton* const button = chosen(buttons, step.choice)) {
        note(QStringLiteral("presses ") + button->objectName());
        button->click();
    }
}

void Technician::drag(const Step& step) {
    QMimeData data;
    QList<QUrl> files{QUrl::fromLocalFile(m_workplace.files().at(step.choice % m_workplace.files().size()))};
    if (step.detail % 8 == 0)
        files.append(files.first());
    if (step.detail % 8 == 1)
        data.setText(QStringLiteral("模型"));
    else
        data.setUrls(files);
    const QPoint place = m_main->rect().center();
    note(QStringLiteral("drags a file"));
    silently([&] {
        QDragEnterEvent enter(place, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(m_main, &enter);
        if (enter.isAccepted() && step.detail % 8 != 2) {
            QDropEvent drop(place, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(m_main, &drop);
        } else {
            QDragLeaveEvent leave;
            QApplication::sendEvent(m_main, &leave);
        }
    });
}

/// The tool notices the loss at the next command, and the return in its list of ports.
void Technician::replug(const Step& step) {
    if (m_reopeningTries > 0 || !m_workplace.line().isPresent())
        return;
    m_workplace.perform({StepKind::pull, 0, 0, 0});
    m_reopeningTries = reopeningTries;
    const auto afterMs = static_cast<int>(500 + step.detail % 3000);
    QTimer::singleShot(afterMs, this, [this, step] {
        m_workplace.perform({StepKind::plug, 0, step.choice, 0});
    });
    QTimer::singleShot(afterMs + reopeningPauseMs, this, &Technician::reopen);
    pressNamed(*m_main, "btn_heartbeat");
}

void Technician::reopen() {
    auto* const button = m_main == nullptr ? nullptr : named(*m_main, "btn_reopen");
    if (button != nullptr && button->isVisible() && QApplication::activeModalWidget() == nullptr) {
        m_reopeningTries = 0;
        pressNamed(*m_main, "btn_reopen");
    } else if (--m_reopeningTries > 0) {
        QTimer::singleShot(reopeningPauseMs, this, &Technician::reopen);
    }
}

} // namespace simulation
