// The window that checks the camera up and keeps the check-ups of a visit.
#pragma once

#include "aids/linkowner.h"
#include "linkaccess/clientborrower.h"
#include "service/visit.h"

#include <QTimer>
#include <QWidget>

#include <memory>

namespace Ui {
class CheckupWindow;
}

/// Reads on the pool; writes files and prints only when asked. A check-up ends with the link, and for an
/// upload. User-interface thread.
class CheckupWindow final : public QWidget, public ClientBorrower {
    Q_OBJECT

public:
    /// The visit outlives the window and is shared by later ones.
    CheckupWindow(LinkOwner& owner, service::Visit& visit, QWidget* parent, CameraSp* client);
    ~CheckupWindow() override;

protected:
    void clientChanged() override;

private:
    struct Run;

    void start();
    void stop();
    /// Ends the picture, for whose end an upload waits. Readings give way by themselves.
    void yieldToUpload();
    void end(const Run& run);
    void showControls();

    void addLine(const QString& title, const service::ReadValue& value);
    /// Shows a finished check-up.
    void showCheckup(const service::Checkup& checkup);
    void showVerdict(const service::Checkup& checkup);
    void showPicture(const QByteArray& picture);
    void showVisit();
    void chooseVisited();

    void copy() const;
    void save(const service::Checkup& checkup);
    void saveVisit();
    void askForFile(const QString& name, std::function<QString(const QString& path)> write);
    void print();
    [[nodiscard]] QString fileName(const service::Checkup& checkup) const;

    LinkOwner& m_owner;
    service::Visit& m_visit;
    std::unique_ptr<Ui::CheckupWindow> m_ui;
    std::shared_ptr<std::atomic<bool>> m_stopped; ///< of the running check-up; null: none runs
    std::optional<service::Checkup> m_shown;      ///< nothing: none, or a running or interrupted one
    QTimer m_watch;                               ///< for an upload, during a check-up
};
