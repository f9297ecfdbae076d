#include "link/protocol/requests.h"

#include "link/protocol/jsonenvelope.h"

#include <algorithm>
#include <array>

namespace protocol {

namespace {

// clang-format off
constexpr std::array names = {
    RequestName{"heartbeat",     "heartbeat",                     code(Command::heartbeat),        {}},
    RequestName{"getAppVersion", "read application version",      code(Command::getProperty),      code(PropertyId::appVersion)},
    RequestName{"getSystemVersion", "read system version",        code(Command::getProperty),      code(PropertyId::systemVersion)},
    RequestName{"getSn",         "read serial number",            code(Command::getProperty),      code(PropertyId::serialNumber)},
    RequestName{"getProperty",   "read property",                 code(Command::getProperty),      {}},
    RequestName{"setSn",         "write serial number",           code(Command::setProperty),      code(PropertyId::serialNumber)},
    RequestName{"setProperty",   "write property",                code(Command::setProperty),      {}},
    RequestName{"reset",         "reset to factory settings",     code(Command::resetToFactory),   {}},
    RequestName{"reboot",        "reboot",                        code(Command::reboot),           {}},
    RequestName{"gyroTest",      "gyro test",                     code(Command::gyroTest),         {}},
    RequestName{"getQvVersion",  "read SDK version",              code(Command::getInfo),          code(PropertyId::qvVersion)},
    RequestName{"getModelInfo",  "read model information",        code(Command::getInfo),          code(PropertyId::modelInfo)},
    RequestName{"getInfo",       "read information",              code(Command::getInfo),          {}},
    RequestName{"door",          "door simulation",               code(Command::door),             {}},
    RequestName{"capture",       "capture a picture",             code(Command::originCapture),    {}},
    RequestName{"catalogue",     "list the pictures",             code(Command::originCatalogue),  {}},
    RequestName{"delete",        "delete pictures",               code(Command::originDelete),     {}},
    RequestName{"read",          "read a picture",                code(Command::originRead),       {}},
    RequestName{"captureV1",     "capture a picture (V1)",        code(Command::captureV1),        {}},
    RequestName{"catalogueV1",   "list the pictures (V1)",        code(Command::catalogueV1),      {}},
    RequestName{"deleteV1",      "delete pictures (V1)",          code(Command::deleteV1),         {}},
    RequestName{"readV1",        "read a picture (V1)",           code(Command::readV1),           {}},
    RequestName{"appUpdate",     "announce application image",    code(Command::appAnnounce),      {}},
    RequestName{"systemUpdate",  "announce system image",         code(Command::firewareAnnounce), {}},
    RequestName{"modelUpdate",   "announce model",                code(Command::modelAnnounce),    {}},
    RequestName{"appUpdateV1",   "announce application image (second protocol)", code(Command::appV1Announce), {}},
    RequestName{"packetV1",      "upload packet (second protocol)", code(Command::appV1Packet),    {}},
    RequestName{"jsonProperty",  "JSON property query",           jsonCode,                        jsonPropertyType},
    RequestName{"jsonPicture",   "JSON picture piece",            jsonCode,                        jsonPictureType},
    RequestName{"json",          "JSON request",                  jsonCode,                        {}},
};
// clang-format on

} // namespace

std::span<const RequestName> requestNames() {
    return names;
}

const RequestName* nameOf(const RequestKey& key) {
    const auto fits = [&key](const RequestName& name) {
        return name.code == key.code && (!name.detail || name.detail == key.detail);
    };
    const auto* const found = std::find_if(names.begin(), names.end(), fits);
    return found == names.end() ? nullptr : found;
}

} // namespace protocol
