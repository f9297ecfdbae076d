#include "tests/cli/tool.h"

#include <QByteArray>
#include <QJsonDocument>

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <stdexcept>
#include <unistd.h>
#include <utility>

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

std::vector<int> jobLines(const Ending& ending) {
    std::vector<int> lines;
    for (const QJsonObject& object : objectsOf(ending.out))
        lines.push_back(object["jobLine"].toInt());
    return lines;
}

namespace {

/// The judge takes long to start: one process for all tests of this one, with which it ends.
class SchemaJudge {
public:
    SchemaJudge() {
        std::array<int, 2> questions{};
        std::array<int, 2> answers{};
        if (::pipe2(questions.data(), O_CLOEXEC) != 0 || ::pipe2(answers.data(), O_CLOEXEC) != 0)
            throw std::runtime_error("no pipe for the schema judge");
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, questions[0], STDIN_FILENO);
        ::posix_spawn_file_actions_adddup2(&actions, answers[1], STDOUT_FILENO);
        std::array<std::string, 3> words{"python3", SCHEMA_JUDGE, OUTPUT_SCHEMA};
        const std::array<char*, 4> arguments{words[0].data(), words[1].data(), words[2].data(), nullptr};
        pid_t process = -1;
        const int failed =
            ::posix_spawnp(&process, words[0].c_str(), &actions, nullptr, arguments.data(), environ);
        ::posix_spawn_file_actions_destroy(&actions);
        ::close(questions[0]);
        ::close(answers[1]);
        if (failed != 0)
            throw std::runtime_error("the schema judge does not start");
        m_questions = ::fdopen(questions[1], "w");
        m_answers = ::fdopen(answers[0], "r");
    }

    std::string complaints(const std::string& file) {
        std::fprintf(m_questions, "%s\n", file.c_str());
        std::fflush(m_questions);
        std::string found;
        std::string line;
        for (int c = std::fgetc(m_answers); c != EOF; c = std::fgetc(m_answers)) {
            line += static_cast<char>(c);
            if (c != '\n')
                continue;
            if (line == ".\n")
                return found;
            found += std::exchange(line, {});
        }
        return found + line + "the schema judge has ended";
    }

private:
    std::FILE* m_questions = nullptr;
    std::FILE* m_answers = nullptr;
};

} // namespace

std::string schemaComplaints(const std::string& output) {
    static SchemaJudge judge;
    std::ofstream("printed.jsonl") << output;
    return judge.complaints(std::filesystem::absolute("printed.jsonl").string());
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
