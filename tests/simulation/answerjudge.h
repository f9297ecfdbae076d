// Compares what the client says and gives with the bytes that it received, by docs/protocol.md.
#pragma once

#include "tests/simulation/seenupload.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace simulation {

/// Follows the exchanges of each thread. The functions are called on the thread that uses the port; those
/// that return a text say what is wrong, nothing if all is well. That of reads() begins with the rule.
class AnswerJudge {
public:
    explicit AnswerJudge(SeenUpload::File file) : m_file(std::move(file)) {}

    /// A call that neither writes nor reads.
    void prepares();
    [[nodiscard]] std::string writes(const std::string& port, const protocol::Bytes& bytes,
                                     std::uint8_t offset);
    [[nodiscard]] std::string reads(const std::string& port);
    void received(const protocol::Bytes& bytes);
    void failed();
    /// A line of the client.
    [[nodiscard]] std::string said(const std::string& line);
    /// The status bar ends a command of this thread with these words.
    [[nodiscard]] std::string told(const std::string& command, const std::string& words) const;
    /// A box tells the result of an upload.
    [[nodiscard]] std::string toldUpload(bool success);
    /// The only download of a whole list is to end.
    void downloadStopped();
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
        bool prepares = false;         ///< for the next request
        bool concluded = false;        ///< a line has told the end
        bool refused = false;          ///< a picture, in the job under way
        protocol::Bytes pieces;        ///< of a JSON picture
        long pictureSize = 0;          ///< that its first piece tells
        std::size_t garbage = 0;       ///< bytes that the log has told
        bool series = false;           ///< a picture after another: of a whole list
        bool stopped = false;          ///< its job: the rest of an answer is read away, and not logged
        std::optional<int> emptyReads; ///< in a row, of a stopped download
    };

    void learn(Thread& thread);
    void list(const SeenExchange& catalogue);
    [[nodiscard]] std::string followUpload(const SeenExchange& next);
    [[nodiscard]] static std::string wrongGarbage(const Thread& thread);
    [[nodiscard]] static std::string wrongRest(Thread& thread);
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
