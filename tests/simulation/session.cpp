#include "tests/simulation/session.h"

#include "app/mainwindow.h"
#include "dialogs/setcameraprotocol.h"
#include "link/diagnostics.h"
#include "pictures/piclist.h"
#include "service/report.h"
#include "tests/simulation/judge.h"
#include "tests/simulation/protocoljudge.h"
#include "tests/simulation/technician.h"
#include "tests/support/markdown.h"
#include "tests/support/systemfilechooser.h"
#include "tests/support/windowactions.h"

#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QFileDialog>
#include <QFontMetrics>
#include <QHash>
#include <QIcon>
#include <QMessageBox>
#include <QProxyStyle>
#include <QPushButton>
#include <QRandomGenerator>
#include <QSettings>
#include <QTemporaryDir>
#include <QThreadPool>

#include <functional>
#include <iostream>
#include <malloc.h>
#include <memory>
#include <sstream>
#include <sys/personality.h>
#include <unistd.h>

using namespace std::chrono_literals;

/// Goes before that of Qt, which asks the processor: random numbers come from the seed.
quint64 QRandomGenerator::_fillRange(void* buffer, qptrdiff count) {
    const auto number = [] { return static_cast<quint32>(world::draw(1ULL << 32U)); };
    if (buffer == nullptr)
        return count > 1 ? quint64{number()} << 32U | number() : number();
    std::generate_n(static_cast<quint32*>(buffer), count, number);
    return 0;
}

namespace simulation {

namespace {

constexpr auto settlingStep = 1s;
constexpr auto quietTime = 3s;             // in which a result that is on its way is shown
constexpr auto longestSettling = 10min;    // uploads of the second protocol, return waits
constexpr auto poolExpiry = 40s;           // idle pool threads end after 30 s
constexpr world::Time longestJob = 60s;    // then the technician stops it
constexpr world::Time patience = 150s;     // then the technician closes the link
constexpr world::Time jsonPatience = 280s; // the client waits 250 s for a piece of a picture

/// Pauses wait in place of polling the clock.
class SimulatedClock final : public Clock {
public:
    bool pause(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
               std::chrono::nanoseconds duration) override {
        return wait(lock, changed, duration);
    }
};

const char* typeButton(protocol::CameraType type) {
    switch (type) {
    case protocol::CameraType::ostra:
        return "rb_ost";
    case protocol::CameraType::dorvel:
        return "rb_dvl";
    case protocol::CameraType::salesStatic:
        return "rb_dx";
    case protocol::CameraType::quenta:
        return "rb_quenta";
    case protocol::CameraType::salesDynamic:
        return "rb_dx_dt";
    }
    return "";
}

/// Lines of the client and of the windows become part of the timeline.
class Lines final : public std::stringbuf {
public:
    Lines() : m_stream(this), m_previous(qInstallMessageHandler(&Lines::windowLine)) {
        diagnostics::setStream(m_stream);
    }
    ~Lines() override {
        diagnostics::setStream(std::cout);
        qInstallMessageHandler(m_previous);
    }
    Lines(const Lines&) = delete;
    Lines& operator=(const Lines&) = delete;

    void onClientLine(std::function<void(const std::string&)> function) {
        m_clientSaid = std::move(function);
    }

private:
    int sync() override {
        world::note([this] { return "log: " + str(); });
        if (m_clientSaid)
            m_clientSaid(str());
        str({});
        return 0;
    }
    static void windowLine(QtMsgType /*type*/, const QMessageLogContext& /*context*/, const QString& text) {
        // Each process has a folder of its own.
        const QString folder = QFileInfo(QDir::currentPath()).path() + QLatin1Char('/');
        world::note([&] { return "debug: " + QString(text).remove(folder).toStdString(); });
    }

    std::ostream m_stream;
    QtMessageHandler m_previous;
    std::function<void(const std::string&)> m_clientSaid;
};

void wait(world::Time duration) {
    QEventLoop loop;
    QTimer::singleShot(std::chrono::duration_cast<std::chrono::milliseconds>(duration), &loop,
                       &QEventLoop::quit);
    loop.exec();
}

/// A session's process copies each page that it writes. Takes all free pieces between those that are in use:
/// sessions then write to pages of their own at the end of the heap, which need no copy.
void fillHoles() {
    std::ignore = ::mallinfo2(); // joins the free pieces
    const auto end = reinterpret_cast<std::uintptr_t>(::sbrk(0)) - ::mallinfo2().keepcost;
    constexpr std::size_t largest = 64 * 1024;
    constexpr std::size_t granule = 16;
    for (std::size_t size = largest; size >= granule; size -= granule) {
        void* piece = std::malloc(size);
        while (reinterpret_cast<std::uintptr_t>(piece) < end)
            piece = std::malloc(size);
        std::free(piece);
    }
}

/// Window and clock of a session, made before the fork.
struct Prepared {
    Judge::Resources before;
    SimulatedClock clock;
    std::unique_ptr<MainWindow> window;
};

Prepared& prepared() {
    static Prepared instance;
    return instance;
}

class Session {
public:
    Session(const Scenario& scenario)
        : m_workplace(scenario), m_judge(m_workplace, prepared().before), m_scenario(scenario),
          m_window(std::move(prepared().window)) {
        world::setPreemption(scenario.preemption);
    }

