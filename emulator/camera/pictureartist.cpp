#include "emulator/camera/pictureartist.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>

#include <array>
#include <random>
#include <string>

namespace emulator {

namespace {

constexpr int pictureWidth = 640;
constexpr int pictureHeight = 480;
constexpr int shelfCount = 4;
constexpr int shelfHeight = 100;
constexpr int boardHeight = 10;
constexpr int jpegQuality = 80;

/// Bits: top, upper right, lower right, bottom, lower left, upper left, middle.
constexpr std::array<unsigned, 10> sevenSegments = {0x3F, 0x06, 0x5B, 0x4F, 0x66,
                                                    0x6D, 0x7D, 0x07, 0x7F, 0x6F};

class Dice {
public:
    explicit Dice(std::uint32_t seed) : m_engine(seed) {}
    /// Both ends included.
    int roll(int least, int most) {
        const auto span = static_cast<std::uint32_t>(most - least + 1);
        return least + static_cast<int>(m_engine() % span);
    }
    QColor colour() { return QColor::fromHsv(roll(0, 359), roll(120, 230), roll(140, 240)); }

private:
    std::minstd_rand m_engine;
};

void drawItem(QPainter& painter, const QRect& place, Dice& dice) {
    const QColor body = dice.colour();
    if (dice.roll(0, 1) == 0) { // a box with a label
        painter.fillRect(place, body);
        painter.fillRect(place.adjusted(4, place.height() / 3, -4, -place.height() / 3), body.lighter(150));
        return;
    }
    const int neck = place.width() / 3; // a bottle with a cap
    painter.fillRect(place.adjusted(neck, 0, -neck, 0), body.darker(120));
    painter.fillRect(place.adjusted(0, place.height() / 4, 0, 0), body);
    painter.fillRect(QRect(place.left() + neck, place.top(), place.width() - 2 * neck, 6), Qt::white);
}

void drawShelf(QPainter& painter, int floorY, Dice& dice) {
    int x = dice.roll(6, 20);
    while (x < pictureWidth - 40) {
        const int width = dice.roll(22, 44);
        const int height = dice.roll(45, shelfHeight - 20);
        if (dice.roll(0, 9) > 0) // one gap in ten: sold out
            drawItem(painter, QRect(x, floorY - height, width, height), dice);
        x += width + dice.roll(3, 10);
    }
    painter.fillRect(0, floorY, pictureWidth, boardHeight, QColor(120, 90, 60));
}

void drawDigit(QPainter& painter, int digit, const QRect& place) {
    const int thickness = place.width() / 5;
    const int half = place.height() / 2;
    const int right = place.right() - thickness + 1;
    const std::array<QRect, 7> segments = {
        QRect(place.left(), place.top(), place.width(), thickness),
        QRect(right, place.top(), thickness, half),
        QRect(right, place.top() + half, thickness, half),
        QRect(place.left(), place.bottom() - thickness + 1, place.width(), thickness),
        QRect(place.left(), place.top() + half, thickness, half),
        QRect(place.left(), place.top(), thickness, half),
        QRect(place.left(), place.top() + half - thickness / 2, place.width(), thickness)};
    for (std::size_t i = 0; i < segments.size(); ++i) {
        if ((sevenSegments[static_cast<std::size_t>(digit)] >> i & 1U) != 0)
            painter.fillRect(segments[i], Qt::white);
    }
}

void drawNumber(QPainter& painter, const std::string& digits) {
    constexpr int width = 36;
    constexpr int height = 64;
    constexpr int gap = 12;
    const auto count = static_cast<int>(digits.size());
    painter.fillRect(10, 10, count * (width + gap) + gap, height + 2 * gap, QColor(0, 0, 0, 200));
    for (int i = 0; i < count; ++i)
        drawDigit(painter, digits[static_cast<std::size_t>(i)] - '0',
                  QRect(10 + gap + i * (width + gap), 10 + gap, width, height));
}

} // namespace

protocol::Bytes drawShelfPicture(std::uint16_t id, std::uint32_t variation) {
    Dice dice(variation * 65537U + id + 1U);
    QImage image(pictureWidth, pictureHeight, QImage::Format_RGB32);
    image.fill(QColor(225, 228, 232));
    {
        QPainter painter(&image);
        for (int shelf = 1; shelf <= shelfCount; ++shelf)
            drawShelf(painter, shelf * (shelfHeight + boardHeight) + 20, dice);
        drawNumber(painter, std::to_string(id));
    }
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPG", jpegQuality);
    const QByteArray& data = buffer.data();
    return {data.begin(), data.end()};
}

protocol::Bytes paddedJpeg(protocol::Bytes jpeg, std::size_t size) {
    if (jpeg.size() < size)
        jpeg.resize(size, 0);
    return jpeg;
}

} // namespace emulator
