// The serial library, as its own header declares it, on lines in memory instead of devices.
#include "emulator/memory/memoryports.h"

#include "emulator/memory/memorylock.h"
#include "trace/hextext.h"

#include <serial/serial.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <set>

namespace emulator {

namespace {

struct Registry {
    std::map<std::string, MemoryPort> ports;
    std::multiset<std::thread::id> openers; ///< of each open port
    std::function<void(const std::string&, const std::string&)> observer;
    ByteObserver writeObserver;
    ByteObserver readObserver;
    std::function<void(const std::string&)> failureObserver;
};

Registry& registry() {
    static auto* const instance = new Registry; // outlives every thread
    return *instance;
}

/// Without the lock: the observer uses ports.
template <typename Call>
void tell(const std::string& port, const Call& call) {
    if (registry().observer)
        registry().observer(port, call());
}

/// Enough to tell a request.
std::string firstBytes(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t most = 16;
    return trace::hexText(std::span(data, std::min(size, most))) + (size > most ? " .." : "");
}

std::string text(const serial::Timeout& timeout) {
    std::string words;
    for (const std::uint32_t value :
         {timeout.inter_byte_timeout, timeout.read_timeout_constant, timeout.read_timeout_multiplier,
          timeout.write_timeout_constant, timeout.write_timeout_multiplier})
        words += (words.empty() ? "" : ",") + std::to_string(value);
    return words;
}

MemoryLine::Moment deadline(std::uint32_t constant, std::uint32_t multiplier, std::size_t bytes) {
    return MemoryLine::Clock::now() + std::chrono::milliseconds(constant + std::uint64_t{multiplier} * bytes);
}

} // namespace

void addMemoryPort(const std::string& name, const MemoryPort& port) {
    registry().ports[name] = port;
}

void removeMemoryPort(const std::string& name) {
    registry().ports.erase(name);
}

MemoryPort* findMemoryPort(const std::string& name) {
    const auto found = registry().ports.find(name);
    return found == registry().ports.end() ? nullptr : &found->second;
}

int openMemoryPorts() {
    return static_cast<int>(registry().openers.size());
}

int openMemoryPorts(std::thread::id opener) {
    return static_cast<int>(registry().openers.count(opener));
}

void setCallObserver(std::function<void(const std::string&, const std::string&)> observer) {
    registry().observer = std::move(observer);
}

void setWriteObserver(ByteObserver observer) {
    registry().writeObserver = std::move(observer);
}

void setReadObserver(ByteObserver observer) {
    registry().readObserver = std::move(observer);
}

void setFailureObserver(std::function<void(const std::string&)> observer) {
    registry().failureObserver = std::move(observer);
}

} // namespace emulator

namespace serial {

using emulator::MemoryLine;
using emulator::MemoryLock;
using emulator::MemoryPort;
using emulator::registry;
using emulator::tell;

namespace {

const IOException deviceFailed("memoryports", 0, EIO);
const SerialException
    nothingWritten("device reports readiness to write but returned no data (device disconnected?)");

} // namespace

/// All functions are called with the lock held.
class Serial::SerialImpl {
public:
    SerialImpl(std::string name, Timeout limits) : port(std::move(name)), timeout(limits) {
        if (!port.empty())
            registry().openers.insert(m_opener);
    }
    ~SerialImpl() {
        auto& openers = registry().openers;
        if (const auto own = openers.find(m_opener); !port.empty() && own != openers.end())
            openers.erase(own);
        if (MemoryLine* const line = currentLine())
            line->closeToolEnd();
    }
    SerialImpl(const SerialImpl&) = delete;
    SerialImpl& operator=(const SerialImpl&) = delete;

    /// Null when the device is gone, or nothing is at the other end.
    [[nodiscard]] MemoryLine* currentLine() const {
        const MemoryPort* const there = emulator::findMemoryPort(port);
        return there == nullptr || there->line == nullptr || !there->line->isPresent() ? nullptr
                                                                                       : there->line;
    }
    void requireOpen(const char* function) const {
        if (port.empty())
            throw PortNotOpenedException(function);
    }
    /// Null: nothing is at the other end.
    template <typename Failure>
    [[nodiscard]] MemoryLine* requireDevice(const Failure& whenGone) const {
        const MemoryPort* const there = emulator::findMemoryPort(port);
        if (there == nullptr || (there->line != nullptr && !there->line->isPresent()))
            fail(whenGone);
        return there->line;
    }
    template <typename Failure>
    void failIfAsked(const Failure& failure) const {
        MemoryPort* const there = emulator::findMemoryPort(port);
        if (there != nullptr && std::exchange(there->failsOnce, false))
            fail(failure);
    }

    const std::string port;
    Timeout timeout;

private:
    template <typename Failure>
    [[noreturn]] void fail(const Failure& failure) const {
        if (registry().failureObserver)
            registry().failureObserver(port);
        throw failure;
    }

