// A lesson on a line.
#pragma once

#include "emulator/lessons/lessons.h"
#include "emulator/line/camerafront.h"

namespace emulator {

/// Serves a lesson's camera on a front and moves its plug. The plug of a front that has none is the camera's
/// silence.
class LessonRun {
public:
    using Say = std::function<void(const std::string& line)>;
    using MovePlug = std::function<void(bool in)>;

    /// The lesson and the front, with a camera of type ostra, outlive the run. An empty movePlug: the front
    /// has no plug.
    LessonRun(const Lesson& lesson, CameraFront& front, Say say, MovePlug movePlug = {});

    /// To be called several times a second.
    void look();
    [[nodiscard]] bool solved() const { return m_coach.solved(); }
    /// The plug is out: that the line is gone means nothing.
    [[nodiscard]] bool unplugged() const { return m_unplugged; }

private:
    void move(Plug plug);

    CameraFront& m_front;
    Say m_say;
    MovePlug m_movePlug;
    LessonCoach m_coach;
    bool m_unplugged = false;
};

} // namespace emulator
