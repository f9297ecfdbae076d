// Properties and the small status commands.
#include "link/camerasp.h"
#include "link/diagnostics.h"
#include "link/protocol/commands.h"
#include "link/protocol/door.h"
#include "link/runcommand.h"

#include <ctime>
#include <optional>

using namespace protocol;

namespace {

ExchangeRule withCommand(ExchangeRule rule, std::uint8_t command) {
    rule.command = static_cast<Command>(command);
    return rule;
}

/// The generic property read. Logs an unusable answer or an exception.
Bytes readProperty(CameraLine& line, const ExchangeRule& rule, std::uint8_t id) {
    const auto failed = [](const char* text) {
        diagnostics::line("getCommonProperty error2:", text);
        return Bytes();
    };
    return runCommand(line, LineUser::command, {"getCommonProperty error3:", {}}, Bytes(), [&] {
        const CameraLine::Answer answer = line.exchange(rule, Bytes{id});
        if (!answer.accepted) {
            diagnostics::line("getCommonProperty error:", unsigned{id});
            return failed("check failed in getCommonProperty");
        }
        const ByteView view(answer.bytes);
        if (view.get(answer_layout::propertyResult) != answer_result::success) {
            line.setEnd(CommandEnd::refused);
            return failed("getCommonProperty result !=0x00");
        }
        diagnostics::line("datalen:", view.get(frame_layout::payloadLength));
        Bytes value = propertyValue(view).toBytes();
        if (value.empty())
            line.setEnd(CommandEnd::empty);
        diagnostics::line("end commonproperty");
        return value;
    });
}

/// Nothing: to the address of the line's requests.
bool heartBeat(CameraLine& line, std::optional<std::uint8_t> address) {
    return runCommand(line, LineUser::command, {}, false, [&] {
        const ExchangeRule& rule = rules::testHeartBeat;
        const Bytes payload{0x00};
        const CameraLine::Answer answer =
            line.exchangeRequest(rule, address ? buildFrame(code(rule.command), payload, *address)
                                               : line.buildRequest(rule, payload));
        for (const std::uint8_t byte : heartbeatBytes(answer.bytes))
            diagnostics::line("datas:", std::to_string(byte));
        diagnostics::line("hex str:", heartbeatText(answer.bytes));
        const bool alive = isHeartbeatAnswer(answer.bytes);
        if (!alive && !answer.bytes.empty())
            line.setEnd(CommandEnd::unusable);
        return alive;
    });
}

/// The text in an accepted answer.
std::string textOf(CameraLine& line, ByteView answer) {
    std::string text = propertyValue(answer).toText();
    if (text.empty())
        line.setEnd(CommandEnd::empty);
    return text;
}

/// Result of a command that answers with success or failure only.
bool succeeded(CameraLine& line, unsigned result) {
    if (result != answer_result::success)
        line.setEnd(CommandEnd::refused);
    return result == answer_result::success;
}

/// rebootCamera and resetToFactory; the log texts serve both.
bool restart(CameraLine& line, const ExchangeRule& rule) {
    static constexpr const char* unanswered = "reset failed";
    return runCommand(line, LineUser::command, unanswered, false, [&] {
        const CameraLine::Answer answer = line.exchange(rule, {});
        if (!answer.accepted) {
            diagnostics::line(unanswered);
            return false;
        }
        if (succeeded(line, ByteView(answer.bytes).get(answer_layout::status)))
            return true;
        diagnostics::line("reset failed2");
        return false;
    });
}

} // namespace

bool CameraSp::testHeartBeat() {
    return heartBeat(*m_line, std::nullopt);
}

bool CameraSp::testHeartBeatAt(std::uint8_t address) {
    return heartBeat(*m_line, address);
}

std::vector<std::uint8_t> CameraSp::getCommonProperty(std::uint8_t id, std::uint8_t command) {
    return readProperty(*m_line, withCommand(rules::getCommonProperty, command), id);
}

std::string CameraSp::getPropertyValue(std::uint8_t id, std::uint8_t command) {
    const Bytes value = readProperty(*m_line, withCommand(rules::getPropertyValue, command), id);
    return {value.begin(), std::find(value.begin(), value.end(), std::uint8_t{0})};
}

std::vector<std::uint8_t> CameraSp::getCommonPropertyWithoutParse(std::uint8_t id, std::uint8_t command,
                                                                  std::uint32_t timeoutMs,
                                                                  std::uint32_t readSize) {
    ExchangeRule rule = withCommand(rules::getCommonPropertyWithoutParse, command);
    rule.timeoutMs = timeoutMs;
    rule.readSize = readSize;
    return runCommand(*m_line, LineUser::command, {}, Bytes(), [&] {
        Bytes read = m_line->exchange(rule, Bytes{id}).bytes;
        diagnostics::line("end commonpropertyWithoutParse");
        return read;
    });
}

