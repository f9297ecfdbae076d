// A client with a file for each kind of upload.
#pragma once

#include "tests/link/linktest.h"
#include "tests/support/workingdirectory.h"

#include <cstdint>
#include <string>
#include <vector>

inline std::vector<std::uint8_t> counting(std::size_t size) {
    std::vector<std::uint8_t> content(size);
    for (std::size_t i = 0; i < size; ++i)
        content[i] = static_cast<std::uint8_t>(i % 256);
    return content;
}

inline const std::vector<std::uint8_t> abc{'a', 'b', 'c'};

class Upload : public LinkTest {
protected:
    Upload() {
        camera.setAppFilePath("file.bin");
        camera.setFirewareFilePath("file.bin");
        camera.setModelNameAndPath("model_v1", "file.bin");
    }

    static void file(const std::vector<std::uint8_t>& content) { files::write("file.bin", content); }

    [[nodiscard]] static std::string written(std::size_t index) {
        return hex(fake_serial::writes().at(index));
    }

    /// Bytes written after the announcement.
    [[nodiscard]] static std::vector<std::uint8_t> streamed() {
        std::vector<std::uint8_t> all;
        const auto writes = fake_serial::writes();
        for (std::size_t i = 1; i < writes.size(); ++i)
            all.insert(all.end(), writes[i].begin(), writes[i].end());
        return all;
    }

    [[nodiscard]] static std::vector<std::size_t> chunkSizes() {
        std::vector<std::size_t> sizes;
        const auto writes = fake_serial::writes();
        for (std::size_t i = 1; i < writes.size(); ++i)
            sizes.push_back(writes[i].size());
        return sizes;
    }
};
