// Gives every test an empty working directory.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

/// Before each test makes an empty directory the current one, and removes it with all its content after the
/// test: downloads are written into the working directory, and tests run side by side.
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
