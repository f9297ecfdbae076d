#include "emulator/program/lessonrun.h"

namespace emulator {

LessonRun::LessonRun(const Lesson& lesson, CameraFront& front, Say say, MovePlug movePlug)
    : m_front(front), m_say(std::move(say)), m_movePlug(std::move(movePlug)), m_coach(lesson) {
    m_front.setTraits(parseLine(lesson.line));
}

void LessonRun::look() {
    const Time now = m_front.now();
    const LessonCoach::Remark remark =
        m_front.withCamera([this, now](VirtualCamera& camera) { return m_coach.look(camera, now); });
    for (const std::string& line : remark.lines)
        m_say(line);
    if (remark.line != nullptr)
        m_front.setTraits(parseLine(remark.line));
    if (remark.plug != Plug::stays)
        move(remark.plug);
}

void LessonRun::move(Plug plug) {
    m_unplugged = plug == Plug::comesOut;
    if (m_movePlug) {
        m_movePlug(plug == Plug::goesIn);
        return;
    }
    m_front.withCamera([this](VirtualCamera& camera) {
        if (m_unplugged)
            camera.addFault("silent");
        else
            camera.faults().clear();
    });
}

} // namespace emulator
