// The main window and a virtual camera with distinct values, for two users of the line at once.
#pragma once

#include "tests/support/camerawindow.h"
#include "tests/support/uploadwindow.h"
#include "tests/turn/linejudge.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <span>
#include <vector>

namespace turn {

/// Values of the camera, all distinct: a text identifies its command.
namespace held {
inline constexpr std::uint8_t compressionRate = 71;
inline constexpr std::uint8_t heaterDuty = 62;
inline constexpr std::uint8_t angleA = 11;
inline constexpr std::uint8_t angleB = 22;
inline constexpr std::uint8_t on = 1; ///< direction and gyro switch; any other byte reads as off
inline constexpr std::uint8_t reserve = 93;
inline constexpr std::uint32_t pitch = 100001;
inline constexpr std::uint32_t roll = 100002;
inline constexpr std::uint32_t yaw = 100003;
inline constexpr std::uint32_t acceleration = 100004;
inline constexpr const char* serialNumber = "SN-3141592653";
inline constexpr const char* appVersion = "app 11.1";
inline constexpr const char* systemVersion = "system 22.2";
inline constexpr const char* qvVersion = "qv 33.3";
inline constexpr const char* modelInfo = "model 44.4";
inline constexpr const char* jsonVersion = "json 55.5";
inline constexpr std::uint16_t firstPicture = 101; ///< id; the others count up from it
} // namespace held

/// CAMERA_TURN_ALL is set: every pair at every delay, every opening at every lead.
[[nodiscard]] bool isThorough();
/// Of the running test.
[[nodiscard]] int failuresSoFar();

/// The main window with an open link to the camera. Users act through its widgets.
class TurnWindow {
public:
    /// Length of the product's pauses of a second and more; shorter ones are always real.
    enum class Pauses { cut, real };
    /// Padded answers fill their reads; a command does not wait one second for the rest of a block.
    enum class Answers { padded, plain };

    struct Setup {
        std::uint32_t cameraType = 0; ///< chosen in the window; the camera speaks for all types
        std::chrono::milliseconds answerDelay{0};
        Pauses pauses = Pauses::cut;
        Answers answers = Answers::padded;
    };
    explicit TurnWindow(const Setup& setup);
    ~TurnWindow();
    TurnWindow(const TurnWindow&) = delete;
    TurnWindow& operator=(const TurnWindow&) = delete;

    [[nodiscard]] const Setup& setup() const { return m_setup; }
    [[nodiscard]] MainWindow& window() const { return *m_bench.window; }

    /// Opens a window by its menu entry.
    template <typename Window>
    [[nodiscard]] Window* openWindow(const char* menuEntry) const {
        const auto before = guitest::openWindows<Window>();
        guitest::trigger(window(), menuEntry);
        for (Window* const each : guitest::openWindows<Window>()) {
            if (std::find(before.begin(), before.end(), each) == before.end())
                return each;
        }
        return nullptr;
    }
    /// Chooses a file of a few KiB for the upload; the same one every time.
    void chooseFile(const WindowUpload& upload);
    [[nodiscard]] static Bytes fileOf(const WindowUpload& upload);

    /// Texts of the boxes so far that begin like this.
    [[nodiscard]] QStringList boxTexts(const QString& beginning) const;
    void fault(const std::string& description) { m_bench.fault(description); }
    /// Answers after 200 ms would come too late for every heartbeat of the return wait.
    void answerHeartbeatsInTime();
    /// Ids of the pictures that the camera holds at first, in catalogue order.
    [[nodiscard]] static QStringList heldPictureIds();
    /// The camera's pictures of these ids; it holds them at first.
    [[nodiscard]] std::vector<emulator::Picture> heldPictures(std::span<const std::uint16_t> ids);
    /// The camera as it was made, with an empty record.
    void renewCamera();
    /// A camera that keeps its pictures although it has confirmed their deletion.
    void putPicturesBack();
    [[nodiscard]] emulator::CameraRecord record() { return m_bench.record(); }
    [[nodiscard]] emulator::CameraState cameraState() { return m_bench.state(); }
    /// No job and no upload runs.
    [[nodiscard]] bool isIdle() const;
    /// For overlaps and uploadFaults, since the camera was renewed.
    [[nodiscard]] LineRules lineRules();

private:
    void fillCamera(emulator::VirtualCamera& camera);

    Setup m_setup;
    std::vector<emulator::Time> m_uploadEnds; ///< guarded by the camera's mutex
    guitest::CameraWindow m_bench;
    guitest::BoxAnswerer m_boxes;
};

} // namespace turn
