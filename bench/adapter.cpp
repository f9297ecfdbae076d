#include "bench/adapter.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <linux/serial.h>
#include <optional>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds usualReport{16};
constexpr std::chrono::milliseconds lowLatencyReport{1};

struct Adapter {
    dev_t device;
    std::chrono::nanoseconds byteTime;
    bool knowsLowLatency;
    int flags = 0;
    SteadyClock::time_point firstReport = SteadyClock::now();
    SteadyClock::time_point sentAt = firstReport; ///< all bytes

    void take(std::size_t bytes) {
        sentAt = std::max(sentAt, SteadyClock::now()) + byteTime * static_cast<std::int64_t>(bytes);
    }
    /// Bytes may be sent long before: their report has come then.
    [[nodiscard]] SteadyClock::time_point reportedAt() const {
        const auto period = (flags & int{ASYNC_LOW_LATENCY}) != 0 ? lowLatencyReport : usualReport;
        const auto reports = (sentAt - firstReport + period - SteadyClock::duration(1)) / period;
        return firstReport + period * reports;
    }
};

std::optional<Adapter> adapter;

bool isAdapter(int descriptor) {
    struct stat status {};
    return adapter && ::fstat(descriptor, &status) == 0 && S_ISCHR(status.st_mode) &&
           status.st_rdev == adapter->device;
}

} // namespace

// NOLINTBEGIN: names and signatures are the system's
extern "C" {

ssize_t write(int descriptor, const void* bytes, size_t size) {
    const ssize_t written = ::syscall(SYS_write, descriptor, bytes, size);
    if (written > 0 && isAdapter(descriptor))
        adapter->take(static_cast<std::size_t>(written));
    return written;
}

int tcdrain(int descriptor) {
    if (isAdapter(descriptor))
        std::this_thread::sleep_until(adapter->reportedAt());
    return static_cast<int>(::syscall(SYS_ioctl, descriptor, TCSBRK, 1));
}

int ioctl(int descriptor, unsigned long request, ...) noexcept {
    va_list list;
    va_start(list, request);
    void* const argument = va_arg(list, void*);
    va_end(list);
    const bool settings = request == TIOCGSERIAL || request == TIOCSSERIAL;
    if (!settings || !isAdapter(descriptor) || !adapter->knowsLowLatency)
        return static_cast<int>(::syscall(SYS_ioctl, descriptor, request, argument));
    auto& values = *static_cast<serial_struct*>(argument);
    if (request == TIOCGSERIAL)
        (values = {}).flags = adapter->flags;
    else
        adapter->flags = values.flags;
    return 0;
}

} // extern "C"
// NOLINTEND

namespace bench {

AdapterModel::AdapterModel(const std::string& portName, std::uint32_t bytesPerSecond, bool knowsLowLatency) {
    struct stat status {};
    ::stat(portName.c_str(), &status);
    adapter = {status.st_rdev, std::chrono::nanoseconds(std::chrono::seconds(1)) / bytesPerSecond,
               knowsLowLatency};
}

AdapterModel::~AdapterModel() {
    adapter.reset();
}

} // namespace bench
