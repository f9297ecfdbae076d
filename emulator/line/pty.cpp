#include "emulator/line/pty.h"

#include "emulator/line/terminal.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace emulator {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void failSystem(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

void closeDescriptor(int& descriptor) {
    if (descriptor >= 0)
        ::close(descriptor);
    descriptor = -1;
}

} // namespace

void Pty::open() {
    try {
        openPair();
        const std::lock_guard lock(m_nameMutex);
        makeLink();
    } catch (...) {
        close();
        throw;
    }
}

void Pty::openPair() {
    m_master = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (m_master < 0 || ::grantpt(m_master) != 0 || ::unlockpt(m_master) != 0)
        failSystem("pseudo-terminal");
    std::array<char, 256> name{};
    if (::ptsname_r(m_master, name.data(), name.size()) != 0)
        failSystem("ptsname");
    m_slave = ::open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (m_slave < 0 || !makeRaw(m_slave, std::nullopt))
        failSystem(name.data());
    const std::lock_guard lock(m_nameMutex);
    m_portName = name.data();
}

void Pty::close() {
    {
        const std::lock_guard lock(m_nameMutex);
        removeLink();
        m_portName.clear();
    }
    closeDescriptor(m_slave);
    closeDescriptor(m_master);
}

std::string Pty::portName() const {
    const std::lock_guard lock(m_nameMutex);
    return m_portName;
}

void Pty::linkAt(const std::string& path) {
    const std::lock_guard lock(m_nameMutex);
    const fs::file_status found = fs::symlink_status(path);
    if (fs::exists(found) && !fs::is_symlink(found))
        throw std::runtime_error(path + " exists and is not a link");
    removeLink();
    m_link = path;
    makeLink();
}

/// Renames a new link to the path: the path always has a link.
void Pty::makeLink() {
    if (m_link.empty() || m_portName.empty())
        return;
    const std::string fresh = m_link + "." + std::to_string(::getpid()) + ".new";
    fs::remove(fresh);
    fs::create_symlink(m_portName, fresh);
    fs::rename(fresh, m_link);
}

/// Removes the link only if it still leads to this pair.
void Pty::removeLink() const {
    std::error_code ignored;
    if (!m_link.empty() && fs::read_symlink(m_link, ignored) == m_portName)
        fs::remove(m_link, ignored);
}

} // namespace emulator
