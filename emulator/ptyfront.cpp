#include "emulator/ptyfront.h"

#include "emulator/terminal.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <sys/ioctl.h>
#include <system_error>
#include <termios.h>
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

PtyFront::PtyFront(VirtualCamera camera) : CameraFront(std::move(camera)) {
    try {
        openPair();
    } catch (...) {
        PtyFront::closeLine();
        throw;
    }
    start(m_master);
}

PtyFront::~PtyFront() {
    stop();
    closeLine();
}

void PtyFront::openPair() {
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

std::string PtyFront::portName() const {
    const std::lock_guard lock(m_nameMutex);
    return m_portName;
}

void PtyFront::linkAt(const std::string& path) {
    const std::lock_guard lock(m_nameMutex);
    const fs::file_status found = fs::symlink_status(path);
    if (fs::exists(found) && !fs::is_symlink(found))
        throw std::runtime_error(path + " exists and is not a link");
    removeLink();
    m_link = path;
    makeLink();
}

/// Under another name first, so that the path never misses its link.
void PtyFront::makeLink() {
    if (m_link.empty() || m_portName.empty())
        return;
    const std::string fresh = m_link + "." + std::to_string(::getpid()) + ".new";
    fs::remove(fresh);
    fs::create_symlink(m_portName, fresh);
    fs::rename(fresh, m_link);
}

/// Only the link that is still this front's.
void PtyFront::removeLink() const {
    std::error_code ignored;
    if (!m_link.empty() && fs::read_symlink(m_link, ignored) == m_portName)
        fs::remove(m_link, ignored);
}

void PtyFront::closeLine() {
    {
        const std::lock_guard lock(m_nameMutex);
        removeLink();
        m_portName.clear();
    }
    closeDescriptor(m_slave);
    closeDescriptor(m_master);
}

void PtyFront::vanish() {
    runOnThread([this] {
        closeLine();
        setLine(LineIo::none);
    });
}

void PtyFront::comeBack() {
    std::exception_ptr failure;
    runOnThread([this, &failure] {
        if (m_master >= 0)
            return;
        try {
            openPair();
            const std::lock_guard lock(m_nameMutex);
            makeLink();
        } catch (...) {
            failure = std::current_exception();
            closeLine();
            return;
        }
        setLine(m_master);
        withCamera([this](VirtualCamera& camera) { camera.lineReopened(now()); });
    });
    if (failure)
        std::rethrow_exception(failure);
}

void PtyFront::setBusy(bool busy) {
    runOnThread([this, busy] {
        if (m_slave >= 0)
            ::ioctl(m_slave, busy ? TIOCEXCL : TIOCNXCL);
    });
}

std::optional<std::uint32_t> PtyFront::lineSpeed() const {
    return terminalSpeed(m_slave);
}

} // namespace emulator
