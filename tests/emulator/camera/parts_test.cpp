// Digest, pace, pictures.
#include "emulator/camera/md5.h"
#include "emulator/camera/pictureartist.h"
#include "emulator/line/pace.h"
#include "tests/emulator/camera/camerabench.h"

#include <QImage>

namespace emulatortest {
namespace {

using protocol::bytesOf;

TEST(Md5, GivesThePublishedDigests) {
    EXPECT_EQ(md5({}), hex("D4 1D 8C D9 8F 00 B2 04 E9 80 09 98 EC F8 42 7E"));
    EXPECT_EQ(md5(bytesOf("abc")), hex("90 01 50 98 3C D2 4F B0 D6 96 3F 7D 28 E1 7F 72"));
    EXPECT_EQ(
        md5(bytesOf("12345678901234567890123456789012345678901234567890123456789012345678901234567890")),
        hex("57 ED F4 A2 2B E3 C9 55 AC 49 DA 2E 21 07 B6 7A"));
    EXPECT_EQ(md5(countingBytes(1300)), hex("9F 04 FA 44 F3 CC 4A 6C 92 DA E6 7B 41 50 0F C7"));
}

TEST(Pace, GivesOutBytesEvenly) {
    Pace pace;
    EXPECT_EQ(pace.allowed(1s, 5000), 5000U);
    pace.setRate(10000);
    std::size_t passed = 0;
    Time now = 10s;
    static_cast<void>(pace.allowed(now, 1));
    pace.spend(pace.allowed(now, 100000));
    for (; now < 11s; now += 5ms) {
        const std::size_t slice = pace.allowed(now, 100000);
        EXPECT_LE(slice, 200U);
        pace.spend(slice);
        passed += slice;
    }
    EXPECT_NEAR(static_cast<double>(passed), 10000, 200);
}

TEST(ShelfPicture, IsAJpegThatDiffersWithEveryVariation) {
    const Bytes first = drawShelfPicture(258, 1);
    const QImage image = QImage::fromData(first.data(), static_cast<int>(first.size()), "JPG");
    EXPECT_FALSE(image.isNull());
    EXPECT_GE(image.width(), 320);
    EXPECT_NE(first, drawShelfPicture(258, 2));
    EXPECT_NE(first, drawShelfPicture(259, 1));
    EXPECT_EQ(first, drawShelfPicture(258, 1));
}

TEST(ShelfPicture, ShowsItsIdInTheUpperLeftCorner) {
    // A one and an eight differ inside the first digit and agree in its right upper stroke.
    const auto imageOf = [](std::uint16_t id) {
        const Bytes jpeg = drawShelfPicture(id, 7);
        return QImage::fromData(jpeg.data(), static_cast<int>(jpeg.size()), "JPG");
    };
    const QImage one = imageOf(1);
    const QImage eight = imageOf(8);
    constexpr int topStrokeX = 40, topStrokeY = 25, rightStrokeX = 54, rightStrokeY = 38;
    EXPECT_LT(qGray(one.pixel(topStrokeX, topStrokeY)), 100);
    EXPECT_GT(qGray(eight.pixel(topStrokeX, topStrokeY)), 200);
    EXPECT_GT(qGray(one.pixel(rightStrokeX, rightStrokeY)), 200);
    EXPECT_GT(qGray(eight.pixel(rightStrokeX, rightStrokeY)), 200);
}

TEST(ShelfPicture, StaysReadableWhenFilledToASize) {
    const Bytes padded = paddedJpeg(drawShelfPicture(1, 1), 60000);
    EXPECT_EQ(padded.size(), 60000U);
    EXPECT_FALSE(QImage::fromData(padded.data(), 60000, "JPG").isNull());
}

TEST(ShelfPicture, TwoCamerasTakeDifferentPictures) {
    VirtualCamera first;
    VirtualCamera second;
    EXPECT_NE(first.settings().pictureSeed, second.settings().pictureSeed);
    EXPECT_NE(first.takePicture(0s).jpeg, second.takePicture(0s).jpeg);
}

TEST(RandomBytes, DoNotHideTheNextFrame) {
    std::uint32_t seed = 1;
    for (int round = 0; round < 300; ++round) {
        CameraBench bench;
        Bytes noise;
        for (int i = 0; i < 200; ++i) {
            seed = seed * 1664525U + 1013904223U;
            constexpr std::array<std::uint8_t, 8> likely = {0xAA, 0x5A, 0x01, 0x17, 0x00, 0x1B, 0x14, 0xCB};
            const std::uint32_t top = seed >> 24;
            noise.push_back(top < 128 ? likely[top % 8] : static_cast<std::uint8_t>(top));
        }
        bench.ask(noise, 2s); // the camera drops unfinished frames meanwhile
        EXPECT_EQ(bench.ask(heartbeatRequest, 2s), hex(heartbeatAnswer)) << round;
    }
}

} // namespace
} // namespace emulatortest
