#include "tests/cli/rows.h"

namespace clitest {

namespace {

using emulator::CameraType;

const std::string notStruck; // the camera works

/// Of commands that wait for a frame: garbage before it and pieces of it do no harm, a wrong check code is
/// not looked at.
const Column frames{{notStruck, done},     {"silent", noAnswer},    {"late", noAnswer},
                    {"result=1", refused}, {"truncate=3", refused}, {"stray=1", refused},
                    {"split=4,20", done},  {"before=33", done},     {"bad-check", done},
                    {"hang-up", noPort}};

Column with(Column column, const Column& changed) {
    for (const auto& [fault, code] : changed)
        column[fault] = code;
    return column;
}

/// Without the faults that another row of the same path has.
Column shortened(Column column) {
    for (const char* const fault : {"late", "truncate=3", "stray=1", "split=4,20", "before=33", "bad-check"})
        column.erase(fault);
    return column;
}

/// The answer is compared or taken as one read: nothing may stand before it.
const Column wholeReads = with(frames, {{"result=1", done}, {"before=33", refused}});
/// As many bytes as were asked for are taken; what a download's answer says of success stands first.
const Column downloads = with(frames, {{"stray=1", done}, {"truncate=3", refused}});

const std::vector<Row> readingRows{
    {"Heartbeat", "heartbeat", "heartbeat", wholeReads, CameraType::ostra, "heartbeat"},
    {"Versions", "versions", "getAppVersion", frames, CameraType::ostra, "appVersion"},
    {"Model", "model", "getModelInfo", frames, CameraType::ostra, "model"},
    {"Orientation", "orientation", "getProperty", frames, CameraType::ostra, "orientation"},
    {"Gyro", "gyro", "gyroTest", wholeReads, CameraType::ostra, "gyroTest"},
    {"SerialNumber", "sn", "getSn", frames, CameraType::ostra, "serialNumber"},
    {"Heater", "heater", "getProperty", shortened(frames), CameraType::ostra, "heater"},
    {"Compression", "compression", "getProperty", shortened(frames), CameraType::ostra, "compression"},
    {"Angles", "angles", "getProperty", frames, CameraType::ostra, "angles"},
    {"Direction", "direction", "getProperty", shortened(frames), CameraType::ostra, "direction"},
    {"GyroState", "gyro-state", "getProperty", shortened(frames), CameraType::ostra, "gyroState"},
    {"Find", "find --rates 460800 --addresses 1", "heartbeat",
     with(frames, {{"result=1", done},
                   {"late", noAnswer},
                   {"truncate=3", noAnswer},
                   {"stray=1", noAnswer},
                   {"before=33", noAnswer}})},
    {"Check", "check", "getSn", with(frames, {{"silent", refused}, {"late", refused}})},
};

const std::vector<Row> settingRows{
    {"SetSerialNumber", "sn A1", "setSn", shortened(frames), CameraType::ostra, "serialNumber"},
    {"SetHeater", "heater 40", "setProperty", shortened(frames), CameraType::ostra, "heater"},
    {"SetCompression", "compression 50", "setProperty", shortened(frames), CameraType::ostra, "compression"},
    {"SetAngles", "angles 10 20", "setProperty", frames, CameraType::ostra, "angles"},
    {"SetDirection", "direction anticlockwise", "setProperty", shortened(frames), CameraType::ostra,
     "direction"},
    {"SetGyroState", "gyro-state off", "setProperty", shortened(frames), CameraType::ostra, "gyroState"},
};

const std::vector<Row> pictureRows{
    {"Capture", "capture", "read", downloads, CameraType::ostra, "file"},
    {"CaptureV1", "capture", "readV1", with(shortened(downloads), {{"result=1", done}}),
     CameraType::salesDynamic, "file"},
    {"CaptureJson", "capture", "jsonPicture", with(frames, {{"result=1", done}}), CameraType::quenta, "file"},
    {"PicturesList", "pictures list", "catalogue", with(frames, {{"result=1", done}}), CameraType::ostra,
     "pictures"},
    {"PicturesGet", "pictures get 33 -o one.jpg", "read", downloads, CameraType::ostra, "file"},
    {"PicturesGetAll", "pictures get-all -d folder", "read", downloads},
    {"PicturesDelete", "pictures delete 33", "delete", frames},
    {"PicturesDeleteAll", "pictures delete-all", "delete", frames},
};

const std::vector<Row> actionRows{
    {"UploadModel", "upload model image.bin", "modelUpdate", shortened(frames), CameraType::ostra, "after"},
    {"UploadApp", "upload app image.bin --no-wait", "appUpdate",
     with(frames, {{"result=1", done}, {"stray=1", done}})},
    {"UploadSystem", "upload system image.bin --no-wait", "systemUpdate",
     with(shortened(frames), {{"result=1", done}})},
    {"Reboot", "reboot", "reboot", frames},
    {"FactoryReset", "factory-reset", "reset", shortened(frames)},
    {"Door", "door open", "door",
     with(frames, {{"silent", done},
                   {"late", done},
                   {"result=1", done},
                   {"truncate=3", done},
                   {"stray=1", done},
                   {"hang-up", done}})},
};

} // namespace

std::ostream& operator<<(std::ostream& out, const Row& row) {
    return out << row.line;
}

const std::vector<Row>& rows() {
    static const std::vector<Row> all = [] {
        std::vector<Row> joined;
        for (const std::vector<Row>& part : {readingRows, settingRows, pictureRows, actionRows})
            joined.insert(joined.end(), part.begin(), part.end());
        return joined;
    }();
    return all;
}

} // namespace clitest
