#include "platform/qt_raster_provider.h"

#include <QImage>
#include <QPainter>
#include <QTransform>
#include <cstring>
#include <memory>

#include "platform/painter_context.h"

namespace {

HMKRgbaImage emptyImage() {
    return HMKRgbaImage{};
}

HMKRgbaImage fromQImage(const QImage& image) {
    QImage straight = image.convertToFormat(QImage::Format_RGBA8888);
    HMKRgbaImage result;
    result.width = straight.width();
    result.height = straight.height();
    const std::size_t rowBytes = static_cast<std::size_t>(result.width) * 4;
    result.rgba.resize(rowBytes * static_cast<std::size_t>(result.height));
    for (int y = 0; y < result.height; ++y) {
        std::memcpy(result.rgba.data() + rowBytes * static_cast<std::size_t>(y),
                    straight.constScanLine(y), rowBytes);
    }
    return result;
}

}  // namespace

HMKRgbaImage HMKQtRasterProvider::render(int width, int height, const HMKAffineTransform& transform,
                                         const std::function<void(HMKDrawingContext&)>& draw) {
    if (width <= 0 || height <= 0) {
        return emptyImage();
    }
    // Painted premultiplied, Qt's fastest raster format, and handed out straight.
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) {
        return emptyImage();
    }
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setTransform(QTransform(transform.a, transform.b, transform.c, transform.d,
                                        transform.tx, transform.ty));
        HMKPainterContext context(painter);
        if (draw) {
            draw(context);
        }
    }
    return fromQImage(image);
}

HMKRgbaImage HMKQtRasterProvider::scaled(const HMKRgbaImage& image, int width, int height) {
    if (width <= 0 || height <= 0) {
        return emptyImage();
    }
    const std::size_t expectedBytes =
        static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height) * 4;
    if (image.width <= 0 || image.height <= 0 || image.rgba.size() < expectedBytes) {
        HMKRgbaImage transparent{width, height, {}};
        transparent.rgba.assign(static_cast<std::size_t>(width) * height * 4, 0);
        return transparent;
    }
    QImage source(image.rgba.data(), image.width, image.height, image.width * 4,
                  QImage::Format_RGBA8888);
    // Smooth scaling averages premultiplied pixels, so transparent neighbours do not darken
    // the edges of a drawing.
    QImage result = source.convertToFormat(QImage::Format_ARGB32_Premultiplied)
                        .scaled(width, height, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    return fromQImage(result);
}

void installQtRasterProvider() {
    installRasterProvider(std::make_shared<HMKQtRasterProvider>());
}
