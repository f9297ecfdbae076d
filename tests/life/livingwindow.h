// A main window and a virtual camera, whose link ends during use.
#pragma once

#include "app/adapters.h"
#include "tests/support/camerawindow.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace life {

class LivingWindow;
/// An action of a user. It does nothing when its window is closed or disabled.
using Step = std::function<void(LivingWindow&)>;

struct Flow {
    const char* name;
    const char* cameraButton; ///< in the window of the camera type
    emulator::CameraType type;
    std::chrono::milliseconds duration; ///< the moment falls into it
    std::vector<Step> steps;
    const char* fault = nullptr; ///< of the camera
};

enum class Ending { closeLink, closeWindow, removeDevice };

/// All flows that use the link.
[[nodiscard]] const std::vector<Flow>& flows();

class LivingWindow {
public:
    explicit LivingWindow(const Flow& flow);
    ~LivingWindow();

    /// Starts the flow, ends it after the moment, and checks that nothing is left. Reports by test failures.
    void live(Ending ending, std::chrono::milliseconds moment);

    // For steps:
    [[nodiscard]] MainWindow* window() const { return m_bench.window.get(); }
    /// Presses the button of the window if both are there and usable.
    static void press(const QWidget* window, const char* button);
    void choose(const char* menuEntry) const;
    /// True after the moment: the user does nothing any more.
    [[nodiscard]] bool hasEnded() const { return m_ended; }
    template <typename Window>
    [[nodiscard]] static Window* opened() {
        const auto all = guitest::openWindows<Window>();
        return all.empty() ? nullptr : all.back();
    }
    /// Chooses the upload file in the dialog that the button opens.
    void chooseFile(const char* button);
    /// Pulls the adapter, or plugs it in: under another name.
    void plug(bool in);

private:
    struct Shown;

    void open();
    /// The camera's port while it is there. Any thread.
    [[nodiscard]] std::vector<PortEntry> adapters();
    void runSteps(std::size_t next);
    void end(Ending ending);
    void closeLink();
    void removeDevice(std::chrono::milliseconds moment);
    [[nodiscard]] std::uint64_t receivedBytes();
    [[nodiscard]] Shown shown() const;
    [[nodiscard]] std::size_t uploadResults() const;
    void expectPortFree() const;
    void expectNothingLate();
    void expectWorkingLink();

    const Flow& m_flow;
    guitest::CameraWindow m_bench;
    std::string m_portName;
    guitest::BoxAnswerer m_boxes;
    bool m_ended = false;
};

} // namespace life
