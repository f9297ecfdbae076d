// An upload on the line, from its announcement to the camera's return.
#pragma once

#include "tests/simulation/seenexchange.h"

#include <functional>
#include <optional>
#include <string>

namespace simulation {

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
    /// In an exchange of the upload.
    void portFailed() { m_portFailed = true; }
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
    /// Of the second protocol: the last announcement's answer says that nothing is missing.
    bool m_ready = false;
    int m_packets = 0;
    std::optional<std::uint8_t> m_packetResult;
    bool m_back = false;
    bool m_portFailed = false;
};

} // namespace simulation
