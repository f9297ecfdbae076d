#include "bench/relay.h"

#include "bench/measure.h"
#include "bench/process.h"
#include "emulator/line/pace.h"
#include "emulator/line/terminal.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <unistd.h>

namespace bench {

namespace {

using emulator::Pace;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t anyBaudRate = 460800;
constexpr int tickMs = 2;
constexpr std::size_t bufferSize = 4096;

/// One direction: from a descriptor to another at the pace.
class Lane {
public:
    Lane(int from, int to, std::uint32_t bytesPerSecond) : m_from(from), m_to(to) {
        m_pace.setRate(bytesPerSecond);
    }
    /// Bytes passed on; nothing when the source has ended.
    std::optional<std::size_t> step(emulator::Time now) {
        std::array<char, bufferSize> buffer{};
        const std::size_t allowed = m_pace.allowed(now, buffer.size());
        if (allowed == 0)
            return 0;
        const ssize_t count = ::read(m_from, buffer.data(), allowed);
        if (count < 0)
            return errno == EAGAIN ? std::optional<std::size_t>(0) : std::nullopt;
        if (count == 0)
            return std::nullopt;
        const auto size = static_cast<std::size_t>(count);
        m_pace.spend(size);
        for (std::size_t sent = 0; sent < size;) {
            const ssize_t written = ::write(m_to, buffer.data() + sent, size - sent);
            if (written < 0 && errno != EAGAIN)
                return std::nullopt;
            sent += written > 0 ? static_cast<std::size_t>(written) : 0;
        }
        return size;
    }

private:
    int m_from;
    int m_to;
    Pace m_pace;
};

class Relay {
public:
    Relay(const std::vector<std::string>& receiver, const std::string& directory, std::uint32_t pace) {
        std::array<int, 2> toReceiver{};
        std::array<int, 2> fromReceiver{};
        m_master = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
        if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0 ||
            ::pipe2(toReceiver.data(), O_CLOEXEC) != 0 || ::pipe2(fromReceiver.data(), O_CLOEXEC) != 0)
            throw std::runtime_error("no line for the relay");
        m_portName = ::ptsname(m_master);
        m_slave = ::open(m_portName.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC); // outlives the sender's closing
        emulator::makeRaw(m_slave, anyBaudRate);
        if (::fork() == 0) {
            std::filesystem::current_path(directory);
            become(receiver, toReceiver[0], fromReceiver[1]);
        }
        ::close(toReceiver[0]);
        ::close(fromReceiver[1]);
        ::fcntl(fromReceiver[0], F_SETFL, O_NONBLOCK);
        std::thread([this, to = toReceiver[1], from = fromReceiver[0], pace] {
            run(to, from, pace);
        }).detach();
    }

    [[nodiscard]] const std::string& portName() const { return m_portName; }
    [[nodiscard]] Arrivals arrivals() {
        const std::lock_guard lock(m_mutex);
        return m_arrivals;
    }

private:
    void run(int toReceiver, int fromReceiver, std::uint32_t pace) {
        const auto start = Clock::now();
        std::optional<Clock::time_point> first;
        Lane forth(m_master, toReceiver, pace);
        Lane back(fromReceiver, m_master, pace);
        for (bool receiverRuns = true;;) {
            const auto now = std::chrono::duration_cast<emulator::Time>(Clock::now() - start);
            const std::size_t sent = forth.step(now).value_or(0);
            receiverRuns = receiverRuns && back.step(now).has_value();
            if (sent > 0) {
                const std::lock_guard lock(m_mutex);
                first = first.value_or(Clock::now());
                m_arrivals.bytes += sent;
                m_arrivals.seconds = Seconds(Clock::now() - *first).count();
            } else {
                std::this_thread::sleep_for(std::chrono::milliseconds(tickMs));
            }
        }
    }

    int m_master = -1;
    int m_slave = -1;
    std::string m_portName;
    std::mutex m_mutex; // guards the line below
    Arrivals m_arrivals;
};

} // namespace

PacedRelay::PacedRelay(const std::vector<std::string>& receiver, const std::string& directory,
                       std::uint32_t bytesPerSecond)
    : ChildProcess([=] {
          const auto relay = std::make_shared<Relay>(receiver, directory, bytesPerSecond);
          return Side{[relay] { return relay->portName(); }, [relay] { return relay->arrivals(); }};
      }) {}

bool isInstalled(const std::string& program) {
    const char* const path = std::getenv("PATH");
    std::istringstream folders(path != nullptr ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (::access((folder + '/' + program).c_str(), X_OK) == 0)
            return true;
    }
    return false;
}

} // namespace bench
