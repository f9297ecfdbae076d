// The open line: port, turn, exchange.
#pragma once

#include "link/clock.h"
#include "link/commandreport.h"
#include "link/lineturn.h"
#include "link/protocol/exchangetable.h"
#include "link/protocol/frame.h"
#include "link/serialport.h"
#include "link/transferprogress.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>

/// Thrown inside commands when the link is being closed.
struct LinkStopped : std::runtime_error {
    LinkStopped() : std::runtime_error("link is closing") {}
};

/// Thrown inside a download that endDownload() ended.
struct DownloadEnded : std::runtime_error {
    DownloadEnded() : std::runtime_error("download ended") {}
};

/// Base of all commands. Only the thread that has the turn may call the exchange and the port functions below
/// it; they throw the exceptions of the port. Everything else: any thread.
class CameraLine {
public:
    /// Opens the port; throws as SerialPort does. The clock outlives the line.
    CameraLine(const std::string& portName, std::uint32_t baudRate, std::uint32_t timeoutMs, Clock& clock);

    CameraLine(const CameraLine&) = delete;
    CameraLine& operator=(const CameraLine&) = delete;

    // --- the turn --------------------------------------------------------------------------------------
    /// As LineTurn::take. Discards the late answer to another user's unanswered request first.
    [[nodiscard]] LineTurn::Hold take(LineUser user);
    [[nodiscard]] const LineTurn& turn() const { return m_turn; }
    /// One sequence of background reads at a time, in the order of the calls.
    [[nodiscard]] LineTurn::Hold takeReadings() { return m_readings.take(LineUser::reading); }

    // --- the exchange ----------------------------------------------------------------------------------
    struct Answer {
        bool accepted = false;
        protocol::Bytes bytes;
    };
    /// Timeouts, discarding, flushing, the request in one write, the answer by the rule's reading.
    /// `wanted`: byte count of Reading::blocks.
    Answer exchange(const protocol::ExchangeRule& rule, protocol::ByteView payload, std::uint64_t wanted = 0);
    /// The same with a complete request.
    Answer exchangeRequest(const protocol::ExchangeRule& rule, const protocol::Bytes& request,
                           std::uint64_t wanted = 0);
    [[nodiscard]] protocol::Bytes buildRequest(const protocol::ExchangeRule& rule,
                                               protocol::ByteView payload) const;
    /// Reads until the answer is complete; false if it is not after this many reads.
    bool readAnswer(protocol::Bytes& answer, std::uint32_t readSize, std::int32_t tries,
                    const protocol::AnswerForm& form);
    void setTimeouts(std::uint32_t readMs, std::uint32_t writeMs) { port().setTimeouts(readMs, writeMs); }
    void flush() { port().flush(); }
    void beginLowLatency() { port().beginLowLatency(); }
    std::size_t write(protocol::ByteView bytes) { return port().write(bytes); }
    std::size_t read(protocol::Bytes& buffer, std::size_t count) { return port().read(buffer, count); }
    /// End of the current command; exchange() sets it.
    void setEnd(CommandEnd end) { m_end = end; }
    [[nodiscard]] CommandEnd end() const { return m_end; }
    /// Bytes received by the current exchange.
    [[nodiscard]] std::size_t received() const { return m_received; }

    // --- waiting and ending ----------------------------------------------------------------------------
    void requestStop();
    [[nodiscard]] bool stopRequested() const { return m_stop.load(); }
    /// Returns early (false) when the link is stopped.
    bool pause(std::chrono::nanoseconds duration);
    void addLease();
    void removeLease();
    void waitUntilUnused();
    /// Makes a download that has the line fail at its next use of the port.
    void endDownload();
    /// After a download that was ended: reads away what still comes of its answer, until it is whole or a
    /// read brings nothing. The next user would take it for the next answer. The calling thread has the turn.
    void discardRest();
    /// Called between two reads and during the wait for the turn, on the command's thread. Set before the
    /// first command.
    void setWaitCallback(std::function<void()> callback) { m_waitCallback = std::move(callback); }

    [[nodiscard]] Clock& clock() const { return m_clock; }
    [[nodiscard]] LineObservers& observers() { return m_port.observers(); }
    [[nodiscard]] bool portFailed() const { return m_port.hasFailed(); }

    // --- what enters frames ----------------------------------------------------------------------------
    /// Takes effect at the last releaseAddress() while the address is held.
    void setAddress(std::int32_t address);
    void holdAddress();
    void releaseAddress();
    std::atomic<std::uint8_t> pictureOffset{0};

    /// Where downloaded pictures go; UTF-8, empty: the working directory. Set before the first download.
    std::string pictureFolder;

    TransferProgress progress;

private:
    /// The port for one library call. Throws if the link is stopped or the calling thread has no turn.
    SerialPort& port();
    void readBlocks(protocol::Bytes& answer, std::size_t blockSize, std::uint64_t wanted);
    void discardLateAnswers();
    void callBack() const;

    Clock& m_clock;
    SerialPort m_port;
    LineTurn m_turn;
    LineTurn m_readings;
    std::function<void()> m_waitCallback;

    // Only the turn's holder uses these:
    CommandEnd m_end = CommandEnd::done;
    std::size_t m_received = 0;
    std::uint64_t m_missing = 0; ///< bytes of the answer that have not come; the greatest number: not known
    int m_unanswered = 0;        ///< requests without a complete answer
    Clock::Time m_lastRequest;

    std::atomic<bool> m_stop{false};
    std::atomic<bool> m_endDownload{false};
    std::mutex m_lifeMutex; // guards m_leases; m_lifeChanged signals changes of it and of m_stop
    std::condition_variable m_lifeChanged;
    int m_leases = 0;

    mutable std::mutex m_addressMutex; // guards the following
    std::int32_t m_address = 1;        ///< of the requests
    std::int32_t m_nextAddress = 1;    ///< takes effect when no hold is left
    int m_addressHolds = 0;
};
