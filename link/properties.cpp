// Properties and the small status commands.
#include "link/camerasp.h"
#include "link/diagnostics.h"
#include "link/guarded.h"

#include <ctime>
#include <limits>

using namespace protocol;

namespace {

ExchangeRule withCommand(ExchangeRule rule, std::uint8_t command) {
    rule.command = static_cast<Command>(command);
    return rule;
}

/// Payload of the door command.
namespace door_layout {
constexpr Field<std::uint8_t> open{0};
constexpr Field<std::uint32_t> secondsSinceEpoch{1};
constexpr Field<std::uint8_t> sequence{5};
} // namespace door_layout

} // namespace

bool CameraSp::testHeartBeat() {
    return guarded(false, [&] {
        const Answer answer = exchange(rules::testHeartBeat, Bytes{0x00});
        for (const std::uint8_t byte : heartbeatBytes(answer.bytes))
            diagnostics::line("datas:", std::to_string(byte));
        diagnostics::line("hex str:", heartbeatText(answer.bytes));
        return isHeartbeatAnswer(answer.bytes);
    });
}

/// The generic property read. Its failures are plain texts caught here, as its log lines say which it was.
std::vector<std::uint8_t> CameraSp::readProperty(const ExchangeRule& rule, std::uint8_t id) {
    try {
        const Answer answer = exchange(rule, Bytes{id});
        if (!answer.accepted) {
            diagnostics::line("getCommonProperty error:", unsigned{id});
            throw "check failed in getCommonProperty";
        }
        const ByteView view(answer.bytes);
        if (view.get(answer_layout::propertyResult) != 0)
            throw "getCommonProperty result !=0x00";
        diagnostics::line("datalen:", view.get(frame_layout::payloadLength));
        Bytes value = propertyValue(view).toBytes();
        diagnostics::line("end commonproperty");
        return value;
    } catch (const char* text) {
        diagnostics::line("getCommonProperty error2:", text);
    } catch (const std::exception& error) {
        diagnostics::line("getCommonProperty error3:", error.what());
    } catch (...) {
        diagnostics::line("getCommonProperty error3:unknown error");
    }
    return {};
}

std::vector<std::uint8_t> CameraSp::getCommonProperty(std::uint8_t id, std::uint8_t command) {
    return readProperty(withCommand(rules::getCommonProperty, command), id);
}

std::string CameraSp::getPropertyValue(PropertyId id, Command command) {
    const Bytes value = readProperty(withCommand(rules::getPropertyValue, code(command)), code(id));
    return {value.begin(), std::find(value.begin(), value.end(), std::uint8_t{0})};
}

std::vector<std::uint8_t> CameraSp::getCommonPropertyWithoutParse(std::uint8_t id, std::uint8_t command,
                                                                  std::uint32_t timeoutMs,
                                                                  std::uint32_t readSize) {
    constexpr std::uint32_t largestRead = std::numeric_limits<std::int32_t>::max();
    ExchangeRule rule = withCommand(rules::getCommonPropertyWithoutParse, command);
    rule.timeoutMs = timeoutMs;
    rule.readSize = static_cast<std::int32_t>(std::min(readSize, largestRead));
    return guarded(Bytes(), [&] {
        Bytes read = exchange(rule, Bytes{id}).bytes;
        diagnostics::line("end commonpropertyWithoutParse");
        return read;
    });
}

bool CameraSp::setCommonProperty(std::uint8_t id, std::vector<std::uint8_t> value, std::uint8_t command) {
    return guarded(false, [&] {
        diagnostics::line("setCommonProperty data-length:", value.size(), "  cmd:", unsigned{command},
                          "  id:", unsigned{id});
        value.insert(value.begin(), id);
        const Answer answer = exchange(withCommand(rules::setCommonProperty, command), value);
        if (!answer.accepted) {
            diagnostics::line("setSnFailed"); // the text is shared with setSn
            return false;
        }
        const ByteView view(answer.bytes);
        const std::uint8_t result = view.get(answer_layout::propertyResult);
        diagnostics::line("set CommonProperty flag:", unsigned{view.get(answer_layout::propertyId)},
                          "  fg2:", unsigned{result});
        return result == 0;
    });
}

