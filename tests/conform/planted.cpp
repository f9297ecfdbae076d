#include "tests/conform/planted.h"

#include <algorithm>
#include <ostream>

namespace conformtest {

namespace {

using emulator::CameraType;
using emulator::OrientationItem;
using namespace std::chrono_literals;

/// A fault, found by one check and written as it is.
Planted fault(const std::string& name, const std::string& text, const std::string& check,
              CameraType type = CameraType::ostra) {
    return {name, type, [text](VirtualCamera& camera) { camera.addFault(text); }, {check}, "fault " + text};
}

Planted changed(const std::string& name, std::function<void(VirtualCamera& camera)> plant,
                std::set<std::string> checks, const std::string& line) {
    return {name, CameraType::ostra, std::move(plant), std::move(checks), line};
}

void setOrientation(VirtualCamera& camera, const std::array<std::uint32_t, 4>& values) {
    for (std::size_t i = 0; i < values.size(); ++i)
        camera.state().orientation.at(i).value = values.at(i);
}

std::vector<Planted> faults() {
    return {
        fault("SilentToModel", "silent@getModelInfo", "answered"),
        fault("SilentToProperty12", "silent@getProperty:12", "answered"),
        fault("BytesBefore", "before=AA33@getSn", "start"),
        fault("StrayBytes", "stray=2@getAppVersion", "end"),
        fault("AnswersTwice", "glue@getProperty:10", "end"),
        fault("BytesMissing", "truncate=3@getQvVersion", "complete"),
        fault("LengthTooLarge", "length=+1@getSystemVersion", "length"),
        fault("LengthTooSmall", "length=-1@getProperty:13", "length"),
        fault("AnotherAddress", "address=0x55@getSn", "address"),
        fault("AnotherCommand", "command=0x21@getProperty:15", "command"),
        fault("WrongCheckCode", "bad-check@getModelInfo", "check-code"),
        fault("ZeroCheckCode", "zero-check@catalogue", "check-code"),
        fault("TwoPieces", "split=4,30@getAppVersion", "one-piece"),
        fault("HeartbeatStatus", "result=0x02@heartbeat", "heartbeat-status"),
        fault("AnotherId", "echo=0x63@getProperty:6", "property-id"),
        fault("FailureWithValue", "result=0x01@getProperty:11", "property-result"),
        fault("RefusesWithoutId", "refuse@getProperty:13", "property-payload"),
        fault("EmptyPayload", "payload=0@getProperty:10", "property-payload"),
        fault("CatalogueCount", "count=200@catalogue", "catalogue-count"),
        fault("CatalogueSize", "payload=41@catalogue", "catalogue-size"),
        fault("V1CatalogueCount", "count=9@catalogueV1", "catalogue-count", CameraType::salesDynamic),
        fault("JsonCheckCode", "bad-check@jsonProperty", "check-code", CameraType::quenta),
        fault("JsonLength", "length=+1@jsonProperty", "length", CameraType::quenta),
    };
}

std::vector<Planted> values() {
    return {
        changed(
            "HeaterBeyond100", [](auto& camera) { camera.state().properties[15] = {130}; }, {"heater"},
            "value getProperty:15 82"),
        changed(
            "OneAngle", [](auto& camera) { camera.state().properties[10] = {30}; }, {"angles"},
            "value getProperty:10 1e"),
        changed(
            "ZeroInVersion", [](auto& camera) { camera.state().appVersion = std::string("2\0", 2) + "3"; },
            {"app-version"}, "value getAppVersion 320033"),
        changed(
            "GyroFails", [](auto& camera) { camera.state().gyroText = "3fail"; }, {"gyro-test"},
            "text gyroTest 3fail"),
        changed(
            "YawUnknown",
            [](auto& camera) { camera.state().orientation[2].answer = OrientationItem::Answer::sentinel; },
            {"orientation-known"}, "orientation 45 3 unknown 981"),
        changed(
            "OrientationOrder",
            [](auto& camera) {
                setOrientation(camera, {981, 45, 3, 120});
            },
            {"orientation-order"}, "orientation 981 45 3 120"),
        {"JsonWithoutVersion",
         CameraType::quenta,
         [](auto& camera) { camera.state().jsonPropertyText = R"({"result":0})"; },
         {"json-version"},
         R"(text jsonProperty {"result":0})"},
    };
}

std::vector<Planted> settings() {
    return {
        changed(
            "OrientationGoesOn", [](auto& camera) { camera.settings().orientationPause = 10min; },
            {"orientation-pause"}, "orientation-pause 600000"),
        changed(
            "AllAddresses", [](auto& camera) { camera.settings().answersAllAddresses = true; },
            {"foreign-address"}, "all-addresses on"),
        changed(
            "TakesWrongCheckCodes", [](auto& camera) { camera.settings().takesWrongCheckCodes = true; },
            {"request-check-code"}, "wrong-check-codes on"),
        changed(
            "SilentToUnknownIds", [](auto& camera) { camera.settings().answersUnknownIds = false; },
            {"unknown-id", "unknown-info"}, "unknown-ids off"),
        changed(
            "AnswersShortRequests", [](auto& camera) { camera.settings().answersShortRequests = true; },
            {"short-request"}, "short-requests on"),
        changed(
            "Rests", [](auto& camera) { camera.settings().rest = 18ms; }, {"busy", "at-once"}, "rest 20"),
        changed(
            "NewestFirst",
            [](auto& camera) {
                std::reverse(camera.state().pictures.begin(), camera.state().pictures.end());
            },
            {"catalogue-order"}, "newest-first on"),
        changed(
            "SlowSerialNumber", [](auto& camera) { camera.addFault("delay=300@getSn"); }, {"time-texts"},
            "delay getSn 308 308 308"),
    };
}

} // namespace

void PrintTo(const Planted& planted, std::ostream* out) {
    *out << planted.name;
}

const std::vector<Planted>& plantedDeviations() {
    static const std::vector<Planted> all = [] {
        std::vector<Planted> joined;
        for (const std::vector<Planted>& part : {faults(), values(), settings()})
            joined.insert(joined.end(), part.begin(), part.end());
        return joined;
    }();
    return all;
}

Examined examinedWith(const Planted& planted) {
    VirtualCamera camera = cameraWithPictures(planted.type);
    planted.plant(camera);
    return examined(std::move(camera));
}

} // namespace conformtest
