#include "link/cameraline.h"

#include "link/diagnostics.h"
#include "link/protocol/jsonenvelope.h"

#include <algorithm>
#include <limits>
#include <utility>

using namespace protocol;
using namespace std::chrono_literals;

namespace {

// Longest wait for the answer to another user's request.
constexpr auto latestAnswer = 500ms;

void logRequest(RequestLog kind, ByteView request) {
    if (kind == RequestLog::none)
        return;
    const char* const tag = kind == RequestLog::sdata   ? "sdata:"
                            : kind == RequestLog::infos ? "infos:"
                            : kind == RequestLog::cert  ? "cert:"
                                                        : "every:";
    // Log lines after an application or model announcement stay hexadecimal.
    if (kind == RequestLog::every)
        diagnostics::useHexadecimal();
    for (const std::uint8_t byte : request)
        diagnostics::line(tag, unsigned{byte});
}

} // namespace

CameraLine::CameraLine(const std::string& portName, std::uint32_t baudRate, std::uint32_t timeoutMs,
                       Clock& clock)
    : m_clock(clock), m_port(portName, baudRate, timeoutMs, clock), m_turn(clock), m_readings(clock) {}

// --- the turn --------------------------------------------------------------------------------------------

LineTurn::Hold CameraLine::take(LineUser user) {
    const bool nested = m_turn.userOnThisThread() != LineUser::none;
    LineTurn::Hold turn = m_turn.take(user, [this] { callBack(); });
    if (turn && user == LineUser::download && !nested)
        m_endDownload = false;
    if (turn && turn.hadToWait())
        discardLateAnswers();
    return turn;
}

void CameraLine::discardLateAnswers() {
    if (std::exchange(m_unanswered, 0) == 0)
        return;
    const auto left = m_lastRequest + latestAnswer - m_clock.now();
    if (left > 0ms && !pause(left))
        return;
    try {
        m_port.discardInput();
    } catch (const std::exception&) {
        // The command that follows reports the failed port.
    }
}

SerialPort& CameraLine::port() {
    if (m_stop)
        throw LinkStopped();
    const LineUser user = m_turn.userOnThisThread();
    if (user == LineUser::none)
        throw std::logic_error("the port was used without a turn on the line");
    if (user == LineUser::download && m_endDownload)
        throw DownloadEnded();
    return m_port;
}

// --- the exchange ----------------------------------------------------------------------------------------

Bytes CameraLine::buildRequest(const ExchangeRule& rule, ByteView payload) const {
    if (rule.reading == Reading::json)
        return buildJsonRequest(payload.toText());
    const std::lock_guard lock(m_addressMutex);
    return buildFrame(code(rule.command), payload, static_cast<std::uint8_t>(m_address & 0xFF));
}

CameraLine::Answer CameraLine::exchange(const ExchangeRule& rule, ByteView payload, std::uint64_t wanted) {
    return exchangeRequest(rule, buildRequest(rule, payload), wanted);
}

CameraLine::Answer CameraLine::exchangeRequest(const ExchangeRule& rule, const Bytes& request,
                                               std::uint64_t wanted) {
    m_received = 0;
    m_missing = std::numeric_limits<std::uint64_t>::max();
    if (rule.timeoutMs)
        port().setTimeouts(*rule.timeoutMs, *rule.timeoutMs);
    if (rule.discardInput)
        port().discardInput();
    logRequest(rule.requestLog, request);
    if (rule.flushOutput)
        port().flush();
    const std::size_t written = port().write(request);
    ++m_unanswered;
    m_lastRequest = m_clock.now();
    if (rule.logsWriteCount)
        diagnostics::line("serialDataLength:", request.size(), "  write-length:", written);
    if (rule.pauseAfterWriteMs > 0)
        pause(std::chrono::milliseconds(rule.pauseAfterWriteMs));

    Answer answer{true, {}};
    switch (rule.reading) {
    case Reading::none:
        m_end = CommandEnd::sent;
        return answer;
    case Reading::once:
        m_received = port().read(answer.bytes, rule.readSize);
        answer.accepted = !answer.bytes.empty();
        break;
    case Reading::frame:
        answer.accepted = readAnswer(answer.bytes, rule.readSize, rule.tries, frameForm);
        break;
    case Reading::json:
        answer.accepted = readAnswer(answer.bytes, rule.readSize, rule.tries, jsonForm);
        break;
    case Reading::blocks:
        readBlocks(answer.bytes, rule.readSize, wanted);
        break;
    }
    if (answer.accepted)
        --m_unanswered;
    m_end = answer.accepted        ? CommandEnd::done
            : answer.bytes.empty() ? CommandEnd::noAnswer
                                   : CommandEnd::unusable;
    return answer;
}

