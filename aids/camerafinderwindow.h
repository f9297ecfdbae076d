// The window that finds cameras by their heartbeat.
#pragma once

#include "aids/linkowner.h"
#include "linkaccess/clientborrower.h"
#include "service/portsearch.h"

#include <QElapsedTimer>
#include <QWidget>

#include <memory>

class QListWidget;

namespace Ui {
class CameraFinderWindow;
}

/// Without a link it searches the chosen ports; with one, addresses on the open link, as a background job
/// that ends for a whole job. The link's opening or end ends a search. User-interface thread.
class CameraFinderWindow final : public QWidget, public ClientBorrower {
    Q_OBJECT

public:
    CameraFinderWindow(LinkOwner& owner, QWidget* parent, CameraSp* client);
    ~CameraFinderWindow() override;

    [[nodiscard]] bool needsClient() const override { return false; }
    /// Ends the search and waits until no search has the port open.
    void releasePort(const QString& port);

protected:
    void clientChanged() override;

private:
    using Search = std::shared_ptr<service::PortSearch>;

    void fillChoices();
    /// Shows what can be chosen with and without a link, running or not.
    void showChoices();
    void refreshPorts();

    void start();
    void startOnPorts(std::vector<service::FindPlan> plans);
    void startOnLink(const service::FindPlan& plan);
    void stop();
    /// Of the search that runs; nothing for an earlier one.
    void end(const Search& search, const QString& text);
    [[nodiscard]] QString outcome() const;
    [[nodiscard]] service::PortSearchObserver observer();
    [[nodiscard]] std::vector<service::FindPlan> chosenPlans() const;

    void showProgress();
    void addFound(const service::FoundCamera& camera);
    void addFailure(const QString& text);
    void use();

    LinkOwner& m_owner;
    std::unique_ptr<Ui::CameraFinderWindow> m_ui;
    Search m_search; ///< null: none runs
    std::size_t m_jobs = 0;
    std::size_t m_attempts = 0; ///< of the last search
    std::size_t m_tried = 0;
    QElapsedTimer m_since;
    std::vector<service::FoundCamera> m_found; ///< by row of the table
};
