#include "bench/plaincopy.h"

#include "link/protocol/exchangetable.h"
#include "link/protocol/uploads.h"
#include "link/uploadfile.h"

#include <serial/serial.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace bench {

namespace {

constexpr std::uint32_t timeoutMs = 600000; // longer than any write
constexpr std::chrono::milliseconds pauseAfterAnnouncement{protocol::pauseAfterAnnouncementMs};

} // namespace

void copyPlainly(const PlainCopy& copy, const std::string& portName, const protocol::Bytes& content) {
    serial::Serial port(portName, baudRate,
                        serial::Timeout(serial::Timeout::max(), timeoutMs, 0, timeoutMs, 0));
    const std::size_t size = content.size();
    const protocol::Bytes digest = digestOf(content, [](auto, auto) { return true; })->bytes;
    port.write(protocol::buildFrame(protocol::code(copy.command),
                                    protocol::buildAnnouncement(static_cast<std::uint32_t>(size), digest),
                                    1));
    protocol::Bytes answer;
    port.read(answer, protocol::rules::appUpdate.readSize);
    std::this_thread::sleep_for(pauseAfterAnnouncement);
    for (std::size_t at = 0; at < size; at += copy.step) {
        if (copy.flushes)
            port.flush();
        port.write(content.data() + at, std::min(copy.step, size - at));
    }
}

} // namespace bench
