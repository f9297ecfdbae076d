// Waiting for a camera that restarts after an upload.
#pragma once

#include "link/camerasp.h"

#include <chrono>
#include <functional>

/// One heartbeat after each interval.
struct ReturnAttempts {
    int attempts;
    std::chrono::milliseconds interval;
};

inline constexpr ReturnAttempts appReturn{8, std::chrono::milliseconds(2000)};
inline constexpr ReturnAttempts systemReturn{40, std::chrono::milliseconds(3000)};

/// True as soon as a heartbeat is answered; false after the last attempt or when the link is stopped.
/// `attempting` is told the number of each attempt, from 1.
[[nodiscard]] bool awaitReturn(CameraSp& camera, const ReturnAttempts& wait,
                               const std::function<void(int attempt)>& attempting);
