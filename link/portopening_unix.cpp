#include "link/portopening.h"

#include <cerrno>
#include <fstream>
#include <sstream>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace {

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

} // namespace

/// The library leaks a file descriptor for each path that it can open but not configure. Therefore a path
/// that is no terminal is refused with the library's exception. It is not opened here: opening moves the
/// modem lines.
const std::string& checkedPortName(const std::string& name) {
    struct stat status {};
    if (!name.empty() && ::stat(name.c_str(), &status) == 0 &&
        (!S_ISCHR(status.st_mode) || !isTerminalMajor(major(status.st_rdev))))
        throw serial::IOException(__FILE__, __LINE__, S_ISDIR(status.st_mode) ? EISDIR : ENOTTY);
    return name;
}

void throwReasonOfOpening(const std::string&, const serial::IOException&, std::chrono::nanoseconds) {
    // The library's exception has the error number.
}
