// A working directory of a test's own.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <vector>

/// Makes a fresh folder the working directory and removes it at the end.
class ScratchFolder {
public:
    ScratchFolder() : m_before(std::filesystem::current_path()) {
        m_path = std::filesystem::temp_directory_path() /
                 ("shelf-camera-test-" + std::to_string(std::random_device{}()));
        std::filesystem::create_directories(m_path);
        std::filesystem::current_path(m_path);
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::current_path(m_before, ignored);
        std::filesystem::permissions(m_path, std::filesystem::perms::owner_all, ignored);
        std::filesystem::remove_all(m_path, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return m_path; }

    static void write(const std::filesystem::path& name, const std::vector<std::uint8_t>& content) {
        std::ofstream file(name, std::ios::binary);
        file.write(reinterpret_cast<const char*>(content.data()),
                   static_cast<std::streamsize>(content.size()));
    }

    /// The file's bytes; nothing when there is no such file.
    [[nodiscard]] static std::optional<std::vector<std::uint8_t>> read(const std::filesystem::path& name) {
        std::ifstream file(name, std::ios::binary);
        if (!file)
            return std::nullopt;
        return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(file), {});
    }

    /// Names of everything in the folder.
    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : std::filesystem::directory_iterator(m_path))
            found.push_back(entry.path().filename().string());
        return found;
    }

private:
    std::filesystem::path m_before;
    std::filesystem::path m_path;
};
