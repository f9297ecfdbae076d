#include "fuzz/scriptedlink.h"

#include "tests/fake/fakeserial.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <streambuf>
#include <unistd.h>

namespace fuzz {

namespace {

constexpr std::uint8_t timesOut = 0;
constexpr std::uint8_t throws = 255;
constexpr std::uint8_t allTheRest = 240; // and above

/// Formats everything and keeps nothing.
class Nowhere final : public std::streambuf {
protected:
    int_type overflow(int_type letter) override { return traits_type::not_eof(letter); }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

/// Pauses end at once.
class NoPauses final : public Clock {
public:
    bool pause(std::unique_lock<std::mutex>&, std::condition_variable&, std::chrono::nanoseconds) override {
        return true;
    }
};

/// Once for the process: no log, and a directory of its own for the pictures.
bool setUp() {
    static Nowhere nowhere;
    std::cout.rdbuf(&nowhere);
    static std::string directory = (std::filesystem::temp_directory_path() / "camera-fuzz-XXXXXX").string();
    require(::mkdtemp(directory.data()) != nullptr);
    require(::chdir(directory.c_str()) == 0);
    std::atexit([] {
        std::error_code ignored;
        std::filesystem::remove_all(directory, ignored);
    });
    return true;
}

void scriptReads(Input& input) {
    while (!input.empty()) {
        const std::uint8_t count = input.byte();
        if (count == throws)
            fake_serial::willThrowOnRead();
        else if (count == timesOut)
            fake_serial::willTimeOut();
        else
            fake_serial::willRead(input.bytes(count >= allTheRest ? input.size() : count));
    }
    fake_serial::willThrowOnRead();
}

} // namespace

std::uint8_t Input::byte() {
    const protocol::Bytes one = bytes(1);
    return one.empty() ? std::uint8_t{0} : one.front();
}

std::uint32_t Input::number() {
    protocol::Bytes four = bytes(4);
    four.resize(4);
    return protocol::ByteView(four).get(protocol::Field<std::uint32_t>{0});
}

protocol::Bytes Input::bytes(std::size_t most) {
    const auto taken = m_rest.first(std::min(most, m_rest.size()));
    m_rest = m_rest.subspan(taken.size());
    return {taken.begin(), taken.end()};
}

void runOne(std::span<const Command> commands, std::size_t parameterSize, const std::uint8_t* data,
            std::size_t size) {
    static const bool ready = setUp();
    static NoPauses clock;
    require(ready);
    Input input(data, size);
    const Command& command = commands[input.byte() % commands.size()];
    const protocol::Bytes parameterBytes = input.bytes(parameterSize);
    Input parameters(parameterBytes.data(), parameterBytes.size());
    fake_serial::reset();
    CameraSp camera("port", 460800, clock);
    scriptReads(input);
    command(camera, parameters);
}

void require(bool condition) {
    if (!condition)
        std::abort();
}

} // namespace fuzz
