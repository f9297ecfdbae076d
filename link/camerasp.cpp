// The session: opening and closing the port, the life of the link, and the one exchange.
#include "link/camerasp.h"

#include "link/diagnostics.h"
#include "link/guarded.h"
#include "link/protocol/jsonenvelope.h"

#include <thread>

using namespace protocol;

namespace {

constexpr std::uint32_t defaultBaudRate = 9600;
constexpr const char* stoppedText = "link is closing";

std::function<void(std::chrono::nanoseconds)>& sleepReplacement() {
    static std::function<void(std::chrono::nanoseconds)> replacement;
    return replacement;
}

/// The system refuses to guess among several ports.
std::string onlyPort() {
    const std::vector<serial::PortInfo> ports = serial::list_ports();
    if (ports.empty())
        throw "serial unavailable";
    if (ports.size() > 1)
        throw "serial port size>1";
    return ports.front().port;
}

void logRequest(RequestLog kind, ByteView request) {
    if (kind == RequestLog::none)
        return;
    const char* const tag = kind == RequestLog::sdata   ? "sdata:"
                            : kind == RequestLog::infos ? "infos:"
                            : kind == RequestLog::cert  ? "cert:"
                                                        : "every:";
    // Whatever is logged after an application or model announcement stays hexadecimal.
    if (kind == RequestLog::every)
        diagnostics::useHexadecimal();
    for (const std::uint8_t byte : request)
        diagnostics::line(tag, unsigned{byte});
}

} // namespace

CameraSp::CameraSp(const std::string& portName) : CameraSp(portName, defaultBaudRate) {}

CameraSp::CameraSp(const std::string& portName, std::uint32_t baudRate)
    : m_port(std::make_unique<SerialPort>(portName, baudRate, namedPortTimeoutMs)), m_baudRate(baudRate) {}

CameraSp::CameraSp(std::uint32_t baudRate)
    : m_port(std::make_unique<SerialPort>(onlyPort(), baudRate, onlyPortTimeoutMs)), m_baudRate(baudRate) {}

CameraSp::CameraSp() : CameraSp(defaultBaudRate) {}

CameraSp::~CameraSp() {
    m_port.reset();
    diagnostics::line("in ~CameraSp");
}

std::vector<std::string> CameraSp::getPorts() {
    std::vector<std::string> names;
    for (const serial::PortInfo& info : describePorts())
        names.push_back(info.port);
    return names;
}

std::vector<serial::PortInfo> CameraSp::describePorts() {
    return guarded(std::vector<serial::PortInfo>(), [] { return serial::list_ports(); });
}

void CameraSp::setSlaveAddress(std::int32_t address) {
    m_slaveAddress = address;
}

void CameraSp::setOriginPicCmdExtraAdd(std::uint8_t offset) {
    m_pictureOffset = offset;
}

void CameraSp::setAppFilePath(const std::string& path) {
    m_appFilePath = path;
}

void CameraSp::setFirewareFilePath(const std::string& path) {
    m_firewareFilePath = path;
}

void CameraSp::setModelNameAndPath(const std::string& name, const std::string& path) {
    m_modelName = name;
    m_modelFilePath = path;
}

// --- life of the link ------------------------------------------------------------------------------------

void CameraSp::requestStop() {
    {
        const std::lock_guard lock(m_lifeMutex);
        m_stop = true;
    }
    m_lifeChanged.notify_all();
}

bool CameraSp::pause(std::chrono::nanoseconds duration) {
    if (const auto& replacement = sleepReplacement()) {
        replacement(duration);
        return !m_stop;
    }
    std::unique_lock lock(m_lifeMutex);
    return !m_lifeChanged.wait_for(lock, duration, [this] { return m_stop.load(); });
}

void CameraSp::waitUntilUnused() {
    std::unique_lock lock(m_lifeMutex);
    m_lifeChanged.wait(lock, [this] { return m_leases == 0; });
}

void CameraSp::replaceSleep(std::function<void(std::chrono::nanoseconds)> sleep) {
    sleepReplacement() = std::move(sleep);
}

CameraSp::Lease::Lease(CameraSp& client) : m_client(&client) {
    const std::lock_guard lock(client.m_lifeMutex);
    ++client.m_leases;
}

