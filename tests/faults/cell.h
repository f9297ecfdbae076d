// One cell of the matrix: one command, one fault, one camera, one process.
#pragma once

#include "tests/faults/command.h"

#include <memory>

namespace faultmatrix {

/// Observations in a cell, and the unexpected ones among them.
struct Cell {
    std::string fault;
    Ending ending = Ending::fails;
    milliseconds took{0};
    std::vector<std::string> complaints;
};

/// Runs every cell of the row in a process of its own, all at once: the client's lines, their number base and
/// the working directory belong to a process. A cell that crashes or hangs is a complaint. Only to be called
/// while there is one thread.
[[nodiscard]] std::vector<Cell> runRow(const Command& command);

// --- also for runs on bad lines ----------------------------------------------------------------------------

/// Of a camera that restarts at once, so that the next command finds it.
[[nodiscard]] emulator::CameraSettings settingsFor(const Command& command);
/// A client with the camera's address.
[[nodiscard]] std::unique_ptr<CameraSp> connect(TestFront& front);

inline constexpr std::size_t shortUpload = 1300; ///< bytes
void writeUpdateFile(const std::string& path, std::size_t size);

struct Timed {
    Ending ending = Ending::fails;
    milliseconds took{0};
};
/// Runs the command. With a patience, one that takes longer is stopped.
[[nodiscard]] Timed runTimed(const Command& command, Bench& bench, std::optional<milliseconds> patience);

/// What the camera holds for downloads.
inline constexpr std::uint32_t pictureBytes = 100;
[[nodiscard]] protocol::Bytes storedPicture();
[[nodiscard]] protocol::Bytes storedJsonPicture();
void storePictures(TestFront& front, std::uint8_t id);

/// Whether the download left the good picture, another one, or none.
[[nodiscard]] Ending endingOfFile(const std::string& name, const protocol::Bytes& good);

} // namespace faultmatrix
