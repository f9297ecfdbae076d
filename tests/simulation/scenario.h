// The list of steps of a simulated session: by a technician, the line, the camera and the adapter.
#pragma once

#include "link/protocol/cameratypes.h"

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace simulation {

enum class StepKind : std::uint8_t {
    // the technician
    link,         ///< presses the button that opens and closes the link
    press,        ///< presses a button of the window in front
    menu,         ///< chooses a menu entry of the main window
    type,         ///< types into a field of the window in front, or chooses in a list of choices
    row,          ///< chooses an entry of the menu of a picture in a list window
    front,        ///< turns to another open window
    close,        ///< closes the window in front
    capture,      ///< presses the button that takes a picture
    upload,       ///< chooses a file and presses the button of an upload
    port,         ///< chooses another port or rate
    aid,          ///< chooses an entry of the button "更多"
    use,          ///< works in one of the windows of aids, lists and pictures
    status,       ///< presses a button of the status bar
    drag,         ///< drags a file over the main window, and drops it
    replug,       ///< pulls the adapter, plugs it in and presses "重新打开"
    wait,         ///< looks on
    closeProgram, ///< closes the main window
    // the line
    flip,    ///< a byte changes
    drop,    ///< bytes are lost
    repeat,  ///< a byte comes twice
    latency, ///< bytes take longer
    // the camera
    fault,   ///< one of the camera's faults strikes the next request
    trouble, ///< one strikes where it leads somewhere
    reboot,  ///< it restarts
    // the adapter
    pull,
    plug,
    fail, ///< the next call of its driver fails
    clog, ///< it takes few bytes, and the camera stops reading at the next upload
    // the disk
    obstruct, ///< a folder has the name of a picture
};

/// Main subject of a session.
enum class Focus : std::uint8_t { nothing, uploads, pictures, links };
inline constexpr std::uint32_t focuses = 4;
inline constexpr unsigned int focusFactor = 5; ///< of the weights of its steps

/// Columns of the table of kinds.
struct StepKindInfo {
    StepKind kind;
    std::string_view name;
    unsigned int weight; ///< among all steps that are drawn
    bool fault;          ///< counts as one of the few faults of a session
    Focus focus = Focus::nothing;
};
[[nodiscard]] const std::vector<StepKindInfo>& stepKinds();
[[nodiscard]] const StepKindInfo& infoOf(StepKind kind);

/// One step. Choices are numbers of any size: the step takes them modulo what there is to choose from.
struct Step {
    StepKind kind = StepKind::wait;
    std::uint32_t pauseMs = 0; ///< before the step
    std::uint32_t choice = 0;
    std::uint32_t detail = 0;

    bool operator==(const Step&) const = default;
};

inline constexpr std::size_t mostFaults = 5;

struct Scenario {
    std::uint64_t seed = 0; ///< of the order of threads
    protocol::CameraType type = protocol::CameraType::ostra;
    bool paints = false;
    /// In 1/1024; see world::setPreemption.
    std::uint32_t preemption = 0;
    std::vector<Step> steps;

    bool operator==(const Scenario&) const = default;
};

/// One line: "type=0 order=12 preemption=4; press 3 0 +120; ..."
[[nodiscard]] std::string toText(const Scenario& scenario);
/// Nothing if the text is none.
[[nodiscard]] std::optional<Scenario> parseScenario(const std::string& text);
[[nodiscard]] std::string toText(const Step& step);
std::ostream& operator<<(std::ostream& out, const Scenario& scenario);

} // namespace simulation
