// A pseudo-terminal with a link to it. Unix only.
#pragma once

#include <mutex>
#include <string>

namespace emulator {

/// Both ends of a pseudo-terminal; the far end is held open too, so that the pair outlives the closing by
/// whoever uses it. portName and linkAt may be called from any thread, the rest from one thread at a time.
class Pty {
public:
    Pty() = default;
    ~Pty() { close(); }
    Pty(const Pty&) = delete;
    Pty& operator=(const Pty&) = delete;

    /// A new pair, raw, with the link in place. Throws std::system_error when the system has none left;
    /// closed then.
    void open();
    /// Takes the link away too.
    void close();
    [[nodiscard]] bool isOpen() const { return m_master >= 0; }
    /// The near end; does not block. -1 while closed.
    [[nodiscard]] int master() const { return m_master; }
    /// The far end.
    [[nodiscard]] int slave() const { return m_slave; }

    /// Path of the far end; empty while closed.
    [[nodiscard]] std::string portName() const;
    /// Keeps a symbolic link to the far end at the path while open. Replaces a link that is there; throws
    /// std::runtime_error when something else is.
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
