#include "tests/fake/fakeserial.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <mutex>
#include <sstream>
#include <thread>

namespace {

using fake_serial::Bytes;

struct ReadStep {
    Bytes bytes = {};
    bool throws = false;
    std::size_t promised = 0; ///< reported besides the bytes
};

struct State {
    std::mutex mutex;
    std::vector<serial::PortInfo> ports;
    int openError = 0;
    std::deque<ReadStep> reads;
    Bytes endlessRead;
    std::deque<std::size_t> shortWrites;
    std::string throwingCall;
    std::string throwingText;
    std::string flushInputRefusal; ///< empty: flushInput works
    std::function<void(const Bytes&)> writeReaction;
    std::vector<std::string> calls;
    std::vector<Bytes> writes;
};

State& state() {
    static State instance;
    return instance;
}

void record(const std::string& name, const std::string& details = {}) {
    State& s = state();
    const std::lock_guard lock(s.mutex);
    s.calls.push_back(details.empty() ? name : name + ' ' + details);
    if (s.throwingCall == name)
        throw serial::SerialException(s.throwingText.c_str());
}

std::string text(const serial::Timeout& timeout) {
    std::ostringstream out;
    out << timeout.inter_byte_timeout << ',' << timeout.read_timeout_constant << ','
        << timeout.read_timeout_multiplier << ',' << timeout.write_timeout_constant << ','
        << timeout.write_timeout_multiplier;
    return out.str();
}

std::string lineSettings(serial::bytesize_t size, serial::parity_t parity, serial::stopbits_t stop,
                         serial::flowcontrol_t flow) {
    std::string words = std::to_string(static_cast<int>(size));
    words += parity == serial::parity_none ? 'N' : '?';
    words += std::to_string(static_cast<int>(stop));
    if (flow != serial::flowcontrol_none)
        words += " flow control";
    return words;
}

} // namespace

namespace fake_serial {

void reset() {
    State& s = state();
    const std::lock_guard lock(s.mutex);
    s.ports.clear();
    s.openError = 0;
    s.reads.clear();
    s.endlessRead.clear();
    s.shortWrites.clear();
    s.throwingCall.clear();
    s.flushInputRefusal.clear();
    s.writeReaction = nullptr;
    s.calls.clear();
    s.writes.clear();
}

void setPorts(std::vector<serial::PortInfo> ports) {
    const std::lock_guard lock(state().mutex);
    state().ports = std::move(ports);
}

void failOpening(int errorNumber) {
    const std::lock_guard lock(state().mutex);
    state().openError = errorNumber;
}

void willRead(Bytes bytes) {
    const std::lock_guard lock(state().mutex);
    state().reads.push_back({std::move(bytes)});
}

void willTimeOut(int times) {
    for (int i = 0; i < times; ++i)
        willRead({});
}

void willThrowOnRead() {
    const std::lock_guard lock(state().mutex);
    state().reads.push_back({{}, true});
}

void willReadForever(Bytes bytes) {
    const std::lock_guard lock(state().mutex);
    state().endlessRead = std::move(bytes);
}

void willWriteOnly(std::size_t count) {
    const std::lock_guard lock(state().mutex);
    state().shortWrites.push_back(count);
}

void throwOn(const std::string& call, const std::string& text) {
    const std::lock_guard lock(state().mutex);
    state().throwingCall = call;
    state().throwingText = text;
}

void refuseFlushInput(const std::string& text) {
    const std::lock_guard lock(state().mutex);
    state().flushInputRefusal = text;
}

void willPromise(std::size_t count) {
    const std::lock_guard lock(state().mutex);
    state().reads.push_back({{}, false, count});
}

void onWrite(std::function<void(const Bytes&)> reaction) {
    const std::lock_guard lock(state().mutex);
    state().writeReaction = std::move(reaction);
}

std::vector<std::string> calls() {
    const std::lock_guard lock(state().mutex);
    return state().calls;
}

std::vector<Bytes> writes() {
    const std::lock_guard lock(state().mutex);
    return state().writes;
}

int count(const std::string& call) {
    const std::vector<std::string> all = calls();
    return static_cast<int>(std::count_if(all.begin(), all.end(), [&](const std::string& entry) {
        return entry == call || entry.rfind(call + ' ', 0) == 0;
    }));
}

Bytes bytes(const std::string& hexText) {
    Bytes result;
    std::istringstream words(hexText);
    for (std::string word; words >> word;)
        result.push_back(static_cast<std::uint8_t>(std::stoul(word, nullptr, 16)));
    return result;
}

std::string hex(const Bytes& bytes) {
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string result;
    for (const std::uint8_t byte : bytes) {
        if (!result.empty())
            result += ' ';
        result += digits[byte >> 4];
        result += digits[byte & 0x0FU];
    }
    return result;
}

} // namespace fake_serial