bool CameraSp::setCommonProperty(std::uint8_t id, std::vector<std::uint8_t> value, std::uint8_t command) {
    static constexpr const char* unanswered = "setSnFailed"; // the text is shared with setSn
    return runCommand(*m_line, LineUser::command, unanswered, false, [&] {
        diagnostics::line("setCommonProperty data-length:", value.size(), "  cmd:", unsigned{command},
                          "  id:", unsigned{id});
        value.insert(value.begin(), id);
        const CameraLine::Answer answer =
            m_line->exchange(withCommand(rules::setCommonProperty, command), value);
        if (!answer.accepted) {
            diagnostics::line(unanswered);
            return false;
        }
        const ByteView view(answer.bytes);
        const std::uint8_t result = view.get(answer_layout::propertyResult);
        diagnostics::line("set CommonProperty flag:", unsigned{view.get(answer_layout::propertyId)},
                          "  fg2:", unsigned{result});
        return succeeded(*m_line, result);
    });
}

std::string CameraSp::getAppVersion() {
    return getPropertyValue(code(PropertyId::appVersion), code(Command::getProperty));
}

std::string CameraSp::getSystemVersion() {
    pause(std::chrono::milliseconds(100));
    diagnostics::line("delay 100ms");
    return getPropertyValue(code(PropertyId::systemVersion), code(Command::getProperty));
}

std::string CameraSp::getQvVersion() {
    static constexpr const char* failureText = "propertyValue error:";
    diagnostics::line("qvversion delay 100ms"); // the line alone: there is no delay here
    return runCommand(*m_line, LineUser::command, failureText, std::string(), [&]() -> std::string {
        const CameraLine::Answer answer =
            m_line->exchange(rules::getQvVersion, Bytes{code(PropertyId::qvVersion)});
        if (!answer.accepted ||
            !succeeded(*m_line, ByteView(answer.bytes).get(answer_layout::propertyResult))) {
            diagnostics::line(failureText);
            return {};
        }
        return textOf(*m_line, answer.bytes);
    });
}

std::string CameraSp::getModelInfo() {
    static constexpr const char* unanswered = "getModelInfo checkData error";
    return runCommand(*m_line, LineUser::command, unanswered, std::string(), [&]() -> std::string {
        const auto failed = [](const char* text) {
            diagnostics::line(text);
            return std::string();
        };
        const CameraLine::Answer answer =
            m_line->exchange(rules::getModelInfo, Bytes{code(PropertyId::modelInfo)});
        if (!answer.accepted)
            return failed(unanswered);
        const ByteView view(answer.bytes);
        if (view.get(answer_layout::propertyId) != code(PropertyId::modelInfo)) {
            m_line->setEnd(CommandEnd::unusable);
            return failed("getModelInfo id error");
        }
        if (!succeeded(*m_line, view.get(answer_layout::propertyResult)))
            return failed("getModelInfo result error");
        diagnostics::line("getModel end");
        return textOf(*m_line, view);
    });
}

std::string CameraSp::getSn() {
    static constexpr const char* unanswered = "getSnFailed";
    return runCommand(*m_line, LineUser::command, unanswered, std::string(), [&]() -> std::string {
        const CameraLine::Answer answer =
            m_line->exchange(rules::getSn, Bytes{code(PropertyId::serialNumber)});
        if (!answer.accepted) {
            diagnostics::line(unanswered);
            return {};
        }
        const ByteView view(answer.bytes);
        const bool echoed = view.get(answer_layout::propertyId) == code(PropertyId::serialNumber);
        if (!echoed)
            m_line->setEnd(CommandEnd::unusable);
        if (!echoed || !succeeded(*m_line, view.get(answer_layout::propertyResult))) {
            diagnostics::line("get sn failed2");
            return {};
        }
        std::string sn = textOf(*m_line, view);
        diagnostics::line("get sn length:", view.get(frame_layout::payloadLength));
        diagnostics::line("sn:", sn);
        return sn;
    });
}

bool CameraSp::setSn(std::string sn) {
    static constexpr const char* unanswered = "setSnFailed";
    return runCommand(*m_line, LineUser::command, unanswered, false, [&] {
        diagnostics::line("toset sn:", sn);
        diagnostics::line("str size:", sn.size());
        Bytes payload{code(PropertyId::serialNumber)};
        append(payload, bytesOf(sn));
        payload.push_back(0);
        const CameraLine::Answer answer = m_line->exchange(rules::setSn, payload);
        if (!answer.accepted) {
            diagnostics::line(unanswered);
            return false;
        }
        const ByteView view(answer.bytes);
        const std::uint8_t result = view.get(answer_layout::propertyResult);
        diagnostics::line("set sn flag:", unsigned{view.get(answer_layout::propertyId)},
                          "  fg2:", unsigned{result});
        return succeeded(*m_line, result);
    });
}

bool CameraSp::rebootCamera() {
    return restart(*m_line, rules::rebootCamera);
}

bool CameraSp::resetToFactory() {
    return restart(*m_line, rules::resetToFactory);
}

void CameraSp::opDoor(bool open) {
    runCommand(*m_line, LineUser::command, {}, false, [&] {
        Bytes payload;
        put(payload, door_layout::open, static_cast<std::uint8_t>(open ? 1 : 0));
        put(payload, door_layout::secondsSinceEpoch,
            static_cast<std::uint32_t>(static_cast<std::uint64_t>(std::time(nullptr)) & 0xFFFFFFFFU));
        put(payload, door_layout::sequence, m_doorSequence++);
        m_line->exchange(rules::opDoor, payload);
        return true;
    });
}
