#include "link/lowlatency.h"

#include <linux/serial.h>
#include <sys/ioctl.h>

namespace {

constexpr int lowLatency = ASYNC_LOW_LATENCY;

/// False if the driver had this setting already or has none.
bool change(int descriptor, bool low) {
    serial_struct settings{};
    if (::ioctl(descriptor, TIOCGSERIAL, &settings) != 0 || ((settings.flags & lowLatency) != 0) == low)
        return false;
    settings.flags ^= lowLatency;
    return ::ioctl(descriptor, TIOCSSERIAL, &settings) == 0;
}

} // namespace

LowLatency::~LowLatency() {
    if (m_descriptor != -1)
        change(m_descriptor, false);
}

void LowLatency::begin(int descriptor) {
    if (descriptor != -1 && change(descriptor, true))
        m_descriptor = descriptor;
}
