// One simulated session: the real windows, the real client, a virtual camera, a technician, from a scenario.
#pragma once

#include "tests/simulation/scenario.h"

#include <cstdint>
#include <string>
#include <vector>

namespace simulation {

struct Outcome {
    std::vector<std::string> complaints; ///< empty: every rule held
    std::uint64_t hash = 0;              ///< of all that happened
    double seconds = 0;                  ///< of virtual time
    std::string timeline;                ///< if asked for
};

struct View {
    bool timeline = false;
    double pace = 0; ///< for a spectator: so many times as fast as real time; 0: no spectator
};

/// Opens the main window in which a session begins, with this camera type: children of this process have it.
/// No thread is left.
void prepareWindow(protocol::CameraType type);

/// Runs the session in the prepared window, which is gone then. The working directory has to be empty. There
/// is no other thread.
[[nodiscard]] Outcome runSession(const Scenario& scenario, const View& view = {});

/// First thing in main: settings that make every run the same. Starts the program anew with the same
/// arguments.
void prepareProcess(char** arguments, bool spectator);

/// Makes what the first window of a process makes once: fonts, styles, caches. No thread is left.
void warmUp();

} // namespace simulation
