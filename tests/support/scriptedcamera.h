// A camera with scripted answers on the recording library, and pictures.
#pragma once

#include "link/camerasp.h"
#include "tests/fake/fakeserial.h"
#include "tests/support/answers.h"
#include "tests/support/stdoutcapture.h"
#include "tests/support/workingdirectory.h"

#include <QBuffer>
#include <QImage>
#include <QPixmap>

#include <gtest/gtest.h>

#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace scripted {

using fake_serial::Bytes;
using fake_serial::bytes;

/// Record of picture 5: type 1, angle 45, time 1700000000, 20 bytes.
inline const std::string originRecord = "05 01 2D 00 F1 53 65 14 00 00 00 "
                                        "15 49 D1 AA E2 02 14 E0 65 AB 4B 76 AA AC 89 A8";
/// Record of picture 258 of 20240131-7: the rest as above.
inline const std::string v1Record = "02 01 03 D7 34 01 07 01 2D 00 F1 53 65 14 00 00 00 "
                                    "15 49 D1 AA E2 02 14 E0 65 AB 4B 76 AA AC 89 A8";
inline const char* const digestText = "1549d1aae20214e065ab4b76aaac89a8";

inline Bytes joined(std::uint8_t first, const Bytes& rest) {
    Bytes all{first};
    all.insert(all.end(), rest.begin(), rest.end());
    return all;
}

/// A record with another id (low byte first) and another file size.
inline Bytes record(const std::string& hexText, std::size_t sizeAt, std::uint8_t idLow, std::uint32_t size) {
    Bytes made = bytes(hexText);
    made[0] = idLow;
    for (std::size_t i = 0; i < 4; ++i)
        made[sizeAt + i] = static_cast<std::uint8_t>(size >> (8 * i) & 0xFFU);
    return made;
}

/// A picture file of one colour.
inline Bytes jpeg(int width, int height, Qt::GlobalColor colour) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(colour);
    QByteArray data;
    QBuffer buffer(&data);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPG", 100);
    return {data.begin(), data.end()};
}

/// Answers each write with the next answer queued for its command code, or not at all.
class Camera {
public:
    Camera() {
        fake_serial::onWrite([this](const Bytes& request) { react(request); });
    }
    ~Camera() { fake_serial::onWrite({}); }
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    /// The next request of this code gets these bytes.
    void will(std::uint8_t code, Bytes reply) {
        const std::lock_guard lock(m_mutex);
        m_replies[code].push_back(std::move(reply));
    }
    /// The next request of this code gets a result byte, 0 for success.
    void willSay(std::uint8_t code, std::uint8_t result) { will(code, answers::frame(code, {result})); }
    /// A catalogue of these records, which may be none.
    void willList(std::uint8_t code, const std::vector<Bytes>& records) {
        Bytes payload{static_cast<std::uint8_t>(records.size())};
        for (const Bytes& each : records)
            payload.insert(payload.end(), each.begin(), each.end());
        will(code, answers::frame(code, payload));
    }
    void willSend(std::uint8_t code, std::uint8_t result, const Bytes& picture) {
        will(code, answers::frame(code, joined(result, picture)));
    }
    void willSayJson(Bytes reply) { will(jsonFunction, std::move(reply)); }

    /// Command codes of all requests so far.
    [[nodiscard]] std::vector<int> codes() const {
        std::vector<int> seen;
        for (const Bytes& request : fake_serial::writes())
            seen.push_back(codeOf(request));
        return seen;
    }
    [[nodiscard]] std::vector<std::string> requests() const {
        std::vector<std::string> seen;
        for (const Bytes& request : fake_serial::writes())
            seen.push_back(fake_serial::hex(request));
        return seen;
    }

private:
    static constexpr std::uint8_t jsonFunction = 0x17;

    static std::uint8_t codeOf(const Bytes& request) {
        return request.at(0) == 0xAA ? request.at(3) : request.at(1);
    }

    void react(const Bytes& request) {
        const std::lock_guard lock(m_mutex);
        std::deque<Bytes>& replies = m_replies[codeOf(request)];
        if (replies.empty())
            return;
        fake_serial::willRead(replies.front());
        replies.pop_front();
    }

    std::mutex m_mutex;
    std::map<std::uint8_t, std::deque<Bytes>> m_replies;
};

/// The colour in the middle of a picture.
inline QColor middle(const QPixmap& picture) {
    return picture.toImage().pixelColor(picture.width() / 2, picture.height() / 2);
}

/// Fixture with a fresh recording library and captured standard output.
class PictureTest : public testing::Test {
protected:
    struct FreshLibrary {
        FreshLibrary() { fake_serial::reset(); }
        ~FreshLibrary() { fake_serial::reset(); }
    };

    FreshLibrary fresh;
    StdoutCapture out;
    Camera camera;
};

} // namespace scripted