CameraSp::Lease::Lease(Lease&& other) noexcept : m_client(std::exchange(other.m_client, nullptr)) {}

CameraSp::Lease& CameraSp::Lease::operator=(Lease&& other) noexcept {
    if (this != &other) {
        release();
        m_client = std::exchange(other.m_client, nullptr);
    }
    return *this;
}

CameraSp::Lease::~Lease() {
    release();
}

void CameraSp::Lease::release() {
    if (m_client == nullptr)
        return;
    // Told under the lock: the client may be deleted as soon as its last lease is seen to be gone.
    const std::lock_guard lock(m_client->m_lifeMutex);
    --m_client->m_leases;
    m_client->m_lifeChanged.notify_all();
    m_client = nullptr;
}

// --- the exchange ----------------------------------------------------------------------------------------

SerialPort& CameraSp::port() {
    if (m_stop)
        throw stoppedText;
    return *m_port;
}

Bytes CameraSp::buildRequest(const ExchangeRule& rule, ByteView payload) const {
    if (rule.reading == Reading::json)
        return buildJsonRequest(payload.toText());
    const auto address = static_cast<std::uint8_t>(m_slaveAddress.load() & 0xFF);
    return buildFrame(code(rule.command), payload, address);
}

ExchangeRule CameraSp::withOffset(const ExchangeRule& rule) const {
    ExchangeRule shifted = rule;
    shifted.command = static_cast<Command>((code(rule.command) + m_pictureOffset.load()) & 0xFF);
    return shifted;
}

CameraSp::Answer CameraSp::exchange(const ExchangeRule& rule, ByteView payload, std::uint64_t wanted) {
    if (rule.timeoutMs != kept)
        port().setTimeouts(rule.timeoutMs, rule.timeoutMs);
    if (rule.discardInput)
        port().discardInput();
    const Bytes request = buildRequest(rule, payload);
    logRequest(rule.requestLog, request);
    if (rule.flushOutput)
        port().flush();
    const std::size_t written = port().write(request);
    if (rule.logsWriteCount)
        diagnostics::line("serialDataLength:", request.size(), "  write-length:", written);
    if (rule.pauseAfterWriteMs > 0)
        pause(std::chrono::milliseconds(rule.pauseAfterWriteMs));

    Answer answer{true, {}};
    switch (rule.reading) {
    case Reading::none:
        break;
    case Reading::once:
        port().read(answer.bytes, static_cast<std::size_t>(rule.readSize));
        break;
    case Reading::frame:
        answer.accepted = checkData(answer.bytes, rule.readSize, rule.tries);
        break;
    case Reading::json:
        answer.accepted = checkQuentaData(answer.bytes, rule.readSize, rule.tries);
        break;
    case Reading::blocks:
        readBlocks(answer.bytes, static_cast<std::size_t>(rule.readSize), wanted);
        break;
    }
    return answer;
}

bool CameraSp::readAnswer(Bytes& answer, std::int32_t readSize, std::int32_t tries, const AnswerForm& form) {
    for (std::int32_t attempt = 0; attempt < tries; ++attempt) {
        port().read(answer, static_cast<std::size_t>(readSize));
        const auto garbage = static_cast<std::ptrdiff_t>(leadingGarbage(answer, form));
        for (auto byte = answer.begin(); byte != answer.begin() + garbage; ++byte)
            diagnostics::line("check data", std::to_string(*byte));
        answer.erase(answer.begin(), answer.begin() + garbage);
        if (isWholeAnswer(answer, form))
            return true;
    }
    return false;
}

bool CameraSp::checkData(std::vector<std::uint8_t>& answer, std::int32_t readSize, std::int32_t tries) {
    return readAnswer(answer, readSize, tries, frameForm);
}

bool CameraSp::checkQuentaData(std::vector<std::uint8_t>& answer, std::int32_t readSize,
                               std::int32_t rounds) {
    return readAnswer(answer, readSize, rounds, jsonForm);
}

void CameraSp::readBlocks(Bytes& answer, std::size_t blockSize, std::uint64_t wanted) {
    const TransferScope transfer(m_progress, TransferProgress::Phase::downloading, wanted);
    while (answer.size() < wanted) {
        port().read(answer, blockSize);
        m_progress.done = answer.size();
    }
}
