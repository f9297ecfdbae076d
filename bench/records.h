// Picture records to measure with.
#pragma once

#include "link/protocol/picturerecords.h"

namespace bench {

inline protocol::PictureInfo pictureNumber(std::int64_t number) {
    return {static_cast<std::uint16_t>(number),         20240131, 3, 1, 45, 1700000000, 54321,
            protocol::Bytes(protocol::digestSize, 0xAB)};
}

/// V1 records as the client hands them out.
inline std::vector<protocol::RecordBytes> v1Records(std::int64_t count) {
    std::vector<protocol::RecordBytes> all;
    for (std::int64_t i = 0; i < count; ++i) {
        const protocol::Bytes bytes = protocol::buildV1Record(pictureNumber(i));
        all.push_back(std::make_unique<std::uint8_t[]>(bytes.size()));
        std::copy(bytes.begin(), bytes.end(), all.back().get());
    }
    return all;
}

} // namespace bench