    void run() {
        m_judge.watch(m_window.get());
        m_window->setUpdatesEnabled(m_scenario.paints);
        {
            Technician technician(m_workplace, m_window.get(), m_scenario);
            technician.onStep([this] { m_judge.checkStep(); });
            technician.onBox([this](const QString& text) { m_judge.boxShown(text); });
            technician.onLinkClosed([this](world::Time duration) { m_judge.linkClosed(duration); });
            technician.onSilence([this](bool silent) { m_judge.expectSilence(silent); });
            technician.onDownloadStopped([this] { m_judge.downloadStopped(); });
            technician.onCameraUsed([this](const QStringList& camera) { m_judge.cameraUsed(camera); });
            QEventLoop loop;
            QObject::connect(&technician, &Technician::done, &loop, &QEventLoop::quit);
            technician.start();
            loop.exec();
            settle(technician);
            m_judge.checkQuiet();
            m_window->close(); // the technician answers the question
        }
        m_window.reset();
        wait(poolExpiry);
        m_judge.checkEnd();
    }

    void clientSaid(const std::string& line) { m_judge.clientSaid(line); }
    [[nodiscard]] const std::vector<std::string>& complaints() const { return m_judge.complaints(); }

private:
    [[nodiscard]] bool isBusy() const {
        if (QThreadPool::globalInstance()->activeThreadCount() > 0 ||
            QApplication::activeModalWidget() != nullptr)
            return true;
        for (const QThread* const task : m_window->findChildren<QThread*>()) {
            if (task->isRunning())
                return true;
        }
        return false;
    }

    /// Until nothing runs. A download that never ends is ended as a technician would.
    void settle(Technician& technician) {
        const world::Time start = world::now();
        world::Time quietSince = start;
        bool patient = true;
        const world::Time limit = m_scenario.type == protocol::CameraType::quenta ? jsonPatience : patience;
        while (world::now() - quietSince < quietTime && world::now() - start < longestSettling) {
            wait(settlingStep);
            if (isBusy())
                quietSince = world::now();
            if (world::now() - start > longestJob)
                technician.stopLongJobs();
            if (patient && world::now() - start > limit) {
                patient = false;
                m_judge.lostPatience();
                auto* const link = m_window->findChild<QPushButton*>(QStringLiteral("btn_open"));
                if (link->text() == QStringLiteral("关闭串口"))
                    link->click();
            }
        }
    }

    Workplace m_workplace;
    Judge m_judge;
    const Scenario& m_scenario;
    std::unique_ptr<MainWindow> m_window;
};

} // namespace

void prepareWindow(protocol::CameraType type) {
    world::setSessionTime();
    world::reseed(0);
    const Lines lines; // of no session
    Prepared& made = prepared();
    made.before = Judge::resources();
    Workplace::addPorts();
    made.window = std::make_unique<MainWindow>(nullptr, made.clock);
    made.window->setUpdatesEnabled(false);
    made.window->show();
    guitest::chooseCameraType(*made.window, typeButton(type));
    QThreadPool& pool = *QThreadPool::globalInstance();
    const int expiry = pool.expiryTimeout();
    pool.setExpiryTimeout(0);
    while (world::threadCount() > made.before.threads)
        wait(settlingStep);
    pool.setExpiryTimeout(expiry);
    fillHoles();
}

Outcome runSession(const Scenario& scenario, const View& view) {
    // The file dialog keeps its settings there.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope,
                       QDir::current().filePath(QStringLiteral("..")));
    world::reseed(scenario.seed);
    world::keepTimeline(view.timeline);
    world::setRealPace(view.pace);
    Lines lines;
    const world::Time start = world::now();
    Outcome outcome;
    {
        Session session(scenario);
        lines.onClientLine([&session](const std::string& line) { session.clientSaid(line); });
        session.run();
        lines.onClientLine({});
        outcome.complaints = session.complaints();
    }
    outcome.seconds = std::chrono::duration<double>(world::now() - start).count();
    outcome.hash = world::timelineHash();
    outcome.timeline = world::timeline();
    return outcome;
}

