#include "emulator/line/handle_windows.h"

#include <algorithm>
#include <chrono>
#include <limits>
#include <system_error>

namespace emulator {

namespace {

// Poll interval: the system cannot wait for a port that is opened without overlapped operations.
constexpr int lookIntervalMs = 2;

/// True for a failed port: the next read reports the failure.
bool hasInput(HANDLE port) {
    COMSTAT status{};
    return ::ClearCommError(port, nullptr, &status) == 0 || status.cbInQue > 0;
}

} // namespace

LineIo::LineIo() {
    const HANDLE event = ::CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (event == nullptr)
        throw std::system_error(static_cast<int>(::GetLastError()), std::system_category(), "event");
    m_waker[0] = reinterpret_cast<Line>(event);
}

LineIo::~LineIo() {
    ::CloseHandle(handleOf(m_waker[0]));
}

void LineIo::wake() {
    ::SetEvent(handleOf(m_waker[0]));
}

LineIo::Readiness LineIo::wait(Line line, Readiness wanted, int timeoutMs) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(timeoutMs);
    if (line == none)
        wanted = {};
    while (true) {
        const Readiness ready{wanted.reads && hasInput(handleOf(line)), wanted.writes};
        if (ready.reads || ready.writes)
            return ready;
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        if (timeoutMs >= 0 && left <= 0)
            return {};
        const int limitMs = wanted.reads ? lookIntervalMs : std::numeric_limits<int>::max();
        const int sleepMs = timeoutMs < 0 ? limitMs : std::min(limitMs, static_cast<int>(left));
        if (::WaitForSingleObject(handleOf(m_waker[0]), static_cast<DWORD>(sleepMs)) == WAIT_OBJECT_0)
            return {};
    }
}

std::optional<std::size_t> LineIo::write(Line line, ByteView bytes) {
    DWORD written = 0;
    if (::WriteFile(handleOf(line), bytes.begin(), static_cast<DWORD>(bytes.size()), &written, nullptr) == 0)
        return std::nullopt;
    return written;
}

std::optional<std::size_t> LineIo::read(Line line, std::span<std::uint8_t> buffer) {
    DWORD count = 0;
    if (::ReadFile(handleOf(line), buffer.data(), static_cast<DWORD>(buffer.size()), &count, nullptr) == 0)
        return std::nullopt;
    return count;
}

} // namespace emulator
