#include "emulator/line/pty.h"

#include "emulator/line/terminal.h"
#include "emulator/line/terminalowner.h"
#include "language/language.h"

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

using language::sentence;

[[noreturn]] void failSystem() {
    throw std::runtime_error(
        sentence("the system gives no pseudo-terminal: %1", {language::reasonOf(errno)}));
}

[[noreturn]] void failLink(const std::string& path, const std::error_code& error) {
    const fs::path folder = fs::path(path).has_parent_path() ? fs::path(path).parent_path() : ".";
    std::error_code ignored;
    const fs::file_status found = fs::status(folder, ignored);
    if (found.type() == fs::file_type::not_found)
        throw std::runtime_error(
            sentence("--link: there is no folder %1; make it or choose another", {folder.string()}));
    if (fs::exists(found) && !fs::is_directory(found))
        throw std::runtime_error(sentence("--link: %1 is no folder; choose another path", {folder.string()}));
    throw std::runtime_error(
        sentence("--link: cannot write to the folder %1 (%2); use sudo or choose another",
                 {folder.string(), language::reasonOf(error.value())}));
}

/// Makes the link and gives it, not the terminal, to its owner.
std::error_code makeOwnedLink(const fs::path& target, const fs::path& link) {
    std::error_code error;
    fs::create_symlink(target, link, error);
    const auto owner = sudoUser();
    if (!error && owner && ::lchown(link.c_str(), owner->user, owner->group) != 0)
        error.assign(errno, std::generic_category());
    return error;
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
        failSystem();
    std::array<char, 256> name{};
    if (::ptsname_r(m_master, name.data(), name.size()) != 0)
        failSystem();
    m_slave = ::open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (m_slave < 0 || !makeRaw(m_slave, std::nullopt))
        failSystem();
    if (const auto owner = sudoUser(); owner && ::fchown(m_slave, owner->user, owner->group) != 0)
        failSystem();
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
    std::error_code error;
    const fs::file_status found = fs::symlink_status(path, error);
    if (fs::exists(found) && !fs::is_symlink(found))
        throw std::runtime_error(
            sentence("--link: %1 exists and is no link; remove it or choose another path", {path}));
    if (found.type() == fs::file_type::none)
        failLink(path, error);
    removeLink();
    m_link = path;
    makeLink();
}

/// Renames a new link to the path: the path always has a link.
void Pty::makeLink() {
    if (m_link.empty() || m_portName.empty())
        return;
    const std::string fresh = m_link + "." + std::to_string(::getpid()) + ".new";
    std::error_code ignored;
    fs::remove(fresh, ignored);
    std::error_code error = makeOwnedLink(m_portName, fresh);
    if (!error)
        fs::rename(fresh, m_link, error);
    if (error) {
        fs::remove(fresh, ignored);
        failLink(m_link, error);
    }
}

/// Removes the link only if it still leads to this pair.
void Pty::removeLink() const {
    std::error_code ignored;
    if (!m_link.empty() && fs::read_symlink(m_link, ignored) == m_portName)
        fs::remove(m_link, ignored);
}

} // namespace emulator