    const std::thread::id m_opener = std::this_thread::get_id();
};

Serial::Serial(const std::string& port, uint32_t baudrate, Timeout timeout, bytesize_t, parity_t, stopbits_t,
               flowcontrol_t)
    : pimpl_(nullptr) {
    tell(port, [&] { return "open " + std::to_string(baudrate) + ' ' + emulator::text(timeout); });
    const MemoryLock lock;
    if (!port.empty()) {
        const MemoryPort* const there = emulator::findMemoryPort(port);
        if (there == nullptr || (there->line != nullptr && !there->line->isPresent()))
            throw IOException("memoryports", 0, ENOENT);
        if (there->busy)
            throw IOException("memoryports", 0, EBUSY);
        if (there->line != nullptr)
            there->line->setSpeed(baudrate);
    }
    pimpl_ = new SerialImpl(port, timeout);
}

Serial::~Serial() {
    tell(pimpl_->port, [] { return "close"; });
    const MemoryLock lock;
    delete pimpl_;
}

void Serial::setTimeout(Timeout& timeout) {
    tell(pimpl_->port, [&timeout] { return "setTimeout " + emulator::text(timeout); });
    pimpl_->timeout = timeout;
}

void Serial::flush() {
    tell(pimpl_->port, [] { return "flush"; });
    pimpl_->requireOpen("Serial::flush");
    MemoryLock lock;
    pimpl_->failIfAsked(deviceFailed);
    while (MemoryLine* const line = pimpl_->currentLine()) {
        const auto empty = line->emptyAt();
        if (!empty)
            return;
        lock.waitUntil(*empty);
    }
}

void Serial::flushInput() {
    tell(pimpl_->port, [] { return "flushInput"; });
    pimpl_->requireOpen("Serial::flushInput");
    const MemoryLock lock;
    pimpl_->failIfAsked(deviceFailed);
    if (MemoryLine* const line = pimpl_->currentLine())
        line->discardReceived();
}

size_t Serial::available() {
    tell(pimpl_->port, [] { return "available"; });
    if (pimpl_->port.empty())
        return 0;
    const MemoryLock lock;
    MemoryLine* const line = pimpl_->requireDevice(deviceFailed);
    return line == nullptr ? 0 : line->available();
}

size_t Serial::write(const uint8_t* data, size_t size) {
    tell(pimpl_->port,
         [data, size] { return "write " + std::to_string(size) + ": " + emulator::firstBytes(data, size); });
    pimpl_->requireOpen("Serial::write");
    if (const auto& observer = registry().writeObserver)
        observer(pimpl_->port, protocol::Bytes(data, data + size));
    MemoryLock lock;
    pimpl_->failIfAsked(nothingWritten);
    const Timeout& timeout = pimpl_->timeout;
    const auto end =
        emulator::deadline(timeout.write_timeout_constant, timeout.write_timeout_multiplier, size);
    size_t written = 0;
    while (written < size) {
        MemoryLine* const line = pimpl_->requireDevice(nothingWritten);
        if (line == nullptr)
            return size;
        written += line->send(std::span(data + written, size - written));
        if (written == size || MemoryLine::Clock::now() >= end)
            break;
        lock.waitUntil(std::min(end, line->roomAt().value_or(end)));
    }
    return written;
}

size_t Serial::read(std::vector<uint8_t>& buffer, size_t size) {
    tell(pimpl_->port, [size] { return "read " + std::to_string(size); });
    pimpl_->requireOpen("Serial::read");
    const Timeout& timeout = pimpl_->timeout;
    protocol::Bytes received;
    {
        MemoryLock lock;
        pimpl_->failIfAsked(deviceFailed);
        const auto end =
            emulator::deadline(timeout.read_timeout_constant, timeout.read_timeout_multiplier, size);
        while (true) {
            MemoryLine* const line = pimpl_->requireDevice(deviceFailed);
            if (line != nullptr)
                protocol::append(received, line->take(size - received.size()));
            if (received.size() == size || MemoryLine::Clock::now() >= end)
                break;
            const auto next = line == nullptr ? std::nullopt : line->nextArrival();
            lock.waitUntil(std::min(end, next.value_or(end)));
        }
    }
    buffer.insert(buffer.end(), received.begin(), received.end());
    if (const auto& observer = registry().readObserver; observer && !received.empty())
        observer(pimpl_->port, received);
    return received.size();
}

std::vector<PortInfo> list_ports() {
    const MemoryLock lock;
    std::vector<PortInfo> ports;
    for (const auto& [name, port] : registry().ports) {
        if (port.listed && (port.line == nullptr || port.line->isPresent()))
            ports.push_back({name, port.description, port.hardwareId});
    }
    return ports;
}

} // namespace serial
