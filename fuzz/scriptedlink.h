// The camera client on a line whose reads come from a fuzzer's input.
#pragma once

#include "link/camerasp.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>

namespace fuzz {

/// Reads the input from its front; missing bytes are zero.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : m_rest(data, size) {}
    [[nodiscard]] bool empty() const { return m_rest.empty(); }
    [[nodiscard]] std::size_t size() const { return m_rest.size(); }
    std::uint8_t byte();
    std::uint32_t number();
    protocol::Bytes bytes(std::size_t most);

private:
    std::span<const std::uint8_t> m_rest;
};

using Command = std::function<void(CameraSp& camera, Input& parameters)>;

/// One input: the command chosen by its first byte takes its parameters when it is made, and runs against the
/// reads that the rest describes. Behind them the port throws, so that nothing waits for ever.
/// `parameterSize`: bytes between the choice and the reads.
void runOne(std::span<const Command> commands, std::size_t parameterSize, const std::uint8_t* data,
            std::size_t size);

/// Ends the process as a finding when the condition does not hold.
void require(bool condition);

} // namespace fuzz