std::string CameraSp::getAppVersion() {
    return getPropertyValue(PropertyId::appVersion, Command::getProperty);
}

std::string CameraSp::getSystemVersion() {
    pause(std::chrono::milliseconds(100));
    diagnostics::line("delay 100ms");
    return getPropertyValue(PropertyId::systemVersion, Command::getProperty);
}

std::string CameraSp::getQvVersion() {
    diagnostics::line("qvversion delay 100ms"); // the line alone: there is no delay here
    return guarded(std::string(), [&]() -> std::string {
        const Answer answer = exchange(rules::getQvVersion, Bytes{code(PropertyId::qvVersion)});
        if (!answer.accepted || ByteView(answer.bytes).get(answer_layout::propertyResult) != 0) {
            diagnostics::line("propertyValue error:");
            return {};
        }
        return propertyValue(answer.bytes).toText();
    });
}

std::string CameraSp::getModelInfo() {
    return guarded(std::string(), [&]() -> std::string {
        const auto failed = [](const char* text) {
            diagnostics::line(text);
            return std::string();
        };
        const Answer answer = exchange(rules::getModelInfo, Bytes{code(PropertyId::modelInfo)});
        if (!answer.accepted)
            return failed("getModelInfo checkData error");
        const ByteView view(answer.bytes);
        if (view.get(answer_layout::propertyId) != code(PropertyId::modelInfo))
            return failed("getModelInfo id error");
        if (view.get(answer_layout::propertyResult) != 0)
            return failed("getModelInfo result error");
        diagnostics::line("getModel end");
        return propertyValue(view).toText();
    });
}

std::string CameraSp::getSn() {
    return guarded(std::string(), [&]() -> std::string {
        const Answer answer = exchange(rules::getSn, Bytes{code(PropertyId::serialNumber)});
        if (!answer.accepted) {
            diagnostics::line("getSnFailed");
            return {};
        }
        const ByteView view(answer.bytes);
        if (view.get(answer_layout::propertyId) != code(PropertyId::serialNumber) ||
            view.get(answer_layout::propertyResult) != 0) {
            diagnostics::line("get sn failed2");
            return {};
        }
        std::string sn = propertyValue(view).toText();
        diagnostics::line("get sn length:", view.get(frame_layout::payloadLength));
        diagnostics::line("sn:", sn);
        return sn;
    });
}

bool CameraSp::setSn(std::string sn) {
    return guarded(false, [&] {
        diagnostics::line("toset sn:", sn);
        diagnostics::line("str size:", sn.size());
        Bytes payload{code(PropertyId::serialNumber)};
        append(payload, bytesOf(sn));
        payload.push_back(0);
        const Answer answer = exchange(rules::setSn, payload);
        if (!answer.accepted) {
            diagnostics::line("setSnFailed");
            return false;
        }
        const ByteView view(answer.bytes);
        const std::uint8_t result = view.get(answer_layout::propertyResult);
        diagnostics::line("set sn flag:", unsigned{view.get(answer_layout::propertyId)},
                          "  fg2:", unsigned{result});
        return result == 0;
    });
}

bool CameraSp::restart(const ExchangeRule& rule) {
    return guarded(false, [&] {
        const Answer answer = exchange(rule, {});
        if (!answer.accepted) {
            diagnostics::line("reset failed"); // both texts serve the reboot as well
            return false;
        }
        if (ByteView(answer.bytes).get(answer_layout::status) != 0) {
            diagnostics::line("reset failed2");
            return false;
        }
        return true;
    });
}

bool CameraSp::rebootCamera() {
    return restart(rules::rebootCamera);
}

bool CameraSp::resetToFactory() {
    return restart(rules::resetToFactory);
}

void CameraSp::opDoor(bool open) {
    guarded(false, [&] {
        Bytes payload;
        put(payload, door_layout::open, static_cast<std::uint8_t>(open ? 1 : 0));
        put(payload, door_layout::secondsSinceEpoch,
            static_cast<std::uint32_t>(static_cast<std::uint64_t>(std::time(nullptr)) & 0xFFFFFFFFU));
        put(payload, door_layout::sequence, m_doorSequence++);
        exchange(rules::opDoor, payload);
        return true;
    });
}