bool CameraLine::readAnswer(Bytes& answer, std::uint32_t readSize, std::int32_t tries,
                            const AnswerForm& form) {
    for (std::int32_t attempt = 0; attempt < tries; ++attempt) {
        if (attempt > 0)
            callBack();
        m_received += port().read(answer, readSize);
        const auto garbage = static_cast<std::ptrdiff_t>(leadingGarbage(answer, form));
        for (auto byte = answer.begin(); byte != answer.begin() + garbage; ++byte)
            diagnostics::line("check data", std::to_string(*byte));
        answer.erase(answer.begin(), answer.begin() + garbage);
        if (isWholeAnswer(answer, form))
            return true;
    }
    return false;
}

void CameraLine::readBlocks(Bytes& answer, std::size_t blockSize, std::uint64_t wanted) {
    const TransferScope transfer(progress, TransferProgress::Phase::downloading, wanted);
    while (answer.size() < wanted) {
        m_missing = wanted - answer.size();
        m_received += port().read(answer, blockSize);
        progress.done = answer.size();
        callBack();
    }
}

// --- waiting and ending ----------------------------------------------------------------------------------

void CameraLine::requestStop() {
    {
        const std::lock_guard lock(m_lifeMutex);
        m_stop = true;
    }
    m_lifeChanged.notify_all();
    m_turn.stop();
    m_readings.stop();
}

bool CameraLine::pause(std::chrono::nanoseconds duration) {
    const Clock::Time end = m_clock.now() + duration;
    std::unique_lock lock(m_lifeMutex);
    while (!m_stop && duration > 0ns && !m_clock.pause(lock, m_lifeChanged, duration))
        duration = end - m_clock.now();
    return !m_stop;
}

void CameraLine::addLease() {
    const std::lock_guard lock(m_lifeMutex);
    ++m_leases;
}

void CameraLine::removeLease() {
    // Notify under the lock: the client may be deleted as soon as its last lease is gone.
    const std::lock_guard lock(m_lifeMutex);
    --m_leases;
    m_lifeChanged.notify_all();
}

void CameraLine::waitUntilUnused() {
    std::unique_lock lock(m_lifeMutex);
    m_lifeChanged.wait(lock, [this] { return m_leases == 0; });
}

void CameraLine::endDownload() {
    m_endDownload = true;
}

void CameraLine::discardRest() {
    constexpr std::uint64_t blockSize = 512;
    if (std::exchange(m_unanswered, 0) == 0)
        return;
    try {
        for (Bytes rest; !m_stop && m_missing > 0; rest.clear()) {
            const std::size_t read = m_port.read(rest, std::min(blockSize, m_missing));
            m_missing = read == 0 ? 0 : m_missing - std::min<std::uint64_t>(read, m_missing);
            callBack();
        }
    } catch (const std::exception&) {
        // The command that follows reports the failed port.
    }
}

void CameraLine::setAddress(std::int32_t address) {
    const std::lock_guard lock(m_addressMutex);
    m_nextAddress = address;
    if (m_addressHolds == 0)
        m_address = address;
}

void CameraLine::holdAddress() {
    const std::lock_guard lock(m_addressMutex);
    ++m_addressHolds;
}

void CameraLine::releaseAddress() {
    const std::lock_guard lock(m_addressMutex);
    if (--m_addressHolds == 0)
        m_address = m_nextAddress;
}

void CameraLine::callBack() const {
    if (m_waitCallback)
        m_waitCallback();
}
