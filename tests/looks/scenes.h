// Every window of the program in its states.
#pragma once

#include <QWidget>

#include <functional>
#include <iosfwd>
#include <vector>

namespace looks {

/// Called for each shown window.
using See = std::function<void(QWidget&)>;

/// Opens windows with a virtual camera and shows each once.
struct Scene {
    const char* name;
    void (*play)(const See& see);
};

void PrintTo(const Scene& scene, std::ostream* out);

[[nodiscard]] const std::vector<Scene>& scenes();

} // namespace looks
