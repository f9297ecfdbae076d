// A pseudo-terminal with a link to it. Unix only.
#pragma once

#include <mutex>
#include <string>

namespace emulator {

/// Keeps both ends of a pseudo-terminal open: the pair stays when a user of the far end closes it. Any thread
/// may call portName and linkAt; one thread at a time the rest.
class Pty {
public:
    Pty() = default;
    ~Pty() { close(); }
    Pty(const Pty&) = delete;
    Pty& operator=(const Pty&) = delete;

    /// Opens a new pair in raw mode and makes the link. Throws std::runtime_error when the system has none
    /// left, and is closed then.
    void open();
    /// Removes the link too.
    void close();
    [[nodiscard]] bool isOpen() const { return m_master >= 0; }
    /// The near end; does not block. -1 while closed.
    [[nodiscard]] int master() const { return m_master; }
    /// The far end.
    [[nodiscard]] int slave() const { return m_slave; }

    /// Path of the far end; empty while closed.
    [[nodiscard]] std::string portName() const;
    /// Keeps a symbolic link to the far end at the path while open. Replaces an existing link; throws
    /// std::runtime_error for any other existing file.
    void linkAt(const std::string& path);

private:
    void openPair();
    void makeLink();
    void removeLink() const;

    mutable std::mutex m_nameMutex; // guards m_portName and m_link
    std::string m_portName;
    std::string m_link;
    int m_master = -1;
    int m_slave = -1;
};

} // namespace emulator
