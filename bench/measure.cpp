#include "bench/measure.h"

#include <algorithm>
#include <fstream>
#include <malloc.h>
#include <sstream>
#include <stdexcept>
#include <string>
#include <time.h>

namespace bench {

namespace {

double processCpu() {
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// A field of /proc/self/status that is stated in kB.
std::int64_t statusBytes(const std::string& field) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        std::istringstream words(line);
        std::string name;
        std::int64_t kilobytes = 0;
        if (words >> name >> kilobytes && name == field)
            return kilobytes * 1024;
    }
    throw std::runtime_error("no " + field + " in /proc/self/status");
}

} // namespace

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

Stopwatch::Stopwatch() : m_start(std::chrono::steady_clock::now()), m_cpuStart(processCpu()) {}

double Stopwatch::seconds() const {
    return Seconds(std::chrono::steady_clock::now() - m_start).count();
}

double Stopwatch::cpuSeconds() const {
    return processCpu() - m_cpuStart;
}

std::int64_t residentBytes() {
    ::malloc_trim(0); // what earlier runs have freed neither counts nor hides growth
    return statusBytes("VmRSS:");
}

PeakMemory::PeakMemory() : m_before(residentBytes()) {
    std::ofstream("/proc/self/clear_refs") << "5"; // the peak begins anew
}

std::int64_t PeakMemory::growthBytes() const {
    return statusBytes("VmHWM:") - m_before;
}

} // namespace bench
