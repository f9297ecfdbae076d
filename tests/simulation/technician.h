// The technician of a simulated session.
#pragma once

#include "tests/simulation/workplace.h"
#include "tests/simulation/world/scheduler.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <functional>

class QAction;
class QDialog;
class QFileDialog;
class QWidget;

namespace simulation {

/// The entries of the menu bar.
[[nodiscard]] QList<QAction*> menuEntries(const QWidget& mainWindow);
/// The entries of the button "更多" that open a window of the tool.
[[nodiscard]] QList<QAction*> aidEntries(const QWidget& mainWindow);

/// Performs the steps one after the other, inside whatever event loop runs: a box or file dialog that is open
/// is answered by the next step. Steps that do not apply do nothing.
class Technician final : public QObject {
    Q_OBJECT

public:
    Technician(Workplace& workplace, QWidget* mainWindow, const Scenario& scenario);

    void start();
    /// No step is left and no dialog is open. From then on dialogs are answered as they come.
    [[nodiscard]] bool isDone() const { return m_done; }
    /// Called before each step and after the last one.
    void onStep(std::function<void()> check) { m_check = std::move(check); }
    /// Texts of message boxes in the order in which they came.
    [[nodiscard]] const QStringList& boxes() const { return m_boxes; }
    void onBox(std::function<void(const QString& text)> handler) { m_boxHandler = std::move(handler); }

    /// Called with the time that the button needed to close the link.
    void onLinkClosed(std::function<void(world::Time)> handler) { m_linkHandler = std::move(handler); }
    /// Called before (true) and after actions that send nothing.
    void onSilence(std::function<void(bool)> handler) { m_silenceHandler = std::move(handler); }
    /// Called with port, rate and address after a found camera was taken and no box came.
    void onCameraUsed(std::function<void(const QStringList& camera)> handler) {
        m_usedHandler = std::move(handler);
    }
    /// Called before the button is pressed that stops the only download of a list.
    void onDownloadStopped(std::function<void()> handler) { m_stopHandler = std::move(handler); }
    /// Ends what may last for many minutes.
    void stopLongJobs();

    bool eventFilter(QObject* object, QEvent* event) override;

signals:
    void done();

private:
    void next();
    void perform(const Step& step);
    /// True if a dialog was there to be answered.
    bool answerDialog(const Step& step);
    void pressLink();
    void press(const Step& step);
    void chooseMenu(const Step& step);
    void type(const Step& step);
    void chooseRow(const Step& step);
    void turnToFront(const Step& step);
    void closeFront();
    void upload(const Step& step);
    void changeAddress(int address);
    void pressDownload(const QWidget& list);
    void choosePort(const Step& step);
    void chooseAid(const Step& step);
    void use(const Step& step);
    void openOneMore(std::uint32_t choice);
    void useFinder(QWidget& finder, std::uint32_t action);
    void startSearch(const QWidget& finder, std::uint32_t choice);
    void useFound(QWidget& finder, std::uint32_t choice);
    void useCheckup(QWidget& checkup, std::uint32_t action);
    void useLineRecord(QWidget& record, std::uint32_t action);
    void useList(QWidget& list, std::uint32_t action);
    void usePictureView(QWidget& view, std::uint32_t action);
    void pressInStatusBar(const Step& step);
    void drag(const Step& step);
    void replug(const Step& step);
    void reopen();
    void pressNamed(const QWidget& window, const char* name);
    void silently(const std::function<void()>& action);
    void chooseFile(QFileDialog& dialog, const Step& step);
    [[nodiscard]] QString pathFor(const QFileDialog& dialog, const Step& step);
    void triggerAndFollow(QAction& entry);
    [[nodiscard]] QList<QWidget*> windows() const;
    [[nodiscard]] QWidget* frontWindow() const;
    void note(const QString& text) const;

    Workplace& m_workplace;
    QPointer<QWidget> m_main;
    QPointer<QWidget> m_front;
    const Scenario& m_scenario;
    std::size_t m_next = 0;
    bool m_done = false;
    QTimer m_timer;
    QStringList m_boxes;
    std::function<void()> m_check;
    std::function<void(const QString&)> m_boxHandler;
    std::function<void(world::Time)> m_linkHandler;
    std::function<void(bool)> m_silenceHandler;
    std::function<void(const QStringList&)> m_usedHandler;
    std::function<void()> m_stopHandler;
    int m_reopeningTries = 0; ///< that are left after an adapter was pulled
};

} // namespace simulation
