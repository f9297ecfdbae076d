#include "emulator/camera/md5.h"

#include <QCryptographicHash>

namespace emulator {

protocol::Bytes md5(protocol::ByteView bytes) {
    const QByteArrayView content(bytes.begin(), static_cast<qsizetype>(bytes.size()));
    const QByteArray digest = QCryptographicHash::hash(content, QCryptographicHash::Md5);
    return {digest.begin(), digest.end()};
}

} // namespace emulator
