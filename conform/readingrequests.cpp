#include "conform/readingrequests.h"

#include "link/protocol/frame.h"
#include "link/protocol/jsonenvelope.h"

#include <algorithm>

namespace conform {

namespace {

using protocol::code;
using protocol::Command;
using protocol::PropertyId;
namespace rules = protocol::rules;

// Longest texts that the tool reads.
constexpr std::size_t longestVersion = 48;
constexpr std::size_t longestQvVersion = 63;
constexpr std::size_t longestModel = 138;
constexpr std::size_t longestSerialNumber = 64;

ReadingRequest text(std::string_view name, Command command, PropertyId id, const protocol::ExchangeRule& rule,
                    std::size_t longest) {
    return {name, command, Family::text, {code(id)}, rule.timeoutMs.value_or(0), longest, 1};
}

ReadingRequest setting(std::string_view name, PropertyId id, std::size_t size,
                       Family family = Family::setting) {
    return {
        name, Command::getProperty, family, {code(id)}, rules::getCommonProperty.timeoutMs.value_or(0), size,
        size};
}

std::vector<ReadingRequest> framedReadings() {
    return {
        text("getAppVersion", Command::getProperty, PropertyId::appVersion, rules::getPropertyValue,
             longestVersion),
        text("getSystemVersion", Command::getProperty, PropertyId::systemVersion, rules::getPropertyValue,
             longestVersion),
        text("getSn", Command::getProperty, PropertyId::serialNumber, rules::getSn, longestSerialNumber),
        text("getQvVersion", Command::getInfo, PropertyId::qvVersion, rules::getQvVersion, longestQvVersion),
        text("getModelInfo", Command::getInfo, PropertyId::modelInfo, rules::getModelInfo, longestModel),
        setting("getProperty:6", PropertyId::compressionRate, 1),
        setting("getProperty:10", PropertyId::captureAngles, 2),
        setting("getProperty:11", PropertyId::captureDirection, 1),
        setting("getProperty:12", PropertyId::captureReserve, 1),
        setting("getProperty:13", PropertyId::gyroSwitch, 1),
        setting("getProperty:15", PropertyId::heaterDuty, 1),
        setting("getProperty:16", PropertyId::orientation,
                decltype(protocol::orientation_value::quantity)::size, Family::orientation),
        {"gyroTest",
         Command::gyroTest,
         Family::gyro,
         {protocol::gyro_test::property},
         protocol::gyro_test::timeoutMs,
         protocol::gyro_test::readSize},
    };
}

} // namespace

std::vector<ReadingRequest> readingRequests(protocol::CameraType type) {
    std::vector<ReadingRequest> all{{"heartbeat",
                                     Command::heartbeat,
                                     Family::heartbeat,
                                     {0x00},
                                     rules::testHeartBeat.timeoutMs.value_or(0)}};
    const auto pictures = protocol::infoOf(type).pictures;
    if (pictures == protocol::PictureCommands::json) {
        all.push_back({"jsonProperty", Command::json, Family::json,
                       protocol::bytesOf(protocol::jsonPropertyQuery()),
                       rules::quentaProperty.timeoutMs.value_or(0)});
        return all;
    }
    const std::vector<ReadingRequest> framed = framedReadings();
    all.insert(all.end(), framed.begin(), framed.end());
    const bool v1 = pictures == protocol::PictureCommands::v1;
    const protocol::ExchangeRule& rule = v1 ? rules::getPicInfosV1 : rules::getOriginPicInfos;
    all.push_back(
        {v1 ? "catalogueV1" : "catalogue", rule.command, Family::catalogue, {}, rule.timeoutMs.value_or(0)});
    return all;
}

const ReadingRequest* requestNamed(std::span<const ReadingRequest> requests, std::string_view name) {
    const auto found = std::find_if(requests.begin(), requests.end(),
                                    [name](const ReadingRequest& each) { return each.name == name; });
    return found == requests.end() ? nullptr : &*found;
}

protocol::Bytes requestBytes(const ReadingRequest& request, std::uint8_t address) {
    if (request.command == Command::json)
        return protocol::buildJsonRequest(protocol::ByteView(request.payload).toText());
    return protocol::buildFrame(code(request.command), request.payload, address);
}

} // namespace conform
