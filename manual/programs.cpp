#include "manual/programs.h"

#include "emulator/lessons/lessons.h"
#include "emulator/line/linetraits.h"
#include "link/protocol/cameratypes.h"
#include "manual/appwords.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace manual {

namespace {

/// The words after the program's name, up to a redirection.
std::vector<std::string> argumentsIn(const std::string& line, const std::string& program) {
    std::vector<std::string> words = split(line.substr(0, line.find(" >")), " ");
    const auto name = std::find(words.begin(), words.end(), program);
    if (name == words.end())
        throw std::invalid_argument(program + " is not in the line");
    words.erase(words.begin(), name + 1);
    return words;
}

/// Why the program refuses the line; empty if it takes it.
std::string complaintOf(const Program& program, const std::string& line) {
    try {
        program.check(argumentsIn(line, program.app->get_name()));
    } catch (const std::exception& error) {
        return line + ": " + error.what();
    }
    return {};
}

} // namespace

std::vector<Program> programs() {
    return {shelfCamera(), virtualCamera(), demo(), practice(), tool()};
}

std::string badExample(const Program& program) {
    for (const ManualExample& example : program.text.examples) {
        for (const std::string& line : example.lines) {
            if (std::string complaint = complaintOf(program, line); !complaint.empty())
                return complaint;
        }
    }
    return {};
}

void addWord(std::string& words, std::string_view word) {
    words.append(words.empty() ? "" : " ").append(word);
}

std::string typeNames() {
    std::string names;
    for (const protocol::CameraTypeInfo& type : protocol::cameraTypes)
        addWord(names, type.optionName);
    return names;
}

std::string lineNames() {
    std::string names;
    for (const emulator::LinePreset& preset : emulator::linePresets())
        addWord(names, preset.name);
    return names;
}

std::string lessonNumbers() {
    std::string numbers;
    for (std::size_t number = 1; number <= emulator::lessons().size(); ++number)
        addWord(numbers, std::to_string(number));
    return numbers;
}

} // namespace manual
