#include "tests/emulator/line/recordedsession.h"

#include "emulator/camera/md5.h"
#include "tests/emulator/camera/camerabench.h"
#include "trace/hextext.h"

#include <fstream>
#include <iterator>
#include <thread>

namespace emulatortest {

namespace {

constexpr std::uint16_t pictureId = 33;
constexpr std::size_t pictureSize = 1500;
constexpr std::chrono::milliseconds restartTime{300};
constexpr std::chrono::milliseconds afterRestart{700};

Bytes sessionPicture() {
    Bytes jpeg = countingBytes(pictureSize);
    jpeg[0] = 0xFF;
    jpeg[1] = 0xD8;
    return jpeg;
}

void writeFile(const char* name, std::size_t size) {
    const Bytes bytes = countingBytes(size);
    std::ofstream(name, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

class Session {
public:
    explicit Session(CameraSp& client) : m_client(client) {}

    void add(const std::string& name, const std::string& result) {
        m_results.push_back(name + ": " + result);
    }
    void add(const std::string& name, bool result) { add(name, std::string(result ? "yes" : "no")); }
    void add(const std::string& name, const Bytes& bytes) { add(name, trace::hexText(bytes)); }
    void addFile(const char* name) {
        std::ifstream file(name, std::ios::binary);
        const Bytes bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        add(name, bytes == sessionPicture() ? "the picture" : std::to_string(bytes.size()) + " bytes");
    }

    void frames();
    void pictures();
    void picturesV1();
    void json();
    void uploads();
    void uploadV1();
    void restart() {
        add("reboot", m_client.rebootCamera());
        std::this_thread::sleep_for(afterRestart);
        add("heartbeat after the restart", m_client.testHeartBeat());
    }
    [[nodiscard]] std::vector<std::string> results() const { return m_results; }

private:
    CameraSp& m_client;
    std::vector<std::string> m_results;
};

void Session::frames() {
    add("application", m_client.getAppVersion());
    add("system", m_client.getSystemVersion());
    add("SDK", m_client.getQvVersion());
    add("model", m_client.getModelInfo());
    add("serial number", m_client.getSn());
    add("write it", m_client.setSn("A1B2C3D4E5F6"));
    add("it now", m_client.getSn());
    add("heater", m_client.getCommonProperty(15, 2));
    add("set it", m_client.setCommonProperty(15, {40}, 3));
    add("it now", m_client.getCommonProperty(15, 2));
    add("set what is read only", m_client.setCommonProperty(12, {1}, 3));
    const Bytes gyro = m_client.getCommonPropertyWithoutParse(3, 0x0F, 50, 100);
    add("gyro", ByteView(gyro).toText());
}

void Session::pictures() {
    const auto records = m_client.getOriginPicInfos();
    add("pictures", std::to_string(records.size()));
    m_client.getOriginTargetPic(pictureId, pictureSize);
    addFile("33.jpg");
    add("delete", m_client.delOriginPic(pictureId));
    add("capture", m_client.originCapture());
}

void Session::picturesV1() {
    const auto records = m_client.getPicInfosV1();
    add("pictures", std::to_string(records.size()));
    m_client.getTargetPicV1(pictureId, pictureSize);
    addFile("33.jpg");
    add("delete", m_client.delPicV1(0xFFFF, 0, 0));
    add("capture", m_client.captureV1());
}

void Session::json() {
    add("properties", m_client.getQuentaModbusProperty(""));
    add("picture", m_client.getQuentaModbusPic(1));
    addFile("1.jpg");
}

void Session::uploads() {
    writeFile("model.bin", 700);
    m_client.setModelNameAndPath("model_v2", "model.bin");
    add("model upload", m_client.modelUpdate());
    writeFile("app.bin", 1300);
    m_client.setAppFilePath("app.bin");
    add("application upload", m_client.appUpdate());
    std::this_thread::sleep_for(afterRestart);
    add("heartbeat after the upload", m_client.testHeartBeat());
}

void Session::uploadV1() {
    writeFile("app.bin", 1300);
    add("application upload", m_client.appUpdateV1("app.bin", "app.bin"));
    std::this_thread::sleep_for(afterRestart);
    add("heartbeat after the upload", m_client.testHeartBeat());
}

} // namespace

CameraSettings sessionSettings(CameraType type) {
    CameraSettings settings = settingsForType(type);
    settings.pictureSeed = 1;
    settings.drawPicture = [](std::uint16_t, std::uint32_t) { return sessionPicture(); };
    settings.rebootTime = restartTime;
    settings.updateRestartTime = restartTime;
    settings.holdsAnnouncedImage = true;
    return settings;
}

void fillSessionCamera(VirtualCamera& camera) {
    camera.state().pictures = {makePicture(pictureId, sessionPicture())};
    camera.state().nextPictureId = pictureId + 1;
    camera.state().jsonPicture = sessionPicture();
}

std::vector<std::string> runSession(CameraType type, CameraSp& client) {
    client.setSlaveAddress(settingsForType(type).address);
    Session session(client);
    session.add("heartbeat", client.testHeartBeat());
    if (type == CameraType::quenta) {
        session.json();
    } else if (type == CameraType::salesDynamic) {
        session.frames();
        session.picturesV1();
        session.uploadV1();
    } else {
        session.frames();
        session.pictures();
        session.uploads();
    }
    session.restart();
    return session.results();
}

std::vector<std::string> sessionResults(CameraType type) {
    const std::vector<std::string> frames = {"application: 2.3.1",
                                             "system: 5.10.8",
                                             "SDK: qv 1.4.0",
                                             "model: model_v1 2024-01-31",
                                             "serial number: SHELF000001",
                                             "write it: yes",
                                             "it now: A1B2C3D4E5F6",
                                             "heater: 1e",
                                             "set it: yes",
                                             "it now: 28",
                                             "set what is read only: no",
                                             "gyro: 3success",
                                             "pictures: 1",
                                             "33.jpg: the picture",
                                             "delete: yes",
                                             "capture: yes"};
    std::vector<std::string> results = {"heartbeat: yes"};
    const auto add = [&results](const std::vector<std::string>& more) {
        results.insert(results.end(), more.begin(), more.end());
    };
    if (type == CameraType::quenta)
        add({R"(properties: {"result":0,"version":"1.0.3"})", "picture: yes", "1.jpg: the picture"});
    else
        add(frames);
    if (type == CameraType::ostra)
        add({"model upload: yes"});
    if (type != CameraType::quenta)
        add({"application upload: yes", "heartbeat after the upload: yes"});
    add({"reboot: yes", "heartbeat after the restart: yes"});
    return results;
}

} // namespace emulatortest
