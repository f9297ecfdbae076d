#include "emulator/lessons/lessons.h"

#include "link/protocol/commands.h"

#include <algorithm>

namespace emulator {

namespace {

using protocol::code;
using protocol::Command;
using protocol::PropertyId;

constexpr std::uint8_t plateAddress = 0x05;
constexpr std::uint32_t plateBaudRate = 230400;
constexpr Time plugOut = std::chrono::seconds(3);
constexpr Time slowBootTime = std::chrono::seconds(12);

/// Number of requests that the camera accepted, optionally with this first payload byte.
std::ptrdiff_t heard(const LessonView& view, Command command,
                     std::optional<std::uint8_t> detail = std::nullopt) {
    const auto& frames = view.record.frames;
    return std::count_if(frames.begin(), frames.end(), [&](const ReceivedFrame& frame) {
        return frame.wellFormed && !frame.json && frame.addressRight && frame.heard &&
               frame.code == code(command) &&
               (!detail || (!frame.payload.empty() && frame.payload.front() == *detail));
    });
}

bool heartbeatHeard(const LessonView& view) {
    return heard(view, Command::heartbeat) > 0;
}

bool versionHeard(const LessonView& view) {
    return heard(view, Command::getProperty, code(PropertyId::appVersion)) > 0;
}

bool rebootHeard(const LessonView& view) {
    return heard(view, Command::reboot) > 0;
}

bool settingHeard(const LessonView& view) {
    return heard(view, Command::setProperty) > 0;
}

bool calledWhileStarting(const LessonView& view) {
    const auto& frames = view.record.frames;
    return std::any_of(frames.begin(), frames.end(), [](const ReceivedFrame& frame) { return !frame.heard; });
}

void noFaults(VirtualCamera& camera) {
    camera.faults().clear();
}

Lesson healthyCamera() {
    return {"正常的摄像头",
            "打开串口，测试心跳，读取版本，拍照。",
            "摄像头一切正常。先看清楚正常时是什么样子。\n"
            "1. 选择串口，波特率 460800，点击“打开串口”。\n"
            "2. 点击“心跳测试”，灯变绿。",
            nullptr,
            {{&heartbeatHeard, "做得好：摄像头有应答，灯是绿的。下一步：点击“获取版本号”。", nullptr},
             {&versionHeard, "做得好：摄像头报告了版本。下一步：点击“拍照”。", nullptr},
             {[](const LessonView& view) { return heard(view, Command::originRead) > 0; },
              "做得好：图片已经传给工具，显示在左上方。", nullptr}},
            {}};
}

Lesson wrongAddress() {
    return {"从机地址不对",
            "看出地址不对，核对并修改从机地址。",
            "摄像头的铭牌上写着：从机地址 05。\n"
            "1. 打开串口，点击“心跳测试”：灯不亮。\n"
            "2. 打开菜单“设置 → 摄像头设置”，在“从机地址设置(十六进制)”里输入 05，点击“确认”。\n"
            "3. 再点击“心跳测试”。",
            [](VirtualCamera& camera) { camera.settings().address = plateAddress; },
            {{&heartbeatHeard, "做得好：地址对了，摄像头有应答，灯变绿。", nullptr}},
            {{[](const LessonView& view) { return view.record.foreignFrames > 0; },
              "线路是通的：摄像头听到了命令，但命令是发给别的地址的，所以不应答。请核对从机地址。"}}};
}

Lesson wrongBaudRate() {
    return {"波特率不对",
            "看出波特率不对，换波特率再打开串口。",
            "摄像头的铭牌上写着：波特率 230400。\n"
            "1. 用波特率 460800 打开串口，点击“心跳测试”：灯不亮。\n"
            "2. 点击“关闭串口”，选择波特率 230400，点击“打开串口”。\n"
            "3. 再点击“心跳测试”。",
            [](VirtualCamera& camera) {
                camera.settings().baudRate = plateBaudRate;
                camera.settings().mindsBaudRate = true;
            },
            {{&heartbeatHeard, "做得好：波特率对了，摄像头有应答，灯变绿。", nullptr}},
            {{[](const LessonView& view) { return view.record.garbageBytes > 0; },
              "摄像头收到的是乱码，所以不应答：工具用的是另一个波特率。请关闭串口，换波特率再打开。"}}};
}

Lesson loosePlug() {
    return {
        "插头松动",
        "看出线路的问题，插紧之后重新打开串口。",
        "转接器的插头松了，应答有时缺几个字节。\n"
        "1. 打开串口，连续点击“心跳测试”四次：灯有时亮，有时不亮。\n"
        "2. 时好时坏，多半是线路的问题，不是设置的问题。",
        [](VirtualCamera& camera) {
            camera.addFault("truncate=4@any#2");
            camera.addFault("truncate=4@any#4+");
        },
        {{[](const LessonView& view) { return heard(view, Command::heartbeat) >= 4; },
          "插头现在完全脱开了：再点击“心跳测试”，灯不亮。请等 3 秒。", &noFaults, Plug::comesOut},
         {[](const LessonView& view) { return view.since >= plugOut; },
          "插头已经插紧。串口断开过，必须重新打开：点击“关闭串口”，再点击“打开串口”，然后点击“心跳测试”。",
          nullptr, Plug::goesIn},
         {&heartbeatHeard, "做得好：插紧并重新打开串口之后，摄像头又有应答了。", nullptr}},
        {}};
}

Lesson badContact() {
    return {"松动的插头",
            "看信号质量，核对读到的值。",
            "插头松了，但没有脱开：字节有时丢失，有时变样。\n"
            "1. 打开串口，点击“心跳测试”十次：灯有时亮，有时不亮。\n"
            "2. 状态栏显示“有干扰”，鼠标停在上面，看没有应答和损坏的次数。",
            nullptr,
            {{[](const LessonView& view) { return heard(view, Command::heartbeat) >= 6; },
              "时好时坏，是线路的问题，不是摄像头的问题。下一步：点击“获取版本号”三次，比较每次的版本。",
              nullptr},
             {[](const LessonView& view) {
                  return heard(view, Command::getProperty, code(PropertyId::appVersion)) >= 2;
              },
              "线路不好时，读到的值也可能是错的：读两次，一样才记下。现在拔下插头重新插紧，请等 3 秒。",
              nullptr, Plug::comesOut},
             {[](const LessonView& view) { return view.since >= plugOut; },
              "插头已经重新插紧。点击“关闭串口”，再点击“打开串口”，然后点击“心跳测试”五次。", &noFaults,
              Plug::goesIn, "good"},
             {[](const LessonView& view) { return heard(view, Command::heartbeat) >= 5; },
              "做得好：灯每次都亮，状态栏显示“信号良好”。", nullptr}},
            {},
            "loose-plug"};
}

Lesson refusingCamera() {
    return {"摄像头拒绝设置",
            "分清线路的问题和摄像头的拒绝。",
            "摄像头有应答，但是拒绝一切设置。\n"
            "1. 打开串口，点击“心跳测试”：灯是绿的。\n"
            "2. 打开菜单“功能 → 查询与设置属性 → 加热丝占空比”，选择 "
            "40，点击“设置”：显示“设置占空比失败，请重试”。",
            [](VirtualCamera& camera) { camera.addFault("result=1@setProperty"); },
            {{&settingHeard,
              "摄像头回答了，结果是拒绝：线路和地址都没有问题，再试也没有用。下一步：点击菜单“功能 → "
              "重启摄像头”，确认“是”。",
              nullptr},
             {&rebootHeard, "摄像头正在重启，约 3 秒。等心跳恢复之后，再设置一次加热丝占空比。", &noFaults},
             {&settingHeard, "做得好：重启之后摄像头接受了设置，显示“设置成功!”。", nullptr}},
            {}};
}

Lesson slowBoot() {
    return {"启动很慢",
            "重启之后耐心等待，不断电，不拔线。",
            "摄像头正常，但是启动很慢。\n"
            "1. 打开串口，点击菜单“功能 → 重启摄像头”，确认“是”。\n"
            "2. 点击“心跳测试”：灯不亮。不要断电，不要拔线，过几秒再试。",
            [](VirtualCamera& camera) { camera.settings().rebootTime = slowBootTime; },
            {{&rebootHeard, "摄像头开始重启，约 12 秒没有应答。请隔几秒点击一次“心跳测试”，直到灯变绿。",
              [](VirtualCamera& camera) { camera.addFault("delay=500@heartbeat#1-2"); }},
             {&heartbeatHeard,
              "摄像头已经启动，但还很忙：应答来得比工具等待的 0.2 秒晚，灯仍然不亮。请再点击“心跳测试”。",
              nullptr},
             {[](const LessonView& view) { return heard(view, Command::heartbeat) >= 2; },
              "做得好：耐心等待之后摄像头恢复正常，灯变绿。", nullptr}},
            {{&calledWhileStarting, "摄像头还在启动，听不到命令。这不是故障，请等待。"}}};
}

Lesson upload() {
    return {
        "升级应用固件",
        "升级应用固件，升级之后核对。",
        "把一个文件作为应用固件发给摄像头。虚拟摄像头接受任何文件。\n"
        "1. 打开串口，点击“获取版本号”，记下升级前的版本。\n"
        "2. 点击“App固件路径”，选择一个不到 1 MB 的文件，点击“App固件升级”。\n"
        "3. 等待结果。升级时不要断电，不要拔线。",
        nullptr,
        {{&versionHeard,
          "做得好：升级前的版本要记下。下一步：点击“App固件路径”，选择文件，再点击“App固件升级”。", nullptr},
         {[](const LessonView& view) {
              const auto& uploads = view.record.uploads;
              return std::any_of(uploads.begin(), uploads.end(),
                                 [](const UploadRecord& each) { return each.digestRight; });
          },
          "文件完整到达，摄像头正在重启，约 3 秒。等到显示“升级已完成，结果:true”，再点击“获取版本号”。",
          nullptr},
         {&versionHeard, "做得好：升级完成，摄像头恢复了工作。", nullptr}},
        {}};
}

void appendLines(std::vector<std::string>& lines, std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

} // namespace

std::span<const Lesson> lessons() {
    static const std::array all = {healthyCamera(),  wrongAddress(), wrongBaudRate(), loosePlug(),
                                   refusingCamera(), slowBoot(),     badContact(),    upload()};
    return all;
}

const Lesson* findLesson(const std::string& number) {
    const auto parsed = parseNumber(number);
    const bool known = parsed && *parsed >= 1 && *parsed <= static_cast<std::int64_t>(lessons().size());
    return known ? &lessons()[static_cast<std::size_t>(*parsed - 1)] : nullptr;
}

std::string lessonListText() {
    std::string text = "课程：\n";
    std::size_t number = 0;
    for (const Lesson& lesson : lessons())
        text += "  " + std::to_string(++number) + "  " + lesson.title + "\n";
    return text + "开始一课：virtual-camera --lesson 1\n";
}

std::string knownLessons() {
    std::string known;
    for (std::size_t number = 1; number <= lessons().size(); ++number)
        known += (known.empty() ? "" : ", ") + std::to_string(number);
    return known;
}

VirtualCamera lessonCamera(const Lesson& lesson) {
    VirtualCamera camera(CameraType::ostra);
    if (lesson.setUp != nullptr)
        lesson.setUp(camera);
    return camera;
}

LessonCoach::Remark LessonCoach::look(VirtualCamera& camera, Time now) {
    Remark remark;
    if (!m_stepBegan) {
        m_stepBegan = now;
        appendLines(remark.lines, m_lesson.introduction);
    }
    if (solved() || camera.uploading()) // which writes into the record until it ends
        return remark;
    const LessonView view{camera.record(), now - *m_stepBegan};
    const LessonStep& step = m_lesson.steps[m_step];
    if (!step.done(view)) {
        for (std::size_t i = 0; i < m_lesson.hints.size(); ++i) {
            if (m_hinted[i] || !m_lesson.hints[i].applies(view))
                continue;
            m_hinted[i] = true;
            appendLines(remark.lines, m_lesson.hints[i].text);
        }
        return remark;
    }
    appendLines(remark.lines, step.text);
    if (step.change != nullptr)
        step.change(camera);
    remark.plug = step.plug;
    remark.line = step.line;
    camera.clearRecord();
    m_stepBegan = now;
    ++m_step;
    return remark;
}

} // namespace emulator
