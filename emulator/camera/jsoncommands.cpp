// The JSON camera: version query and picture pieces.
#include "emulator/camera/commandrow.h"
#include "link/protocol/jsonenvelope.h"
#include "trace/jsontext.h"

#include <algorithm>

namespace emulator {

namespace {

using protocol::bytesOf;

/// Leaves room for the text: the count of the envelope has 16 bits.
constexpr long long longestPiece = 60000;

} // namespace

void VirtualCamera::serveJson(const Request& request, Reply& reply) {
    reply.json = true;
    const auto values = trace::readJsonObject(ByteView(request.payload).toText());
    if (request.key.detail == protocol::jsonPropertyType)
        jsonProperty(request, reply);
    else if (values && request.key.detail == protocol::jsonPictureType)
        jsonPicture(*values, request, reply);
    else
        reply.payload = bytesOf(R"({"result":1})");
    if (request.faults.has(FaultKind::invalidJson))
        std::replace(reply.payload.begin(), reply.payload.end(), std::uint8_t{'}'}, std::uint8_t{'{'});
}

void VirtualCamera::jsonProperty(const Request&, Reply& reply) {
    reply.payload = bytesOf(
        m_state.jsonPropertyText.value_or(R"({"result":0,"version":")" + m_state.jsonVersion + R"("})"));
}

void VirtualCamera::jsonPicture(const std::map<std::string, std::string>& values, const Request& request,
                                Reply& reply) {
    const long long offset = trace::jsonNumber(values, "info.offset").value_or(-1);
    const long long length = trace::jsonNumber(values, "info.length").value_or(-1);
    if (offset < 0 || length < 0 || length > longestPiece) {
        reply.payload = bytesOf(R"({"result":1})");
        note(request.at, Event::Kind::noted, "a piece without a sensible place");
        return;
    }
    // A request for the first piece captures the picture.
    if (offset == 0)
        m_servedJsonPicture = m_state.jsonPicture
                                  ? *m_state.jsonPicture
                                  : m_settings.drawPicture(1, m_settings.pictureSeed + ++m_picturesDrawn);
    const Fault* sizeText = request.faults.find(FaultKind::sizeText);
    const std::string size =
        sizeText != nullptr ? sizeText->text : std::to_string(m_servedJsonPicture.size());
    const bool tellsSize = offset == 0 && !request.faults.has(FaultKind::noSize);
    reply.payload =
        bytesOf(R"({"result":0)" +
                (tellsSize ? "," + std::string(protocol::jsonSizeKey) + size : std::string()) + "}");
    if (!request.faults.has(FaultKind::noMarker))
        protocol::append(reply.payload, bytesOf(protocol::jsonPictureMarker));
    const auto first = static_cast<std::size_t>(offset);
    protocol::append(reply.payload,
                     ByteView(m_servedJsonPicture).range(first, first + static_cast<std::size_t>(length)));
}

} // namespace emulator
