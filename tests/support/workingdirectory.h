// The working directory of a test and the files in it.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

/// Makes an empty directory the current one before each test and removes it afterwards: downloads go into the
/// working directory, and tests run side by side.
class FreshDirectory final : public testing::EmptyTestEventListener {
public:
    void OnTestStart(const testing::TestInfo& /*test*/) override {
        m_before = std::filesystem::current_path();
        std::string pattern = (std::filesystem::temp_directory_path() / "camera-test-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr)
            throw std::runtime_error("no working directory for the test: " + pattern);
        m_directory = pattern;
        std::filesystem::current_path(m_directory);
    }

    void OnTestEnd(const testing::TestInfo& /*test*/) override {
        std::filesystem::current_path(m_before);
        std::error_code ignored; // a test may have removed it
        std::filesystem::remove_all(m_directory, ignored);
    }

private:
    std::filesystem::path m_before;
    std::filesystem::path m_directory;
};

/// Hands the listener to GoogleTest, which owns it from then on.
inline void useFreshDirectories() {
    testing::UnitTest::GetInstance()->listeners().Append(new FreshDirectory);
}

/// Removes write permission from the working directory as long as it lives. Permissions do not bind the
/// administrator: a process of that user changes to a user without rights meanwhile.
class UnwritableDirectory {
public:
    UnwritableDirectory() {
        std::filesystem::permissions(
            m_path, perms::all & ~(perms::owner_write | perms::group_write | perms::others_write));
        if (m_user == 0)
            m_userChanged = seteuid(nobody) == 0;
    }
    ~UnwritableDirectory() {
        if (m_userChanged && seteuid(m_user) != 0)
            std::abort();
        std::filesystem::permissions(m_path, perms::owner_all);
    }
    UnwritableDirectory(const UnwritableDirectory&) = delete;
    UnwritableDirectory& operator=(const UnwritableDirectory&) = delete;

private:
    using perms = std::filesystem::perms;
    static constexpr uid_t nobody = 65534;

    std::filesystem::path m_path = std::filesystem::current_path();
    uid_t m_user = geteuid();
    bool m_userChanged = false;
};

namespace files {

inline void write(const std::filesystem::path& name, const std::vector<std::uint8_t>& content) {
    std::ofstream file(name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
    ASSERT_TRUE(file.flush()) << name;
}

/// Empty when there is no such file.
[[nodiscard]] inline std::optional<std::vector<std::uint8_t>> read(const std::filesystem::path& name) {
    std::ifstream file(name, std::ios::binary);
    if (!file)
        return std::nullopt;
    return std::vector<std::uint8_t>(std::istreambuf_iterator<char>(file), {});
}

/// Names in the working directory, in no order.
[[nodiscard]] inline std::vector<std::string> names() {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator("."))
        found.push_back(entry.path().filename().string());
    return found;
}

} // namespace files
