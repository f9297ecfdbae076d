// Lessons for technicians: virtual cameras with a problem to find, and their texts, in Chinese.
#pragma once

#include "emulator/camera/virtualcamera.h"

#include <span>

namespace emulator {

/// Record of the camera since the start of the current step.
struct LessonView {
    const CameraRecord& record;
    Time since; ///< time since the start of the step
};

/// Change of the plug after a step.
enum class Plug { stays, comesOut, goesIn };

/// Printed once, when it first applies.
struct LessonHint {
    bool (*applies)(const LessonView& view) = nullptr;
    const char* text = nullptr;
};

struct LessonStep {
    bool (*done)(const LessonView& view) = nullptr;
    const char* text = nullptr; ///< printed when done: praise and the next task
    /// Changes the camera for the next step; may be null.
    void (*change)(VirtualCamera& camera) = nullptr;
    Plug plug = Plug::stays;
    const char* line = nullptr; ///< from then on, as --line takes it; null: unchanged
};

struct Lesson {
    const char* title = nullptr;
    const char* learns = nullptr;                   ///< what one can do afterwards
    const char* introduction = nullptr;             ///< symptoms and task
    void (*setUp)(VirtualCamera& camera) = nullptr; ///< may be null
    std::vector<LessonStep> steps;
    std::vector<LessonHint> hints;
    const char* line = "good"; ///< at the start, as --line takes it
};

[[nodiscard]] std::span<const Lesson> lessons();
/// The lesson with this number, counted from 1; nullptr for any other text.
[[nodiscard]] const Lesson* findLesson(const std::string& number);
/// "1, 2, ..."
[[nodiscard]] std::string knownLessons();
/// Numbers and titles.
[[nodiscard]] std::string lessonListText();

/// The camera of a lesson in its initial state.
[[nodiscard]] VirtualCamera lessonCamera(const Lesson& lesson);

/// Guides through one lesson with its camera. No clock and no line: the front's user calls look() regularly.
class LessonCoach {
public:
    /// The lesson outlives the coach.
    explicit LessonCoach(const Lesson& lesson) : m_lesson(lesson), m_hinted(lesson.hints.size(), false) {}

    struct Remark {
        std::vector<std::string> lines; ///< to print
        Plug plug = Plug::stays;        ///< for the caller to do, as the next
        const char* line = nullptr;     ///< null: unchanged
    };
    [[nodiscard]] Remark look(VirtualCamera& camera, Time now);
    /// All steps are done.
    [[nodiscard]] bool solved() const { return m_step == m_lesson.steps.size(); }

private:
    const Lesson& m_lesson;
    std::size_t m_step = 0;
    std::vector<bool> m_hinted;
    std::optional<Time> m_stepBegan;
};

} // namespace emulator