void prepareProcess(char** arguments, bool spectator) {
    qputenv("QT_NO_GLIB", "1");   // Qt's own event loop waits where virtual time is
    qputenv("QT_HASH_SEED", "0"); // the order of hashes
    qputenv("QT_LOGGING_RULES", "qt.qpa.*=false");
    // Types of files: Qt's own list is the same everywhere, and quicker than the system's.
    qputenv("XDG_DATA_DIRS", "/dev/null");
    qputenv("XDG_DATA_HOME", "/dev/null");
    qputenv("TZ", "CST-8");      // the same times everywhere; its file is not asked for at each look
    qputenv("FC_LANG", "zh-cn"); // a Chinese desktop's fonts: one has all characters of the windows
    qputenv("LD_BIND_NOW", "1"); // before the fork
    // One heap, which is large enough from the start and stays.
    constexpr int heapSize = 64 * 1024 * 1024;
    ::mallopt(M_ARENA_MAX, 1);
    ::mallopt(M_TOP_PAD, heapSize);
    ::mallopt(M_TRIM_THRESHOLD, 2 * heapSize);
    ::mallopt(M_MMAP_THRESHOLD, heapSize / 2);
    world::waitForOthers(spectator);
    if (!spectator)
        qputenv("QT_QPA_PLATFORM", "offscreen");
    // Objects lie where they lay the last time. That is settled before main: begin once more.
    constexpr const char* again = "SIMULATION_BEGUN";
    if (qEnvironmentVariableIsSet(again))
        return;
    qputenv(again, "1");
    ::personality(ADDR_NO_RANDOMIZE); // where the system allows it
    ::execv("/proc/self/exe", arguments);
}

namespace {

/// Fusion reads an icon's files each time that it is asked for.
class IconKeepingStyle final : public QProxyStyle {
public:
    IconKeepingStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

    QIcon standardIcon(StandardPixmap icon, const QStyleOption* option,
                       const QWidget* widget) const override {
        const auto kept = m_icons.constFind(icon);
        return kept != m_icons.constEnd()
                   ? *kept
                   : *m_icons.insert(icon, QProxyStyle::standardIcon(icon, option, widget));
    }

private:
    mutable QHash<StandardPixmap, QIcon> m_icons;
};

/// Under the program's own style.
void keepIcons() {
    if (auto* const style = qobject_cast<QProxyStyle*>(QApplication::style()))
        style->setBaseStyle(new IconKeepingStyle);
}

bool hasSpectator() {
    return QGuiApplication::platformName() != QLatin1String("offscreen");
}

/// Texts are laid out again and again: without ligatures and kerning, which nobody sees.
void spareShaping() {
    QFont font = QApplication::font();
    font.setStyleStrategy(QFont::PreferNoShaping);
    QApplication::setFont(font);
}

/// Qt keeps fonts and codecs of the first one.
void writeSomeReports() {
    const QTemporaryDir folder;
    service::Checkup checkup;
    checkup.at = QDateTime::currentDateTime();
    for (const char* const suffix : {"pdf", "html", "csv"})
        std::ignore =
            service::writeReport(checkup, folder.filePath(QStringLiteral("report.") + QLatin1String(suffix)));
}

/// Qt keeps the widths of characters: the guide has all of the windows' texts.
void measureTexts() {
    const std::string guide = markdown::contentOf(markdown::sourceFolder() / "docs/user-guide.zh-CN.md");
    std::ignore = QFontMetrics(QApplication::font()).horizontalAdvance(QString::fromStdString(guide));
}

/// A spectator sees the file dialogs.
void prepareLooks() {
    keepIcons();
    if (hasSpectator()) {
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        return;
    }
    guitest::useSystemFileChooser();
    spareShaping();
    measureTexts();
}

void openEverything() {
    // Nothing of the user's is read or written.
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("/dev/null"));
    prepareLooks();
    const Lines lines;
    MainWindow window;
    window.show();
    for (QAction* const entry : menuEntries(window)) {
        if (entry->objectName() != QLatin1String("actionReboot") &&
            entry->objectName() != QLatin1String("actionResetFactory") &&
            entry->objectName() != QLatin1String("actionOriginCmdExtraAdd"))
            entry->trigger();
    }
    for (QAction* const entry : aidEntries(window))
        entry->trigger();
    for (QWidget* const each : window.findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        if (each->isWindow())
            std::ignore = each->grab(); // Qt keeps the glyphs
    }
    for (const auto icon : {QMessageBox::Information, QMessageBox::Question, QMessageBox::Warning}) {
        QMessageBox box(icon, QString(), QStringLiteral("升级"), QMessageBox::Yes | QMessageBox::No);
        box.show();
        std::ignore = box.grab();
    }
    writeSomeReports();
    QTimer::singleShot(1s, &window, [] { QApplication::activeModalWidget()->close(); });
    std::ignore = QFileDialog::getOpenFileName(&window);
    window.close();   // an open one lists the ports again and again
    wait(poolExpiry); // the windows have started jobs
}

} // namespace

void warmUp() {
    openEverything();
    std::ignore = documentedExchanges();
    fillHoles();
}

} // namespace simulation
