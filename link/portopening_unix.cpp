#include "link/portopening.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

/// True if character devices of this major number are terminals, or if the system does not say.
bool isTerminalMajor(unsigned int wanted) {
    std::ifstream drivers("/proc/tty/drivers");
    if (!drivers)
        return true;
    for (std::string row; std::getline(drivers, row);) {
        std::istringstream fields(row);
        std::string driver;
        std::string device;
        unsigned int major = 0;
        if (fields >> driver >> device >> major && major == wanted)
            return true;
    }
    return false;
}

std::mutex& openings() {
    static std::mutex instance;
    return instance;
}

/// True for a descriptor as the library opens it: of the device, not closed in programs that it starts. All
/// descriptors of this project are.
bool isLibrarysDescriptor(int descriptor, std::uint64_t device) {
    struct stat status {};
    return ::fstat(descriptor, &status) == 0 && S_ISCHR(status.st_mode) && status.st_rdev == device &&
           (::fcntl(descriptor, F_GETFD) & FD_CLOEXEC) == 0;
}

/// In ascending order; none where the system does not list them.
std::vector<int> librarysDescriptors(std::uint64_t device) {
    std::vector<int> found;
    std::error_code unlisted;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd", unlisted)) {
        const int descriptor = std::stoi(entry.path().filename().string());
        if (isLibrarysDescriptor(descriptor, device))
            found.push_back(descriptor);
    }
    std::sort(found.begin(), found.end());
    return found;
}

} // namespace

/// A path that is no terminal is refused without opening it.
PortOpening::PortOpening(const std::string& name) : m_name(name) {
    struct stat status {};
    if (name.empty() || ::stat(name.c_str(), &status) != 0)
        return;
    if (!S_ISCHR(status.st_mode) || !isTerminalMajor(major(status.st_rdev)))
        throw serial::IOException(__FILE__, __LINE__, S_ISDIR(status.st_mode) ? EISDIR : ENOTTY);
    m_turn = std::unique_lock(openings());
    m_device = status.st_rdev;
    m_before = librarysDescriptors(m_device);
}

int PortOpening::descriptor() const {
    if (m_device == 0)
        return -1;
    const std::vector<int> now = librarysDescriptors(m_device);
    std::vector<int> opened;
    std::set_difference(now.begin(), now.end(), m_before.begin(), m_before.end(), std::back_inserter(opened));
    return opened.size() == 1 ? opened.front() : -1;
}

/// The library loses the descriptor of a device that it can open but not configure. To ask the device before
/// would open it once more, which moves its modem lines. The exception has the error number, if any.
void PortOpening::undo(const serial::IOException&, std::chrono::nanoseconds) const {
    if (const int lost = descriptor(); lost != -1)
        ::close(lost);
}
