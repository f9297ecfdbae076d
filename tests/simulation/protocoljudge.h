// Compares the library's calls with the table of exchanges in docs/protocol.md.
#pragma once

#include "link/protocol/bytes.h"

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace simulation {

/// Of "setTimeout 4294967295,50,0,50,0" or "open 460800 4294967295,50,0,50,0", where the rate takes the first
/// place.
[[nodiscard]] std::vector<std::uint32_t> numbersOf(const std::string& call);
/// The first bytes of "write 30: AA 5A 01 ..".
[[nodiscard]] protocol::Bytes headOf(const std::string& call);

/// A row of the table.
struct DocumentedExchange {
    std::string name;
    std::string code;                       ///< two hexadecimal digits, "none" or "caller's"
    std::optional<std::uint32_t> timeoutMs; ///< nothing: kept
    bool discards = false;
    bool flushes = false;
    std::string reading;
    std::uint32_t readSize = 0; ///< bytes
    int tries = 0;
};
/// Throws if the document has no such table.
[[nodiscard]] const std::vector<DocumentedExchange>& documentedExchanges();

/// Follows the calls of each port. A row of the table fits each request: its timeouts, what it discards and
/// flushes, and the reads for its answer.
class ProtocolJudge {
public:
    /// A call as the stand-in writes it. Returns what is wrong with it; nothing if all is well.
    [[nodiscard]] std::string called(const std::string& port, const std::string& call,
                                     std::chrono::nanoseconds now);
    /// A line of the client.
    void logged(const std::string& line);
    /// Bytes of the last read.
    void received(const std::string& port, const protocol::Bytes& bytes);
    /// Added to the codes of this port's picture commands of the first generation.
    void setPictureOffset(const std::string& port, std::uint8_t offset);
    /// A call of the port threw.
    void failed(const std::string& port);
    /// The present exchanges break off: a download was ended on request.
    void forgivePresentBreaks();

private:
    using Rows = std::vector<const DocumentedExchange*>;

    /// Calls since the last write or read.
    struct Preparation {
        std::optional<std::uint32_t> timeoutMs;
        bool discards = false;
        bool flushes = false;
    };
    struct Line {
        Preparation preparation;
        Rows rows; ///< those that fit the request so far
        std::string request;
        std::chrono::nanoseconds written{0};
        int reads = 0;
        std::optional<std::uint8_t> doors = 0; ///< door commands since the opening; nothing: not known
        protocol::Bytes answer;                ///< without what came before its start
        std::uint8_t image = 0;                ///< code of the announced upload
        bool confirmed = false;                ///< its announcement is; a verdict follows
        std::uint8_t pictureOffset = 0;
    };

    [[nodiscard]] std::string wrote(Line& line, const protocol::Bytes& head, std::chrono::nanoseconds now);
    [[nodiscard]] static std::string read(Line& line, std::uint32_t size, std::chrono::nanoseconds now);
    [[nodiscard]] std::string ended(const Line& line) const;

    std::map<std::string, Line> m_lines;
    std::vector<std::uint32_t> m_logged; ///< values of a request's bytes, read as hexadecimal
};

} // namespace simulation
