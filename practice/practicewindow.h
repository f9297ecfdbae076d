// The window of the program: lists the lessons, starts them and shows their steps.
#pragma once

#include "emulator/lessons/lessonrun.h"
#include "emulator/memory/memoryfront.h"
#include "link/clock.h"

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <optional>

class MainWindow;

namespace Ui {
class PracticeWindow;
}

/// Each start connects a new camera to the line in memory and opens a new main window of the tool, whose
/// closing ends the lesson. Closing this window closes both. User-interface thread.
class PracticeWindow final : public QWidget {
    Q_OBJECT

public:
    /// The clock, of the main windows, outlives this one.
    explicit PracticeWindow(Clock& clock = Clock::system());
    ~PracticeWindow() override;

    /// Starts the lesson with this row of the list; the row behind the lessons is the practice without one.
    /// Nothing happens if the user keeps the running upload of an open main window.
    void start(int row);

    /// Null while none is open.
    [[nodiscard]] MainWindow* tool() const;
    [[nodiscard]] emulator::MemoryFront* camera() const { return m_camera.get(); }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void fillList();
    void connectControls();
    [[nodiscard]] emulator::VirtualCamera cameraOf(int row) const;
    void openTool();
    /// Puts both windows side by side if the screen has room.
    void placeBesideTool();
    /// False if the user keeps it.
    [[nodiscard]] bool closeTool();
    void endLesson();
    /// Lets the lesson look at the camera and shows what it says.
    void look();
    /// Adds a step and marks it as the present one.
    void showStep(const QStringList& lines);

    Clock& m_clock;
    std::unique_ptr<Ui::PracticeWindow> m_ui;
    std::unique_ptr<emulator::MemoryFront> m_camera;
    std::optional<emulator::LessonRun> m_lesson; ///< of m_camera; none: free practice
    QPointer<MainWindow> m_tool;
    int m_row = 0;      ///< the last one started
    QStringList m_said; ///< by the lesson, since the last look
    QString m_earlier;  ///< the shown steps as HTML
    QTimer m_lookTimer;
};
