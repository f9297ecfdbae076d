#include "app/programicon.h"

#include <QIconEngine>
#include <QPainter>

#include <algorithm>
#include <array>

namespace {

constexpr std::array pictureSizes{16, 24, 32, 48, 64, 128, 256};

class IconEngine final : public QIconEngine {
public:
    void paint(QPainter* painter, const QRect& place, QIcon::Mode /*mode*/, QIcon::State /*state*/) override {
        const int wanted = std::max(place.width(), place.height());
        const auto* const size = std::find_if(pictureSizes.begin(), pictureSizes.end() - 1,
                                              [wanted](int picture) { return picture >= wanted; });
        painter->setRenderHint(QPainter::SmoothPixmapTransform);
        const QString file = QStringLiteral(":/icons/%1x%1/apps/shelf-camera-tool.png").arg(*size);
        // Named, since telling the format from the contents loads the libraries of all other formats.
        painter->drawImage(place, QImage(file, "PNG"));
    }
    QList<QSize> availableSizes(QIcon::Mode /*mode*/, QIcon::State /*state*/) override {
        QList<QSize> sizes;
        for (const int size : pictureSizes)
            sizes.append(QSize(size, size));
        return sizes;
    }
    [[nodiscard]] QIconEngine* clone() const override { return new IconEngine; }
    // The inherited pixmap() paints on pixels that nobody has cleared.
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap picture(size);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return picture;
    }
};

} // namespace

QIcon programIcon() {
    return QIcon(new IconEngine); // which the icon owns
}
