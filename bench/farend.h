// The far end of the line in a process of its own, so that its cost is not measured here.
#pragma once

#include "emulator/camera/camerasettings.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace emulator {
class PtyFront;
}

namespace bench {

/// What arrived since the start, counted by the far end.
struct Arrivals {
    std::uint64_t bytes = 0; ///< raw upload data, or everything on a relay
    double seconds = 0;      ///< from the first of these bytes to the last
    bool intact = false;     ///< the upload's digest is right
};

/// A child process that serves one line and answers one question: what arrived. This process must have no
/// threads when it starts one; it ends with the object.
class ChildProcess {
public:
    struct Side {
        std::function<std::string()> portName; ///< asked once, at the start
        std::function<Arrivals()> arrivals;
    };
    /// `start` runs in the child and makes what serves the line.
    explicit ChildProcess(const std::function<Side()>& start);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    [[nodiscard]] const std::string& portName() const { return m_portName; }
    [[nodiscard]] Arrivals arrivals();

private:
    [[noreturn]] static void serve(int socket, const std::function<Side()>& start);

    int m_socket = -1;
    int m_child = -1;
    std::string m_portName;
};

/// A virtual camera on a line of this pace (bytes per second each way; 0: as fast as it goes).
class FarEnd final : public ChildProcess {
public:
    using Prepare = std::function<void(emulator::PtyFront&)>;
    FarEnd(emulator::CameraType type, std::uint32_t bytesPerSecond, const Prepare& prepare = {});

    /// Waits for the last bytes, which are on the line when the sender has ended. Throws when they do not
    /// come or the digest is wrong.
    [[nodiscard]] Arrivals wholeUpload(std::size_t size);
};

} // namespace bench
