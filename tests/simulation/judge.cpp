#include "tests/simulation/judge.h"

#include "aids/camerafinderwindow.h"
#include "aids/checkupwindow.h"
#include "aids/linewatch.h"
#include "link/protocol/exchangetable.h"
#include "link/protocol/frame.h"
#include "pictures/picturelistwindow.h"
#include "tests/support/windowactions.h"

#include <QComboBox>
#include <QFileInfo>
#include <QLabel>
#include <QMainWindow>
#include <QPixmapCache>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QStatusBar>
#include <QTableWidget>

#include <algorithm>
#include <filesystem>
#include <malloc.h>
#include <sstream>
#include <thread>

using namespace std::chrono_literals;
using protocol::Bytes;
using protocol::ByteView;
using protocol::code;
using protocol::Command;

namespace simulation {

namespace {

constexpr world::Time closingWork = 50ms; // of the window itself
/// Work of the window itself, and short exchanges of others.
constexpr world::Time othersTime = 2s;
constexpr int endlessReads = 50;
constexpr std::size_t allowedGrowth = 1'500'000; // bytes

/// Reads for one answer, negative: no limit; time of the whole exchange.
struct Limits {
    int reads = 0;
    world::Time time{0};
};

constexpr Limits shifted{-1, 60s}; // a picture command with the technician's offset, which may be any code

/// Codes that the callers of the general property commands give.
bool isCallersCode(std::uint8_t requestCode) {
    return requestCode == code(Command::getProperty) || requestCode == code(Command::setProperty) ||
           requestCode == code(Command::gyroTest) || requestCode == code(Command::getInfo);
}

/// Of the slowest row with this code.
Limits limitsOf(std::uint8_t requestCode, bool json) {
    constexpr std::uint32_t keptTimeoutMs = 1000;
    Limits limits;
    bool known = false;
    for (const protocol::ExchangeRule* const row : protocol::rules::all) {
        const protocol::ExchangeRule& rule = *row;
        const bool callers = rule.command == Command::callers;
        const bool same =
            json ? rule.command == Command::json
                 : callers || (rule.command != Command::json && code(rule.command) == requestCode);
        if (!same)
            continue;
        known = known || !callers || isCallersCode(requestCode);
        if (rule.reading == protocol::Reading::blocks)
            return shifted;
        const auto timeout = std::chrono::milliseconds(rule.timeoutMs.value_or(keptTimeoutMs));
        limits.reads = std::max(limits.reads, rule.tries);
        limits.time = std::max<world::Time>(
            limits.time, timeout * rule.tries + std::chrono::milliseconds(rule.pauseAfterWriteMs));
    }
    return known ? limits : shifted;
}

bool isUpload(std::uint8_t requestCode) {
    return requestCode == code(Command::appAnnounce) || requestCode == code(Command::firewareAnnounce) ||
           requestCode == code(Command::modelAnnounce);
}

std::size_t openDescriptors() {
    const auto all = std::filesystem::directory_iterator("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

/// Compares a line of a label with its head and one of these texts.
bool isHeard(const QString& line, const QString& head, const std::vector<std::string>& texts) {
    constexpr qsizetype longestLine = 120; // longer ones are cut
    return std::any_of(texts.begin(), texts.end(), [&](const std::string& text) {
        const QString whole = head + QString::fromUtf8(text.c_str()).section(QLatin1Char('\n'), 0, 0);
        return line == whole || (line.size() == longestLine && whole.startsWith(line.chopped(1)));
    });
}

QString labelText(const QWidget& window, const char* name) {
    const auto* const label = window.findChild<QLabel*>(QLatin1String(name));
    return label == nullptr ? QString() : label->text();
}

} // namespace

Judge::Judge(Workplace& workplace, const Resources& before)
    : m_workplace(workplace),
      m_answers([&workplace](const Bytes& digest) { return workplace.fileWith(digest); }), m_before(before) {
    observeLibrary();
    world::onStandstill([this](world::Time duration) {
        const world::Time limit = m_ownRequests + std::max(m_othersRequest, othersTime);
        require(duration <= limit,
                "O3: the windows stood still for " + std::to_string(duration / 1ms) + " ms");
        m_ownRequests = 0s;
        m_othersRequest = m_othersLast;
    });
}

void Judge::observeLibrary() {
    emulator::setCallObserver([this](const std::string& port, const std::string& call) {
        world::note([&] { return port + ' ' + call; });
        libraryCalled(port, call);
        world::preempt();
    });
    emulator::setWriteObserver([this](const std::string& port, const Bytes& bytes) {
        const std::string wrong = m_answers.writes(port, bytes, pictureOffset());
        require(wrong.empty(), "O2: " + wrong);
    });
    emulator::setReadObserver([this](const std::string& port, const Bytes& bytes) {
        m_closing.ended(port);
        m_protocolJudge.received(port, bytes);
        m_answers.received(bytes);
    });
    emulator::setFailureObserver([this](const std::string& port) {
        m_protocolJudge.failed(port);
        m_answers.failed();
    });
}

Judge::~Judge() {
    emulator::setCallObserver({});
    emulator::setWriteObserver({});
    emulator::setReadObserver({});
    emulator::setFailureObserver({});
    world::onStandstill({});
}

void Judge::require(bool holds, const std::string& complaint) {
    if (holds)
        return;
    world::note([&complaint] { return "BROKEN " + complaint; });
    if (std::find(m_complaints.begin(), m_complaints.end(), complaint) == m_complaints.end())
        m_complaints.push_back(complaint);
}

void Judge::watch(QWidget* mainWindow) {
    m_window = mainWindow;
    m_lineWatch = mainWindow->findChild<LineWatch*>();
    m_openButton = guitest::find<QPushButton>(*mainWindow, "btn_open");
    m_linkLabel = guitest::find<QLabel>(*mainWindow, "label_link");
    m_lamp = guitest::find<QRadioButton>(*mainWindow, "rb_heartbeat");
    for (const char* const name : guitest::exchangeControls)
        m_exchangeControls.push_back(guitest::find<QWidget>(*mainWindow, name));
    auto* const bar = qobject_cast<QMainWindow*>(mainWindow)->statusBar();
    QObject::connect(bar, &QStatusBar::messageChanged, bar,
                     [this](const QString& text) { statusShown(text); });
}

// --- the line ----------------------------------------------------------------------------------------------

void Judge::clientSaid(const std::string& line) {
    m_protocolJudge.logged(line);
    const std::string wrong = m_answers.said(line);
    require(wrong.empty(), "O6: " + wrong);
    if (line.find("download ended") != std::string::npos)
        m_protocolJudge.forgivePresentBreaks();
}

void Judge::libraryCalled(const std::string& port, const std::string& call) {
    require(port != Workplace::filePort, "O4: a file is opened as a port");
    if (call.starts_with("open "))
        m_answers.jobEnded();
    m_closing.called(port, call);
    if (pictureOffset() != 0) // the status bar may have been held when it came
        m_pictureOffset = true;
    m_protocolJudge.setPictureOffset(port, pictureOffset());
    const std::string wrong = m_protocolJudge.called(port, call, world::now());
    require(wrong.empty(), "O3: " + wrong);
    Exchange& exchange = m_exchanges[port];
    if (call.starts_with("write ")) {
        require(!m_silent || world::threadNumber() != 0, "O2: an action sends that should not");
        const Bytes head = headOf(call);
        const bool frame = isFrameHead(head);
        const bool json = isJsonHead(head); // whatever camera there is
        if (!frame && !json)
            return; // data of an upload
        exchange = {};
        exchange.code = frame ? ByteView(head).get(protocol::frame_layout::command) : std::uint8_t{0};
        const Limits limits = m_pictureOffset ? shifted : limitsOf(exchange.code, json);
        exchange.mostReads =
            limits.reads + (isUpload(exchange.code) ? protocol::rules::modelVerdictTries : 0);
        if (limits.reads < 0)
            exchange.mostReads = -1;
        const world::Time longest = json ? limitsOf(code(Command::getProperty), false).time : limits.time;
        if (world::threadNumber() == 0) // JSON pictures are never read there
            m_ownRequests += longest;
        else
            m_othersLast = longest;
        m_othersRequest = std::max(m_othersRequest, m_othersLast);
    } else if (call.starts_with("read ")) {
        const std::string wrongRead = m_answers.reads(port);
        require(wrongRead.empty(), wrongRead);
        ++exchange.reads;
        // The window that views a picture waits for all of its bytes.
        if (exchange.mostReads < 0 && exchange.reads == endlessReads && world::threadNumber() == 0) {
            lostPatience();
            m_workplace.pull(port);
        }
        require(exchange.mostReads < 0 || exchange.reads <= exchange.mostReads,
                "O3: more reads than tries for command " + std::to_string(exchange.code));
    } else {
        m_answers.prepares();
    }
}

/// The window gave this offset to the client last.
std::uint8_t Judge::pictureOffset() const {
    return m_lineWatch != nullptr && m_lineWatch->log() != nullptr ? m_lineWatch->log()->head.pictureOffset
                                                                   : std::uint8_t{0};
}

std::size_t Judge::heard(std::uint8_t requestCode, bool json) {
    std::size_t count = 0;
    for (const emulator::ReceivedFrame& frame : m_workplace.camera().record().frames)
        count += frame.wellFormed && frame.heard && frame.json == json && (json || frame.code == requestCode)
                     ? 1
                     : 0;
    return count;
}

// --- link and controls -------------------------------------------------------------------------------------

bool Judge::isLinkOpen() const {
    return m_openButton->text() == QStringLiteral("关闭串口");
}

void Judge::checkLinkText() {
    const QString text = m_linkLabel->text();
    const bool open = isLinkOpen();
    // A search opens ports of its own while there is no link.
    require(!open || emulator::openMemoryPorts() > 0, "O6: a link without a port");
    require((text == QStringLiteral("串口未打开")) == !open,
            "O6: the link text says " + text.toStdString() + (open ? " of an open port" : " of no port"));
}

void Judge::linkClosed(world::Time duration) {
    const world::Time longest = m_closing.longest(world::now() - duration) + closingWork;
    require(duration <= longest, "O3: closing took " + std::to_string(duration / 1ms) +
                                     " ms, and no call of the "
                                     "library lasted longer than " +
                                     std::to_string(longest / 1ms) + " ms");
    require(emulator::openMemoryPorts(std::this_thread::get_id()) == 0, "O4: a port is open after closing");
    m_brokenOff = m_brokenOff || m_resultDue;
    m_resultDue = false;
    m_answers.forgetUpload();
}

/// A download reads until all its bytes have come, which a good line and a camera that does not restart send
/// after a picture command that it knows, of a picture that it has.
void Judge::lostPatience() {
    const bool uploaded =
        !m_workplace.camera().record().uploads.empty() || heard(code(Command::appV1Packet)) > 0;
    require(restartsByCommand() || uploaded || !isCameraLinked() || m_pictureOffset || !hasWantedPicture() ||
                m_workplace.disturbances().any(),
            "O3: a job never ends");
}

/// The last picture that was asked for is on the camera: another list window may have deleted it.
bool Judge::hasWantedPicture() {
    const auto& frames = m_workplace.camera().record().frames;
    const auto last = std::find_if(frames.rbegin(), frames.rend(), [](const auto& frame) {
        return frame.code == code(Command::originRead) || frame.code == code(Command::readV1);
    });
    if (last == frames.rend() || last->payload.empty())
        return true;
    const auto& pictures = m_workplace.camera().state().pictures;
    return std::any_of(pictures.begin(), pictures.end(), [&last](const emulator::Picture& picture) {
        return (picture.info.id & 0xFFU) == last->payload.front();
    });
}

bool Judge::restartsByCommand() {
    return heard(code(Command::reboot)) + heard(code(Command::resetToFactory)) > 0;
}

/// By port and rate.
bool Judge::isCameraLinked() const {
    const QStringList link = m_linkLabel->text().split(QChar(u'，'));
    const auto& ports = m_workplace.portNames();
    const auto rate = protocol::infoOf(m_workplace.camera().settings().type).baudRate;
    return link.size() > 1 &&
           std::find(ports.begin(), ports.end(), link.at(0).toStdString()) != ports.end() &&
           link.at(1) == QString::number(rate);
}

void Judge::checkStep() {
    if (m_window == nullptr || !m_window->isVisible())
        return;
    checkLinkText();
    checkLamp();
    checkLists();
    if (m_statusText.startsWith(QStringLiteral("正在升级"))) {
        for (const QWidget* const control : m_exchangeControls) {
            if (control->isEnabled())
                require(false, "O5: during an upload " + control->objectName().toStdString() + " is enabled");
        }
    }
}

void Judge::checkControls() {
    const bool open = isLinkOpen();
    const auto enabled = [this](const char* name) {
        return m_window->findChild<QWidget*>(QLatin1String(name))->isEnabled();
    };
    require(enabled("btn_open"), "O5: btn_open is disabled");
    for (const char* const name : {"sel_ports", "sel_baund"})
        require(enabled(name) == !open, std::string("O5: ") + name + (open ? " is enabled" : " is disabled"));
    for (const char* const name : guitest::exchangeControls) {
        const std::string_view view(name);
        const bool always = view == "btn_modelupdate" || view == "btn_gyro";
        const bool pressed = m_pressedWithoutFile && view.ends_with("update");
        if (!pressed)
            require(enabled(name) == (open || always),
                    std::string("O5: ") + name + (enabled(name) ? " is enabled" : " is disabled"));
    }
    for (const QAction* const entry : m_window->findChildren<QAction*>()) {
        if (entry->property("exchanges").toBool())
            require(entry->isEnabled(), "O5: disabled entry " + entry->objectName().toStdString());
    }
}

// --- values ------------------------------------------------------------------------------------------------

/// Each value came in a good answer to its question, whatever happens to the line, or is missing.
void Judge::checkHeardValues() {
    static const std::vector<std::pair<QString, std::uint8_t>> heads = {
        {QStringLiteral("SDK版本:"), 0x02},
        {QStringLiteral("系统版本:"), 0x15},
        {QStringLiteral("QV-APP版本:"), 0xD4},
        {QStringLiteral("模型信息:"), 0xCC},
        {QStringLiteral("当前序列号:  "), 0x03}};
    for (const QLabel* const label : m_window->findChildren<QLabel*>()) {
        for (const auto& [head, property] : heads) {
            const qsizetype at = label->text().indexOf(head);
            if (at < 0)
                continue;
            const QString line = label->text().mid(at).section(QLatin1Char('\n'), 0, 0);
            const bool heard = line == head || isHeard(line, head, m_answers.values(property));
            require(heard, "O2: shows " + line.toStdString() + ", which no camera has sent");
        }
    }
}

/// Each value is the camera's own for this question, or missing.
void Judge::checkValues() {
    checkHeardValues();
    const Disturbances& disturbed = m_workplace.disturbances();
    if (disturbed.toTool || disturbed.late || disturbed.camera)
        return;
    const emulator::CameraState& state = m_workplace.camera().state();
    const std::map<QString, std::string> own = {{QStringLiteral("SDK版本:"), state.appVersion},
                                                {QStringLiteral("系统版本:"), state.systemVersion},
                                                {QStringLiteral("QV-APP版本:"), state.qvVersion},
                                                {QStringLiteral("模型信息:"), state.modelInfo}};
    for (const char* const label : {"tv_appversion", "label_modelinfo"}) {
        for (const QString& line : labelText(*m_window, label).split(QLatin1Char('\n'))) {
            for (const auto& [head, value] : own) {
                if (line.startsWith(head))
                    require(line == head || line == head + QString::fromStdString(value),
                            "O2: shows " + line.toStdString());
            }
        }
    }
}

// --- aids --------------------------------------------------------------------------------------------------

void Judge::cameraUsed(const QStringList& camera) {
    if (m_workplace.disturbances().adapter)
        return; // its port may be gone
    const QString text = m_linkLabel->text();
    require(text == QStringLiteral("%1，%2，从机地址 %3").arg(camera.at(0), camera.at(1), camera.at(2)),
            "O6: after the choice of a found camera the link is " + text.toStdString());
}

void Judge::checkAids() {
    const auto enabled = [](const QWidget* window, const char* name) {
        return window->findChild<QWidget*>(QLatin1String(name))->isEnabled();
    };
    const auto atRest = [&](const QWidget* window, const std::string& what) {
        require(enabled(window, "btn_start"), "O5: " + what + " cannot begin");
        require(!enabled(window, "btn_stop"), "O5: " + what + " can be stopped, but none runs");
    };
    for (const CameraFinderWindow* const finder : m_window->findChildren<CameraFinderWindow*>()) {
        atRest(finder, "a search");
        require(!labelText(*finder, "label_state").startsWith(QStringLiteral("已试")),
                "O6: an endless search");
        const auto* const table = finder->findChild<QTableWidget*>(QStringLiteral("table_found"));
        const auto& ports = m_workplace.portNames();
        for (int row = 0; row < table->rowCount(); ++row) {
            const std::string port = table->item(row, 0)->text().toStdString();
            require(std::find(ports.begin(), ports.end(), port) != ports.end(),
                    "O6: a camera was found at " + port);
        }
    }
    for (const CheckupWindow* const checkup : m_window->findChildren<CheckupWindow*>()) {
        atRest(checkup, "a check-up");
        require(labelText(*checkup, "label_verdict") != QStringLiteral("正在检查…"),
                "O6: an endless check-up");
    }
    for (const PictureListWindow* const list : m_window->findChildren<PictureListWindow*>()) {
        require(guitest::text(*list, "btn_download_all") == QStringLiteral("下载全部"),
                "O6: a list downloads, but no job runs");
        checkDownloads(*list);
    }
}

// --- quiet and end -----------------------------------------------------------------------------------------

void Judge::checkQuiet() {
    if (m_window != nullptr && m_window->isVisible()) {
        checkLinkText();
        checkControls();
        checkValues();
        checkAids();
    }
    checkUploadedBytes();
    checkFiles();
}

void Judge::checkEnd() {
    m_window = nullptr;
    m_lineWatch = nullptr;
    require(emulator::openMemoryPorts() == 0, "O4: a port is open after the end");
    Resources after = resources();
    if (after.allocated > m_before.allocated + allowedGrowth) {
        QPixmapCache::clear(); // it has a limit of its own
        after = resources();
    }
    require(after.threads == m_before.threads,
            "O8: " + std::to_string(after.threads) + " threads, before " + std::to_string(m_before.threads));
    require(after.descriptors == m_before.descriptors, "O8: " + std::to_string(after.descriptors) +
                                                           " descriptors, before " +
                                                           std::to_string(m_before.descriptors));
    require(after.allocated <= m_before.allocated + allowedGrowth,
            "O8: memory grew by " + std::to_string((after.allocated - m_before.allocated) / 1000) + " kB");
}

Judge::Resources Judge::resources() {
    return {openDescriptors(), ::mallinfo2().uordblks, world::threadCount()};
}

} // namespace simulation
