// The technician of a simulated session.
#pragma once

#include "tests/simulation/workplace.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <functional>

class QAction;
class QDialog;
class QWidget;

namespace simulation {

/// The entries of the menu bar.
[[nodiscard]] QList<QAction*> menuEntries(const QWidget& mainWindow);

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
    void choosePort(const Step& step);
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
};

} // namespace simulation
