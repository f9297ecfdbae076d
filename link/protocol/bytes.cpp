#include "link/protocol/bytes.h"

namespace protocol {

void growTo(Bytes& bytes, std::size_t size) {
    if (bytes.size() < size)
        bytes.resize(size, 0);
}

} // namespace protocol
