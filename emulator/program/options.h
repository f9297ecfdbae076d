// The command line of virtual-camera.
#pragma once

#include "emulator/line/cameraprofile.h"

#include <optional>

namespace CLI {
class App;
}

namespace emulator {

struct Options {
    enum class Action { serve, help, version, listFaults, tap, replay, lesson, listLessons };

    Action action = Action::serve;
    CameraSettings settings;
    std::optional<CameraProfile> profile; ///< its settings are in `settings`, its line in `line`
    std::string device;                   ///< empty: a new pseudo-terminal
    bool baudGiven = false;               ///< settings.baudRate is not the type's
    std::string link;
    std::string pictureFolder;
    std::uint32_t bytesPerSecond = 0;
    std::vector<Fault> faults;
    LineTraits line;
    std::uint64_t lineSeed = 1;

    std::string tapDevice;  ///< the camera's serial device
    std::string recordFile; ///< empty: a name with the time
    bool blankSerials = false;
    std::string replayFile;
    bool atOnce = false;
    std::string lesson; ///< number of the lesson
};

/// Error of the command line; what() is for people.
class OptionError : public std::invalid_argument {
public:
    using std::invalid_argument::invalid_argument;
};

/// Arguments without the program's name. Throws OptionError, FaultError, LineTextError or
/// trace::ProfileError.
[[nodiscard]] Options parseOptions(const std::vector<std::string>& arguments);

[[nodiscard]] std::string helpText();
/// Fills an app with all options, for the manual; the options outlive it.
void describeOptions(CLI::App& app, Options& options);
/// The kinds, their parameters and the request names.
[[nodiscard]] std::string faultListText();

} // namespace emulator