namespace serial {

class Serial::SerialImpl {
public:
    std::string port;
    Timeout timeout;
};

Serial::Serial(const std::string& port, uint32_t baudrate, Timeout timeout, bytesize_t bytesize,
               parity_t parity, stopbits_t stopbits, flowcontrol_t flowcontrol)
    : pimpl_(nullptr) {
    record("open", port + ' ' + std::to_string(baudrate) + ' ' + text(timeout) + ' ' +
                       lineSettings(bytesize, parity, stopbits, flowcontrol));
    int error = 0;
    {
        const std::lock_guard lock(state().mutex);
        error = state().openError;
    }
    if (!port.empty() && error != 0)
        throw IOException("fake", 0, error);
    pimpl_ = new SerialImpl{port, timeout};
}

Serial::~Serial() {
    record("close");
    delete pimpl_;
}

void Serial::setTimeout(Timeout& timeout) {
    record("setTimeout", text(timeout));
    pimpl_->timeout = timeout;
}

void Serial::flush() {
    record("flush");
}

void Serial::flushInput() {
    record("flushInput");
    const std::lock_guard lock(state().mutex);
    if (!state().flushInputRefusal.empty())
        throw IOException("fake", 0, state().flushInputRefusal.c_str());
}

size_t Serial::available() {
    record("available");
    const std::lock_guard lock(state().mutex);
    if (state().reads.empty())
        return 0;
    const ReadStep& next = state().reads.front();
    return next.bytes.size() + next.promised;
}

size_t Serial::write(const uint8_t* data, size_t size) {
    const Bytes written(data, data + size);
    record("write", fake_serial::hex(written));
    std::function<void(const Bytes&)> reaction;
    {
        State& s = state();
        const std::lock_guard lock(s.mutex);
        if (pimpl_->port.empty())
            throw PortNotOpenedException("Serial::write");
        s.writes.push_back(written);
        if (!s.shortWrites.empty()) {
            size = s.shortWrites.front();
            s.shortWrites.pop_front();
        }
        reaction = s.writeReaction;
    }
    if (reaction)
        reaction(written);
    return size;
}

size_t Serial::read(std::vector<uint8_t>& buffer, size_t size) {
    record("read", std::to_string(size));
    State& s = state();
    std::unique_lock lock(s.mutex);
    if (pimpl_->port.empty())
        throw PortNotOpenedException("Serial::read");
    ReadStep step{s.endlessRead};
    if (!s.reads.empty()) {
        step = s.reads.front();
        s.reads.pop_front();
    }
#ifdef CAMERA_VIRTUAL_TIME
    if (step.bytes.empty()) { // others go on only while this thread waits, and it may read for ever
        lock.unlock();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        lock.lock();
    }
#endif
    if (step.throws)
        throw SerialException("device reports readiness to read but returned no data");
    const size_t taken = std::min(size, step.bytes.size());
    const auto cut = step.bytes.begin() + static_cast<std::ptrdiff_t>(taken);
    buffer.insert(buffer.end(), step.bytes.begin(), cut);
    if (cut != step.bytes.end())
        s.reads.push_front({Bytes(cut, step.bytes.end())});
    return taken;
}

std::vector<PortInfo> list_ports() {
    const std::lock_guard lock(state().mutex);
    return state().ports;
}

} // namespace serial
