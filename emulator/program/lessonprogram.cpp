// The mode --lesson of virtual-camera. It prints for the student, in Chinese.
#include "emulator/lessons/lessonrun.h"
#include "emulator/line/devicefront.h"
#include "emulator/line/terminalcamera.h"
#include "emulator/program/console.h"
#include "language/language.h"

#include <iostream>

namespace emulator {

namespace {

void say(const std::string& line) {
    std::cout << line << std::endl;
}

int teach(LessonRun& run, CameraFront& front) {
    const bool stopped = waitWhile([&] {
        const bool present = front.lineOpen() || run.unplugged();
        const bool solvedBefore = run.solved();
        if (present)
            run.look();
        if (run.solved() && !solvedBefore)
            say("这一课完成了。按 Ctrl+C 结束。");
        return present;
    });
    if (stopped)
        return done;
    printFailure(language::sentence("the line is gone"));
    return lineLost;
}

} // namespace

int runLesson(const Options& options) {
    const Lesson* lesson = findLesson(options.lesson);
    language::chooseChinese();
    watchForStop();
    const std::string title = "第 " + options.lesson + " 课：" + lesson->title;
    if (!options.device.empty()) {
        DeviceFront front(lessonCamera(*lesson), options.device);
        LessonRun run(*lesson, front, &say);
        say(title);
        say("摄像头在串口 " + options.device + " 的另一端。");
        return teach(run, front);
    }
    const TerminalCamera terminal = serveOnNewTerminal(lessonCamera(*lesson), options.link);
    LessonRun run(*lesson, *terminal.front, &say, terminal.plug);
    say(title);
    say("串口：" + (options.link.empty() ? terminal.portName : options.link));
    if (options.link.empty())
        say("工具的串口列表里没有这个名字：请用 sudo virtual-camera --lesson " + options.lesson +
            " --link /dev/ttyUSB9 重新开始，再在工具里选择 /dev/ttyUSB9。命令行用 shelf-camera -p " +
            terminal.portName + "。");
    sayWhoOpens(options.link.empty() ? terminal.portName : options.link);
    return teach(run, *terminal.front);
}

} // namespace emulator
