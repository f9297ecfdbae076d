// The mode --lesson of virtual-camera. What it prints is for the student, in Chinese.
#include "emulator/console.h"
#include "emulator/devicefront.h"
#include "emulator/lessonrun.h"
#include "emulator/ptyfront.h"

#include <iostream>

namespace emulator {

namespace {

void say(const std::string& line) {
    std::cout << line << std::endl;
}

int teach(LessonRun& run, CameraFront& front) {
    while (!endAsked() && (front.lineOpen() || run.unplugged())) {
        run.look();
        std::this_thread::sleep_for(lookEvery);
    }
    if (endAsked())
        return done;
    printFailure("the line is gone");
    return lineLost;
}

void movePlug(CameraFront& front, Plug plug) {
    auto& pty = static_cast<PtyFront&>(front);
    if (plug == Plug::comesOut)
        pty.vanish();
    else
        pty.comeBack();
}

} // namespace

int runLesson(const Options& options) {
    const Lesson* lesson = findLesson(options.lesson);
    if (lesson == nullptr) {
        std::cout << lessonListText();
        throw OptionError("--lesson: there is no lesson \"" + options.lesson + '"');
    }
    watchForEnd();
    const std::string title = "第 " + options.lesson + " 课：" + lesson->title;
    VirtualCamera camera(CameraType::ostra);
    if (!options.device.empty()) {
        DeviceFront front(std::move(camera), options.device);
        LessonRun run(*lesson, front, &say);
        say(title);
        say("摄像头在串口 " + options.device + " 的另一端。");
        return teach(run, front);
    }
    PtyFront front(std::move(camera));
    LessonRun run(*lesson, front, &say, &movePlug); // the camera is set up before anybody can find it
    if (!options.link.empty())
        front.linkAt(options.link);
    say(title);
    say("串口：" + (options.link.empty() ? front.portName() : options.link));
    return teach(run, front);
}

} // namespace emulator
