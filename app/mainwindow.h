// The main window of the tool.
#pragma once

#include "aids/imagefile.h"
#include "aids/linkowner.h"
#include "app/adapters.h"
#include "app/captureflow.h"
#include "app/openwindows.h"
#include "app/windowkeys.h"
#include "link/camerasp.h"
#include "link/protocol/cameratypes.h"
#include "linkaccess/clientborrower.h"
#include "service/visit.h"

#include <QMainWindow>
#include <QTimer>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

class AppUpdateTask;
class AppUpdateV1Task;
class FirewareTask;
class KeepAwake;
class LineWait;
class LineWatch;
class ModelUpdateTask;
class QPushButton;
class StatusLine;
class TransferDisplay;

namespace Ui {
class MainWindow;
}

/// Owns the link to the camera and lends it to the windows that it opens. States: link open, link closed.
///
/// User-interface thread; exchanges block it, except jobs of runOnPool. Closing the link detaches the client
/// from every window, stops running jobs, waits for them and deletes the client. This takes at most about one
/// library timeout.
///
/// Two rules switch the controls: the port rule enables them by the state of the link; allowExchange(false)
/// disables everything that starts an exchange while a job or an upload uses the client.
class MainWindow final : public QMainWindow, private ClientBorrower, private LinkOwner {
    Q_OBJECT

public:
    /// The clock outlives the window.
    explicit MainWindow(QWidget* parent = nullptr, Clock& clock = Clock::system());
    ~MainWindow() override;

protected:
    bool event(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    // --- construction (mainwindow.cpp) ---
    /// One sign for the main action of each panel.
    void signControls();
    /// Gives all controls one height and the versions their room, whatever the system's font.
    void levelControls();
    void fillChoices();
    void connectLink();
    void connectStatus();
    void connectMenus();
    void connectUpdates();
    void connectPictures();
    void connectAids();
    void connectPorts();
    void finishStart();

    // --- the controls ---
    [[nodiscard]] std::vector<QWidget*> portOpenControls() const;
    /// Switches the controls that depend on whether a link is open.
    void applyPortRule();
    /// False while a job uses the client for longer than one exchange. Closing the link ends it. May be
    /// called twice.
    void allowExchange(bool allowed);
    /// Re-enables the controls after the link changed; jobs of the old link no longer count.
    void freeExchange();
    /// Moves the focus away from the button that closes the link: a second press of a key must not close it.
    void leaveCloseButton();
    /// Shows the chosen files.
    void showPaths();
    /// Shows the open port, its rate and the slave address at the right end of the status bar, and which
    /// values are of another camera.
    void showLink();

    // --- the link ---
    void toggleLink();
    void openLink();
    void closeLink();
    /// Lends the client to this and every other window; null takes it back.
    void lendClient(CameraSp* client);
    /// Asks before an upload or return wait is interrupted; false keeps the link.
    bool confirmInterruption();
    void applyCameraProtocol();
    /// Applies the slave address to the link and shows it.
    void applyAddress();

    // --- adapters (mainwindow_ports.cpp) ---
    /// The ports are listed once a second on the pool while the window is open and no link is, or its
    /// adapter is lost.
    [[nodiscard]] bool isWatchingPorts() const;
    void listPortsLater();
    void listPorts();
    /// Takes back what the camera told and looks for the adapter until endLoss(), also after closing.
    void beginLoss();
    void endLoss();
    /// Offers to reopen if the list has the lost adapter, exactly once.
    void lookForLostAdapter(const std::vector<PortEntry>& ports);
    void offerReopening(const QString& port);
    void withdrawReopening();
    /// Closes the lost link and opens the port as the open button does.
    void reopenLink();
    /// The user chose another port in the list.
    void endLossByChoice(const QString& port);

    // --- windows ---
    /// Opens a non-modal window that is deleted when it is closed. A ClientBorrower has the client while the
    /// link is open.
    template <typename Window, typename... Arguments>
    Window* openWindow(Arguments&&... arguments);
    /// The same, unless a window of this kind is open: shows that one.
    template <typename Window, typename... Arguments>
    void openOnce(Arguments&&... arguments);
    /// The menu entry opens a window that borrows the client.
    template <typename Window>
    void connectWindow(QAction* entry);
    void openCameraProtocol();
    void openAbout();
    void lendTo(ClientBorrower& borrower);

    // --- where the shown values are from (mainwindow_status.cpp) ---
    /// A new link may be to another camera at the same address.
    struct CameraInUse {
        std::uint64_t link = 0;
        std::uint32_t address = 0;
        std::uint32_t type = 0;
        bool operator==(const CameraInUse&) const = default;
    };
    [[nodiscard]] CameraInUse cameraInUse() const { return {m_links, m_slaveAddress, m_cameraType}; }
    /// Greys values of a camera that is no longer in use and forgets its heartbeat.
    void showSources();
    void viewPicture(const TakenPicture& picture);

    // --- the status controls (mainwindow_status.cpp) ---
    struct Versions;
    /// A command that a question box confirms, with its texts.
    struct ConfirmedCommand {
        QString name; ///< for the status bar
        QString title;
        QString question;
        bool (CameraSp::*command)();
        QString success;
        QString failure;
    };
    void testHeartBeat();
    void queryVersions();
    void queryVersionsOnPool();
    void queryQuentaVersion();
    void queryModelInfo();
    void testGyro();
    void runConfirmed(const ConfirmedCommand& action);
    void rebootCamera();
    void resetToFactory();
    void enterPictureOffset();

    // --- the button "更多" (mainwindow_aids.cpp) ---
    void findCamera();
    void showManual();
    QStringList choosablePorts() override;
    [[nodiscard]] LinkFacts linkFacts() const override;
    void useCamera(const service::FoundCamera& camera) override;
    /// Ends searches, which may have the port open.
    void releaseChosenPort() const;

    // --- uploads (mainwindow_updates.cpp) ---
    struct ReturnWait;
    struct FileChoice;
    /// Button, path and texts of one kind of upload.
    FileChoice fileChoice(ImageKind kind);
    void chooseFile(ImageKind kind);
    /// The path button of the panel, or of the firmware, that has the focus; else of the application.
    void chooseFocusedFile();
    /// An empty path keeps the file of before.
    void takeFile(ImageKind kind, const QString& chosen);
    void startAppUpdate();
    void startFirewareUpdate();
    void startModelUpdate();
    /// Disables the exchange controls, starts the task and shows its result if the link is the same. False if
    /// the system starts no thread; the controls are then enabled again.
    template <typename Task>
    bool runTask(Task*& task, void (Task::*ended)(bool), void (MainWindow::*showResult)(bool));
    /// Keeps other users from the line until the result is shown.
    void beginUpload();
    void disablePressed(QPushButton* button, bool started);
    void appupdateEnd(bool result);
    void appupdateV1End(bool result);
    void firewareEnd(bool result);
    void modelUpdateEnd(bool result);
    void awaitReturn(const ReturnWait& wait);
    /// The outcome is for the status bar, the text for the box.
    void showUploadResult(QPushButton* button, const QString& outcome, const QString& text);
    [[nodiscard]] QString uploadOutcome(bool success) const;
    void endInterruptible();
    /// Blocks until all upload threads have ended. Stop the link first.
    void waitForTasks();

    /// Port and rate of the open link; the choices may change while it is open.
    struct OpenedPort {
        QString port; ///< empty: none was chosen
        std::uint32_t baudRate = 0;
    };

    Clock& m_clock;
    std::unique_ptr<Ui::MainWindow> m_ui;
    std::unique_ptr<CameraSp> m_camera; ///< non-null while a link is open
    OpenedPort m_opened;                ///< of the open link
    AdapterTrack m_adapter;             ///< of the open or lost link
    bool m_adapterLost = false;         ///< no reopening since; the link may be closed
    QString m_reopenable;               ///< port that the button "重新打开" opens; empty: not offered
    QStringList m_lostSeenAt;           ///< candidates of the last list
    QTimer m_portTimer;                 ///< to the next list of ports
    std::uint32_t m_baudRate = protocol::baudRates.front();
    std::string m_portName;
    QString m_appPath;
    QString m_firewarePath;
    QString m_modelPath;
    QString m_modelName;
    std::uint32_t m_slaveAddress = 1;
    std::uint32_t m_cameraType = 0; ///< number of a protocol::CameraType
    std::uint64_t m_links = 0;      ///< opened so far
    CameraInUse m_heartbeatSource;
    CameraInUse m_versionsSource;
    CameraInUse m_modelSource;
    CameraInUse m_pictureSource;

    // The last task of each kind; children of the window.
    AppUpdateTask* m_appUpdateTask = nullptr;
    AppUpdateV1Task* m_appUpdateV1Task = nullptr;
    FirewareTask* m_firewareTask = nullptr;
    ModelUpdateTask* m_modelUpdateTask = nullptr;
    std::unique_ptr<StatusLine> m_statusLine;
    TransferDisplay* m_transferDisplay = nullptr;
    LineWait* m_lineWait = nullptr;
    LineWatch* m_lineWatch = nullptr;
    CommandReport m_uploadReport;           ///< of the last upload
    std::unique_ptr<KeepAwake> m_keepAwake; ///< during an upload or a return wait
    bool m_interruptible = false;           ///< likewise: closing asks first
    /// Likewise: a new address takes effect afterwards.
    std::optional<CameraSp::AddressHold> m_addressHold;

    std::unique_ptr<CaptureFlow> m_captureFlow;
    service::Visit m_visit;
    OpenWindows m_windows;
    bool m_exchangeAllowed = true;
};

template <typename Window, typename... Arguments>
Window* MainWindow::openWindow(Arguments&&... arguments) {
    auto* const window = new Window(std::forward<Arguments>(arguments)...);
    window->setWindowFlag(Qt::Window);
    window->setAttribute(Qt::WA_DeleteOnClose);
    // Other windows do not keep the program running.
    window->setAttribute(Qt::WA_QuitOnClose, false);
    if constexpr (std::is_base_of_v<ClientBorrower, Window>) {
        m_windows.add(window, window);
        lendTo(*window);
    } else {
        m_windows.add(window, nullptr);
    }
    closeByEscape(window);
    giveKeys(window);
    pressButtonsByEnter(window);
    window->show();
    return window;
}

template <typename Window, typename... Arguments>
void MainWindow::openOnce(Arguments&&... arguments) {
    if (auto* const window = m_windows.opened<Window>()) {
        window->raise();
        window->activateWindow();
        return;
    }
    openWindow<Window>(std::forward<Arguments>(arguments)...);
}

template <typename Window>
void MainWindow::connectWindow(QAction* entry) {
    connect(entry, &QAction::triggered, this, [this] { openWindow<Window>(this, client()); });
}
