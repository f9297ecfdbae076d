// Cameras with one planted deviation each.
#pragma once

#include "tests/conform/examined.h"

#include <functional>

namespace conformtest {

struct Planted {
    std::string name;
    emulator::CameraType type = emulator::CameraType::ostra;
    std::function<void(VirtualCamera& camera)> plant;
    /// Checks that must find it; no other may, but that of the tool.
    std::set<std::string> checks;
    std::string line; ///< of the profile
};

void PrintTo(const Planted& planted, std::ostream* out);

[[nodiscard]] const std::vector<Planted>& plantedDeviations();
[[nodiscard]] Examined examinedWith(const Planted& planted);

} // namespace conformtest
