#include "emulator/lessons/lessonrun.h"

namespace emulator {

LessonRun::LessonRun(const Lesson& lesson, ServedCamera& camera, Say say, MovePlug movePlug)
    : m_camera(camera), m_say(std::move(say)), m_movePlug(std::move(movePlug)), m_coach(lesson) {
    m_camera.setTraits(parseLine(lesson.line));
}

void LessonRun::look() {
    LessonCoach::Remark remark;
    const Time now = m_camera.now();
    m_camera.useCamera([&](VirtualCamera& camera) { remark = m_coach.look(camera, now); });
    for (const std::string& line : remark.lines)
        m_say(line);
    if (remark.line != nullptr)
        m_camera.setTraits(parseLine(remark.line));
    if (remark.plug != Plug::stays)
        move(remark.plug);
}

void LessonRun::move(Plug plug) {
    m_unplugged = plug == Plug::comesOut;
    if (m_movePlug) {
        m_movePlug(plug == Plug::goesIn);
        return;
    }
    m_camera.useCamera([this](VirtualCamera& camera) {
        if (m_unplugged)
            camera.addFault("silent");
        else
            camera.faults().clear();
    });
}

} // namespace emulator
