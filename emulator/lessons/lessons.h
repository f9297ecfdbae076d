// The course for technicians: virtual cameras with something to find out, and what is said about it (in
// Chinese).
#pragma once

#include "emulator/camera/virtualcamera.h"

#include <span>

namespace emulator {

/// What the camera has seen since the present step of a lesson began.
struct LessonView {
    const CameraRecord& record;
    Time since; ///< how long ago that was
};

/// What happens to the plug after a step.
enum class Plug { stays, comesOut, goesIn };

/// Said once, when it comes true within a step.
struct LessonHint {
    bool (*applies)(const LessonView& view) = nullptr;
    const char* text = nullptr;
};

struct LessonStep {
    bool (*done)(const LessonView& view) = nullptr;
    const char* text = nullptr; ///< said when done: praise, and what to do next
    /// Changes the camera for the next step; may be null.
    void (*change)(VirtualCamera& camera) = nullptr;
    Plug plug = Plug::stays;
};

struct Lesson {
    const char* title = nullptr;
    const char* introduction = nullptr;             ///< what the technician sees and is to do
    void (*setUp)(VirtualCamera& camera) = nullptr; ///< may be null
    std::vector<LessonStep> steps;
    std::vector<LessonHint> hints;
};

[[nodiscard]] std::span<const Lesson> lessons();
/// By its number, counted from 1, as text; nullptr when there is none.
[[nodiscard]] const Lesson* findLesson(const std::string& number);
/// Numbers and titles.
[[nodiscard]] std::string lessonListText();

/// The camera of a lesson, as it is at the beginning.
[[nodiscard]] VirtualCamera lessonCamera(const Lesson& lesson);

/// Goes through one lesson with its camera. No clock and no line: whoever serves the camera looks now and
/// then.
class LessonCoach {
public:
    /// The lesson outlives the coach.
    explicit LessonCoach(const Lesson& lesson) : m_lesson(lesson), m_hinted(lesson.hints.size(), false) {}

    struct Remark {
        std::vector<std::string> lines; ///< to be said
        Plug plug = Plug::stays;        ///< to be done, by whoever serves the camera
    };
    [[nodiscard]] Remark look(VirtualCamera& camera, Time now);
    /// The student has done it all.
    [[nodiscard]] bool solved() const { return m_step == m_lesson.steps.size(); }

private:
    const Lesson& m_lesson;
    std::size_t m_step = 0;
    std::vector<bool> m_hinted;
    std::optional<Time> m_stepBegan;
};

} // namespace emulator
