// Pictures of both generations: one store, two layouts.
#include "emulator/camera/commandrow.h"
#include "emulator/camera/md5.h"
#include "link/protocol/commands.h"

#include <algorithm>

namespace emulator {

namespace {

using protocol::code;
using protocol::Command;
using protocol::PictureInfo;

/// No fault lists more records; the tool can read far fewer.
constexpr std::int64_t mostRecords = 4096;

bool isV1(const RequestKey& key) {
    return key.code >= code(Command::captureV1) && key.code <= code(Command::readV1);
}

/// yyyymmdd
std::uint32_t dateOf(std::uint32_t secondsSince1970) {
    const std::chrono::sys_seconds time{std::chrono::seconds(secondsSince1970)};
    const std::chrono::year_month_day date(std::chrono::floor<std::chrono::days>(time));
    return static_cast<std::uint32_t>(static_cast<int>(date.year())) * 10000 +
           static_cast<unsigned>(date.month()) * 100 + static_cast<unsigned>(date.day());
}

struct ReadRequest {
    std::uint16_t id = 0;
    std::uint32_t offset = 0;
    std::uint32_t length = 0;
};

std::optional<ReadRequest> parseRead(ByteView payload, bool v1) {
    if (v1) {
        using namespace protocol::v1_read_request;
        return payload.size() != size ? std::nullopt
                                      : std::optional(ReadRequest{payload.get(id), payload.get(startOffset),
                                                                  payload.get(length)});
    }
    using namespace protocol::origin_read_request;
    return payload.size() != size
               ? std::nullopt
               : std::optional(ReadRequest{payload.get(id), payload.get(startOffset), payload.get(length)});
}

Bytes pictureData(const Picture& picture, const ReadRequest& read, const FaultSet& faults) {
    const std::size_t end = std::size_t{read.offset} + read.length;
    Bytes data = ByteView(picture.jpeg).range(read.offset, end).toBytes();
    if (const Fault* fault = faults.find(FaultKind::pictureSize)) {
        const std::int64_t base = fault->relative ? static_cast<std::int64_t>(read.length) : 0;
        data.resize(limited(base + fault->number), 0);
    }
    return data;
}

/// An invented record that fills a catalogue.
PictureInfo filler(std::size_t index) {
    PictureInfo info;
    info.id = static_cast<std::uint16_t>(1 + index % 254);
    info.date = 20240131;
    info.gid = static_cast<std::uint8_t>(index % 256);
    info.triggerType = 1;
    info.triggerAngle = 45;
    info.creationTime = 1700000000U + static_cast<std::uint32_t>(index);
    info.fileSize = 20;
    info.digest = md5({});
    return info;
}

bool selectedForDelete(const PictureInfo& info, ByteView payload, bool v1) {
    if (!v1) {
        const std::uint8_t id = payload.get(protocol::origin_delete_request::id);
        return id == protocol::originDeleteAll || info.id == id;
    }
    using namespace protocol::v1_delete_request;
    if (payload.size() == allSize)
        return payload.get(id) == protocol::v1DeleteAll;
    return info.id == payload.get(id) && info.date == payload.get(date) && info.gid == payload.get(gid);
}

} // namespace

Picture makePicture(std::uint16_t id, Bytes jpeg) {
    Picture picture;
    picture.info.id = id;
    picture.info.triggerType = 1;
    picture.info.triggerAngle = 45;
    picture.info.fileSize = static_cast<std::uint32_t>(jpeg.size());
    picture.info.digest = md5(jpeg);
    picture.jpeg = std::move(jpeg);
    return picture;
}

/// Ids stay below the one that means every picture.
std::uint16_t VirtualCamera::nextPictureId() {
    const bool v1 = m_settings.type == CameraType::salesDynamic;
    const std::uint16_t deleteAll = v1 ? protocol::v1DeleteAll : protocol::originDeleteAll;
    if (m_state.nextPictureId == 0 || m_state.nextPictureId >= deleteAll)
        m_state.nextPictureId = 1;
    return m_state.nextPictureId++;
}

const Picture& VirtualCamera::takePicture(Time visibleFrom) {
    const std::uint16_t id = nextPictureId();
    Picture picture = makePicture(id, m_settings.drawPicture(id, m_settings.pictureSeed + ++m_picturesDrawn));
    const auto sinceStart = std::chrono::duration_cast<std::chrono::seconds>(visibleFrom).count();
    picture.info.creationTime = m_settings.clockStart + static_cast<std::uint32_t>(sinceStart);
    picture.info.date = dateOf(picture.info.creationTime);
    picture.info.gid = static_cast<std::uint8_t>(m_picturesDrawn & 0xFFU);
    picture.visibleFrom = visibleFrom;
    m_lastCapturedId = id;
    const auto place = m_settings.newestPictureFirst ? m_state.pictures.begin() : m_state.pictures.end();
    return *m_state.pictures.insert(place, std::move(picture));
}

void VirtualCamera::capture(const Request& request, Reply& reply) {
    const bool v1 = isV1(request.key);
    const Picture& picture = takePicture(request.at + m_settings.captureTime);
    reply.setStatus(true);
    if (!v1)
        put(reply.payload, protocol::capture_answer::id, static_cast<std::uint8_t>(picture.info.id & 0xFFU));
    note(request.at, Event::Kind::noted,
         "picture " + std::to_string(picture.info.id) + ", " + std::to_string(picture.jpeg.size()) +
             " bytes");
}

void VirtualCamera::catalogue(const Request& request, Reply& reply) {
    const bool v1 = isV1(request.key);
    const FaultSet& faults = request.faults;
    std::vector<PictureInfo> infos;
    for (const Picture& picture : m_state.pictures) {
        const bool hidden = faults.has(FaultKind::hideNewest) && picture.info.id == m_lastCapturedId;
        if (picture.visibleFrom <= request.at && !hidden)
            infos.push_back(picture.info);
    }
    if (const Fault* fault = faults.find(FaultKind::records)) {
        const auto wanted = static_cast<std::size_t>(std::clamp<std::int64_t>(fault->number, 0, mostRecords));
        while (infos.size() < wanted)
            infos.push_back(filler(infos.size()));
        infos.resize(wanted);
    }
    const Fault* count = faults.find(FaultKind::count);
    const std::uint64_t told = count == nullptr ? infos.size() : static_cast<std::uint64_t>(count->number);
    reply.payload = {static_cast<std::uint8_t>(told & 0xFFU)};
    for (const PictureInfo& info : infos)
        protocol::append(reply.payload,
                         v1 ? protocol::buildV1Record(info) : protocol::buildOriginRecord(info));
}

void VirtualCamera::deletePictures(const Request& request, Reply& reply) {
    const bool v1 = isV1(request.key);
    const ByteView payload(request.payload);
    using namespace protocol::v1_delete_request;
    const bool wellFormed = v1 ? payload.size() == size || payload.size() == allSize
                               : payload.size() == protocol::origin_delete_request::size;
    const std::size_t before = m_state.pictures.size();
    if (wellFormed)
        std::erase_if(m_state.pictures,
                      [&](const Picture& picture) { return selectedForDelete(picture.info, payload, v1); });
    const std::size_t deleted = before - m_state.pictures.size();
    const bool all =
        v1 ? payload.size() == allSize
           : wellFormed && payload.get(protocol::origin_delete_request::id) == protocol::originDeleteAll;
    const bool absent = deleted == 0 && !all && m_settings.deleteOfAbsentFails;
    reply.setStatus(wellFormed && !absent);
    note(request.at, Event::Kind::noted, std::to_string(deleted) + " pictures deleted");
}

Picture* VirtualCamera::findPicture(std::uint16_t id, bool byLowByte) {
    const auto found = std::find_if(
        m_state.pictures.begin(), m_state.pictures.end(), [id, byLowByte](const Picture& picture) {
            return picture.info.id == id || (byLowByte && (picture.info.id & 0xFFU) == id);
        });
    return found == m_state.pictures.end() ? nullptr : &*found;
}

void VirtualCamera::readPicture(const Request& request, Reply& reply) {
    const bool v1 = isV1(request.key);
    const auto read = parseRead(request.payload, v1);
    const Picture* picture = read ? findPicture(read->id, v1 && m_settings.v1ReadMatchesLowByte) : nullptr;
    reply.setStatus(picture != nullptr);
    if (picture == nullptr) {
        note(request.at, Event::Kind::noted, "no such picture");
        return;
    }
    reply.addValue(pictureData(*picture, *read, request.faults));
}

} // namespace emulator
