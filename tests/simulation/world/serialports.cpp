// Stands in for the serial library: the functions of the library's own header, on simulated lines.
#include "tests/simulation/world/simulatedline.h"
#include "trace/hextext.h"

#include <serial/serial.h>

#include <algorithm>
#include <cerrno>
#include <map>

using namespace std::chrono_literals;

namespace world {

namespace {

struct Registry {
    std::map<std::string, SimulatedPort> ports;
    int open = 0;
    int openByFirstThread = 0;
    std::function<void(const std::string&, const std::string&)> observer;
    std::function<void(const std::string&)> readObserver;
};

Registry& registry() {
    static Registry instance;
    return instance;
}

template <typename Call>
void tell(const std::string& port, const Call& call) {
    if (registry().observer)
        registry().observer(port, call());
    preempt();
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

Time deadline(std::uint32_t constant, std::uint32_t multiplier, std::size_t bytes) {
    return now() + std::chrono::milliseconds(constant + std::uint64_t{multiplier} * bytes);
}

} // namespace

void addPort(const std::string& name, const SimulatedPort& port) {
    registry().ports[name] = port;
}

void removePort(const std::string& name) {
    registry().ports.erase(name);
}

SimulatedPort* findPort(const std::string& name) {
    const auto found = registry().ports.find(name);
    return found == registry().ports.end() ? nullptr : &found->second;
}

int openPorts() {
    return registry().open;
}

int openPortsOfFirstThread() {
    return registry().openByFirstThread;
}

void setCallObserver(std::function<void(const std::string&, const std::string&)> observer) {
    registry().observer = std::move(observer);
}

void setReadObserver(std::function<void(const std::string&)> observer) {
    registry().readObserver = std::move(observer);
}

} // namespace world

namespace serial {

using world::SimulatedLine;

namespace {

const IOException deviceFailed("serialports", 0, EIO);
const SerialException
    nothingWritten("device reports readiness to write but returned no data (device disconnected?)");

} // namespace

class Serial::SerialImpl {
public:
    SerialImpl(std::string name, Timeout limits) : port(std::move(name)), timeout(limits) { count(1); }
    ~SerialImpl() {
        count(-1);
        if (SimulatedLine* const line = currentLine())
            line->closeToolEnd();
    }
    SerialImpl(const SerialImpl&) = delete;
    SerialImpl& operator=(const SerialImpl&) = delete;

    /// Null when the device is gone, or nothing is at the other end.
    [[nodiscard]] SimulatedLine* currentLine() const {
        const world::SimulatedPort* const there = world::findPort(port);
        return there == nullptr || there->line == nullptr || !there->line->isPresent() ? nullptr
                                                                                       : there->line;
    }
    void requireOpen(const char* function) const {
        if (port.empty())
            throw PortNotOpenedException(function);
    }
    /// Null: nothing is at the other end.
    template <typename Failure>
    [[nodiscard]] SimulatedLine* requireDevice(const Failure& whenGone) const {
        const world::SimulatedPort* const there = world::findPort(port);
        if (there == nullptr || (there->line != nullptr && !there->line->isPresent()))
            throw whenGone;
        return there->line;
    }

    const std::string port;
    Timeout timeout;

private:
    void count(int change) const {
        if (port.empty())
            return;
        world::registry().open += change;
        world::registry().openByFirstThread += m_byFirstThread ? change : 0;
    }

    const bool m_byFirstThread = world::threadNumber() == 0;
};

Serial::Serial(const std::string& port, uint32_t baudrate, Timeout timeout, bytesize_t, parity_t, stopbits_t,
               flowcontrol_t)
    : pimpl_(nullptr) {
    world::tell(port, [&] { return "open " + std::to_string(baudrate) + ' ' + world::text(timeout); });
    if (!port.empty()) {
        const world::SimulatedPort* const there = world::findPort(port);
        if (there == nullptr || (there->line != nullptr && !there->line->isPresent()))
            throw IOException("serialports", 0, ENOENT);
        if (there->busy)
            throw IOException("serialports", 0, EBUSY);
        if (there->line != nullptr)
            there->line->setSpeed(baudrate);
    }
    pimpl_ = new SerialImpl(port, timeout);
}

Serial::~Serial() {
    world::tell(pimpl_->port, [] { return "close"; });
    delete pimpl_;
}

void Serial::setTimeout(Timeout& timeout) {
    world::tell(pimpl_->port, [&timeout] { return "setTimeout " + world::text(timeout); });
    pimpl_->timeout = timeout;
}

void Serial::flush() {
    world::tell(pimpl_->port, [] { return "flush"; });
    pimpl_->requireOpen("Serial::flush");
    while (SimulatedLine* const line = pimpl_->currentLine()) {
        const auto empty = line->emptyAt();
        if (!empty)
            return;
        world::waitFor(line, empty);
    }
}

void Serial::flushInput() {
    world::tell(pimpl_->port, [] { return "flushInput"; });
    pimpl_->requireOpen("Serial::flushInput");
    if (SimulatedLine* const line = pimpl_->currentLine())
        line->discardReceived();
}

size_t Serial::available() {
    world::tell(pimpl_->port, [] { return "available"; });
    if (pimpl_->port.empty())
        return 0;
    SimulatedLine* const line = pimpl_->requireDevice(deviceFailed);
    return line == nullptr ? 0 : line->available();
}

size_t Serial::write(const uint8_t* data, size_t size) {
    world::tell(pimpl_->port, [data, size] {
        return "write " + std::to_string(size) + ": " + world::firstBytes(data, size);
    });
    pimpl_->requireOpen("Serial::write");
    const Timeout& timeout = pimpl_->timeout;
    const world::Time end =
        world::deadline(timeout.write_timeout_constant, timeout.write_timeout_multiplier, size);
    size_t written = 0;
    while (written < size) {
        SimulatedLine* const line = pimpl_->requireDevice(nothingWritten);
        if (line == nullptr)
            return size;
        written += line->send(std::span(data + written, size - written));
        if (written == size || world::now() >= end)
            break;
        world::waitFor(line, std::min(end, line->roomAt().value_or(end)));
    }
    return written;
}

size_t Serial::read(std::vector<uint8_t>& buffer, size_t size) {
    world::tell(pimpl_->port, [size] { return "read " + std::to_string(size); });
    pimpl_->requireOpen("Serial::read");
    const Timeout& timeout = pimpl_->timeout;
    const world::Time end =
        world::deadline(timeout.read_timeout_constant, timeout.read_timeout_multiplier, size);
    protocol::Bytes received;
    while (true) {
        SimulatedLine* const line = pimpl_->requireDevice(deviceFailed);
        if (line != nullptr) {
            const protocol::Bytes more = line->take(size - received.size());
            received.insert(received.end(), more.begin(), more.end());
        }
        if (received.size() == size || world::now() >= end)
            break;
        const auto next = line == nullptr ? std::nullopt : line->nextArrival();
        world::waitFor(line, std::min(end, next.value_or(end)));
    }
    buffer.insert(buffer.end(), received.begin(), received.end());
    if (const auto& observer = world::registry().readObserver; observer && !received.empty())
        observer(pimpl_->port);
    return received.size();
}

std::vector<PortInfo> list_ports() {
    std::vector<PortInfo> ports;
    for (const auto& [name, port] : world::registry().ports) {
        if (port.listed && (port.line == nullptr || port.line->isPresent()))
            ports.push_back({name, port.description, port.hardwareId});
    }
    return ports;
}

} // namespace serial
