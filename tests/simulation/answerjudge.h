// Compares what the client says and gives with the bytes that it received, by docs/protocol.md.
#pragma once

#include "link/protocol/bytes.h"

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace simulation {

inline constexpr std::array<std::uint8_t, 2> frameStart{0xAA, 0x5A};
inline constexpr std::array<std::uint8_t, 2> jsonStart{0x01, 0x17};

/// Rule of acceptance for frames; the check code is not looked at.
[[nodiscard]] bool isWholeFrame(const protocol::Bytes& answer);
/// Drops what cannot be the start of an answer. A single byte stays.
void dropGarbage(protocol::Bytes& answer, const std::array<std::uint8_t, 2>& start);

/// A request and the bytes read after it.
class SeenExchange {
public:
    SeenExchange() = default;
    SeenExchange(std::string port, protocol::Bytes request);

    /// A picture command that was sent with an offset.
    void shift(std::uint8_t offset);
    void received(const protocol::Bytes& bytes);
    void failed() { m_failed = true; }

    [[nodiscard]] const std::string& port() const { return m_port; }
    [[nodiscard]] bool hasFailed() const { return m_failed; }
    /// It may be another command, or a picture command with its offset.
    [[nodiscard]] bool isAmbiguous() const { return m_ambiguous; }
    [[nodiscard]] bool isJson() const;
    [[nodiscard]] bool isUpload() const;
    [[nodiscard]] std::uint8_t address() const;
    [[nodiscard]] std::uint8_t code() const;
    [[nodiscard]] protocol::ByteView payload() const;
    /// As read, garbage included.
    [[nodiscard]] const protocol::Bytes& bytes() const { return m_bytes; }
    /// Without garbage.
    [[nodiscard]] const protocol::Bytes& answer() const { return m_answer; }
    /// What came after the answer to an announcement.
    [[nodiscard]] const protocol::Bytes& verdict() const { return m_verdict; }
    [[nodiscard]] bool answered() const;
    /// A whole answer that tells success.
    [[nodiscard]] bool granted() const;
    [[nodiscard]] bool refused() const { return answered() && !granted(); }
    /// The answer is about the property that was asked for.
    [[nodiscard]] bool sameProperty() const;
    /// The value of a property's answer.
    [[nodiscard]] std::string value() const;
    /// Of a picture's transfer: the size asked for, bytes.
    [[nodiscard]] std::uint32_t pictureSize() const;
    [[nodiscard]] bool isPictureTransfer() const;
    [[nodiscard]] bool isHeartbeatAnswer() const;

private:
    std::string m_port;
    protocol::Bytes m_request;
    protocol::Bytes m_bytes;
    protocol::Bytes m_answer;
    protocol::Bytes m_verdict;
    std::uint8_t m_offset = 0;
    bool m_failed = false;
    bool m_ambiguous = false;
};

/// An upload as the line has seen it.
class SeenUpload {
public:
    /// Content of the chosen file with this digest; nothing if none has it.
    using File = std::function<std::optional<protocol::Bytes>(const protocol::Bytes& digest)>;

    SeenUpload(const SeenExchange& announcement, const File& file);

    [[nodiscard]] const std::string& port() const { return m_port; }
    [[nodiscard]] bool isSecondProtocol() const;
    /// The request of another exchange of the same upload, of the second protocol. False: it is of no upload.
    bool goesOn(const SeenExchange& exchange);
    /// The last exchange has got more bytes.
    void answered(const SeenExchange& exchange);
    void cameBack() { m_back = true; }
    /// Returns what is wrong with a request on the upload's port by one of its threads.
    [[nodiscard]] std::string wrongRequest(const SeenExchange& exchange) const;
    /// Returns what is wrong with this slice; nothing if all is well.
    [[nodiscard]] std::string sent(const protocol::Bytes& data);
    /// Returns what is wrong with waiting for more after the announcement's answer.
    [[nodiscard]] std::string goesOnReading() const;
    /// The camera confirmed the whole file, as far as the protocol tells, and is there again.
    [[nodiscard]] bool succeeded() const;

private:
    [[nodiscard]] std::uint64_t resumeOffset() const;
    [[nodiscard]] bool secondProtocolSucceeded() const;

    std::string m_port;
    std::uint8_t m_code;
    std::uint8_t m_address;
    std::uint32_t m_size = 0;
    std::optional<protocol::Bytes> m_content;
    SeenExchange m_last;
    std::optional<std::uint64_t> m_sent; ///< offset behind the last slice
    int m_announcements = 1;
    bool m_ready =
        false; ///< of the second protocol: the last announcement's answer says that nothing is missing
    int m_packets = 0;
    std::optional<std::uint8_t> m_packetResult;
    bool m_back = false;
};

/// Follows the exchanges of each thread. The functions are called on the thread that uses the port; those
/// that return a text say what is wrong, nothing if all is well.
class AnswerJudge {
public:
    explicit AnswerJudge(SeenUpload::File file) : m_file(std::move(file)) {}

    /// A call that neither writes nor reads.
    void prepares();
    [[nodiscard]] std::string writes(const std::string& port, const protocol::Bytes& bytes,
                                     std::uint8_t offset);
    [[nodiscard]] std::string reads(const std::string& port) const;
    void received(const protocol::Bytes& bytes);
    void failed();
    /// A line of the client.
    [[nodiscard]] std::string said(const std::string& line);
    /// The status bar ends a command of this thread with these words.
    [[nodiscard]] std::string told(const std::string& command, const std::string& words) const;
    /// A box tells the result of an upload.
    [[nodiscard]] std::string toldUpload(bool success);
    /// A job of the windows has told its end, or there is another link.
    void jobEnded();
    /// The link was closed: the upload under way has no result.
    void forgetUpload() { m_upload.reset(); }
    /// One was announced whose result was not told yet.
    [[nodiscard]] bool hasUpload() const { return m_upload.has_value(); }
    [[nodiscard]] bool hasSecondProtocol() const { return m_upload && m_upload->isSecondProtocol(); }

    /// Records in the answer to a catalogue, if that was the last command of this thread.
    [[nodiscard]] std::optional<std::size_t> picturesListed() const;
    /// Values of a property that came in good answers.
    [[nodiscard]] const std::vector<std::string>& values(std::uint8_t property) const;
    /// Pictures that came whole: the id's low byte and the content.
    using Picture = std::pair<std::uint8_t, protocol::Bytes>;
    [[nodiscard]] const std::vector<Picture>& pictures() const { return m_pictures; }

private:
    struct Thread {
        SeenExchange exchange;
        bool prepares = false;  ///< for the next request
        bool concluded = false; ///< a line has told the end
        bool refused = false;   ///< a picture, in the job under way
        protocol::Bytes pieces; ///< of a JSON picture
        long pictureSize = 0;   ///< that its first piece tells
    };

    void learn(Thread& thread);
    void list(const SeenExchange& catalogue);
    [[nodiscard]] static std::string wrongPiece(Thread& thread, const SeenExchange& next);
    [[nodiscard]] std::string wrongTransfer(const SeenExchange& next) const;
    [[nodiscard]] static std::string wrongFailure(const Thread& thread, const std::string& text);

    SeenUpload::File m_file;
    std::map<unsigned int, Thread> m_threads;
    std::map<std::uint8_t, std::vector<std::string>> m_values;
    std::vector<Picture> m_pictures;
    std::set<std::pair<std::uint8_t, std::uint32_t>> m_listed; ///< low byte of the id, file size
    std::map<std::string, unsigned int> m_writers;             ///< thread of a port's last request
    std::optional<SeenUpload> m_upload;
};

} // namespace simulation
