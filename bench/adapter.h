// A model of a USB adapter's driver between the library and a pseudo-terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace bench {

/// While it lives, draining the line waits until the written bytes are sent at this rate and then for the
/// adapter's next report: one each 16 ms, or each millisecond with low latency. One at a time; one thread
/// uses the line.
class AdapterModel {
public:
    AdapterModel(const std::string& portName, std::uint32_t bytesPerSecond, bool knowsLowLatency);
    ~AdapterModel();
    AdapterModel(const AdapterModel&) = delete;
    AdapterModel& operator=(const AdapterModel&) = delete;
};

} // namespace bench
