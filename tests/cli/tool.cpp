#include "tests/cli/tool.h"

#include <QByteArray>
#include <QJsonDocument>

namespace clitest {

Words wordsOf(const std::string& line) {
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
}

Words joined(Words before, const Words& after) {
    before.insert(before.end(), after.begin(), after.end());
    return before;
}

std::vector<QJsonObject> objectsOf(const std::string& output) {
    std::vector<QJsonObject> objects;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromStdString(line));
        if (!document.isObject())
            return {};
        objects.push_back(document.object());
    }
    return objects;
}

std::string schemaComplaints(const std::string& output) {
    std::ofstream("printed.jsonl") << output;
    Process judge("/usr/bin/env", {"python3", SCHEMA_JUDGE, OUTPUT_SCHEMA, "printed.jsonl"},
                  {"/dev/null", "judgement", "judge-errors"});
    const int code = judge.wait();
    const std::string complaints = Process::text("judgement") + Process::text("judge-errors");
    return code == 0 || !complaints.empty() ? complaints
                                            : "the schema judge ended with " + std::to_string(code);
}

emulator::CameraSettings quickSettings(emulator::CameraType type) {
    emulator::CameraSettings settings = emulator::settingsForType(type);
    settings.answerDelay = 1ms;
    settings.captureTime = 1ms;
    settings.rebootTime = 100ms;
    settings.factoryResetTime = 100ms;
    settings.updateRestartTime = 100ms;
    return settings;
}

Camera::Camera(emulator::CameraSettings settings) : m_type(settings.type), m_front(std::move(settings)) {
    m_front.withCamera([](emulator::VirtualCamera& camera) {
        camera.state().pictures.push_back(emulator::makePicture(pictureId, emulator::Bytes(3000, 0x5A)));
        camera.state().nextPictureId = pictureId + 1;
    });
}

Words Camera::with(const Words& words) const {
    const std::string type = std::to_string(static_cast<unsigned>(m_type));
    return joined({"-p", port(), "-t", type, "--yes"}, words);
}

std::size_t Camera::requests() {
    return m_front.withCamera([](const auto& camera) { return camera.record().frames.size(); });
}

} // namespace clitest
