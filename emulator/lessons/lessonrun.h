// A lesson on a line.
#pragma once

#include "emulator/lessons/lessons.h"
#include "emulator/line/servedcamera.h"

namespace emulator {

/// Runs a lesson with its camera, sets the line and moves the plug. Without a plug it silences the camera
/// instead.
class LessonRun {
public:
    using Say = std::function<void(const std::string& line)>;
    using MovePlug = std::function<void(bool in)>;

    /// Lesson and camera, of type ostra, outlive the run. Empty movePlug: no plug.
    LessonRun(const Lesson& lesson, ServedCamera& camera, Say say, MovePlug movePlug = {});

    /// Call it several times a second.
    void look();
    [[nodiscard]] bool solved() const { return m_coach.solved(); }
    /// True while the plug is out; a lost line is then no failure.
    [[nodiscard]] bool unplugged() const { return m_unplugged; }

private:
    void move(Plug plug);

    ServedCamera& m_camera;
    Say m_say;
    MovePlug m_movePlug;
    LessonCoach m_coach;
    bool m_unplugged = false;
};

} // namespace emulator
