#include "gui/canvas_image_renderer.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <thread>
#include <vector>

#include <QCoreApplication>
#include <QPainter>
#include <QRunnable>
#include <QThread>

#include "platform/painter_context.h"

QSize HMKCanvasRenderRequest::pixelSize() const {
    return QSize(static_cast<int>(std::ceil(region.width * scale)),
                 static_cast<int>(std::ceil(region.height * scale)));
}

bool HMKCanvasRenderRequest::drawsSameAs(const HMKCanvasRenderRequest& other) const {
    return designGeneration == other.designGeneration && scale == other.scale &&
           region == other.region && show3D == other.show3D && showJumps == other.showJumps &&
           showStructure == other.showStructure;
}

namespace {

// Below this many pixels a picture is drawn in one piece.
constexpr qint64 kBandedPixels = 512 * 512;
constexpr int kMaximumBands = 4;

// Draws the rows [top, top + rows) of the request's picture into image, which is that band.
void drawBand(const HMKCanvasRenderRequest& request, QImage& image, int top) {
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    // Design units to pixels with y pointing up, the region's top-left at (0, -top).
    const double regionTop = request.region.y + request.region.height;
    painter.setTransform(QTransform(request.scale, 0, 0, -request.scale,
                                    -request.region.x * request.scale,
                                    regionTop * request.scale - top));
    // Only the band's part of the design is walked for drawing (jumps excepted).
    const HMKRect band{request.region.x, regionTop - (top + image.height()) / request.scale,
                       request.region.width, image.height() / request.scale};
    HMKPainterContext context(painter);
    request.design->drawDesignInRect(band, context, request.show3D, request.showJumps,
                                     request.showStructure);
}

}  // namespace

QImage renderCanvasImage(const HMKCanvasRenderRequest& request) {
    const QSize size = request.pixelSize();
    if (!request.design || size.isEmpty()) {
        return {};
    }
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) {
        return {};
    }
    const qint64 pixels = static_cast<qint64>(size.width()) * size.height();
    const int bands = pixels < kBandedPixels ? 1
                                             : std::clamp(QThread::idealThreadCount(), 1,
                                                          std::min(kMaximumBands, size.height()));
    if (bands == 1) {
        drawBand(request, image, 0);
        return image;
    }
    // Horizontal bands drawn in parallel, each into its own raster (a QImage is not shared
    // between painting threads), then copied into place row by row.
    const int rowsPerBand = (size.height() + bands - 1) / bands;
    std::vector<QImage> parts;
    for (int top = 0; top < size.height(); top += rowsPerBand) {
        parts.emplace_back(size.width(), std::min(rowsPerBand, size.height() - top),
                           QImage::Format_ARGB32_Premultiplied);
    }
    std::vector<std::thread> helpers;
    for (std::size_t band = 1; band < parts.size(); ++band) {
        helpers.emplace_back(
            [&, band] { drawBand(request, parts[band], static_cast<int>(band) * rowsPerBand); });
    }
    drawBand(request, parts[0], 0);
    for (std::thread& helper : helpers) {
        helper.join();
    }
    for (std::size_t band = 0; band < parts.size(); ++band) {
        const QImage& part = parts[band];
        const int top = static_cast<int>(band) * rowsPerBand;
        for (int row = 0; row < part.height(); ++row) {
            std::memcpy(image.scanLine(top + row), part.constScanLine(row),
                        static_cast<std::size_t>(part.bytesPerLine()));
        }
    }
    return image;
}

HMKCanvasImageRenderer::HMKCanvasImageRenderer(QObject* parent) : QObject(parent) {
    // One drawing at a time: the newest request matters, and the other core stays free for
    // the GUI thread.
    pool_.setMaxThreadCount(1);
}

HMKCanvasImageRenderer::~HMKCanvasImageRenderer() {
    pending_.reset();
    pool_.waitForDone();
}

void HMKCanvasImageRenderer::request(HMKCanvasRenderRequest request) {
    if (running_) {
        pending_ = std::move(request);
        return;
    }
    start(std::move(request));
}

void HMKCanvasImageRenderer::start(HMKCanvasRenderRequest request) {
    running_ = true;
    pool_.start([this, request = std::move(request)] {
        HMKCanvasImage result{request, renderCanvasImage(request)};
        QMetaObject::invokeMethod(
            this, [this, result = std::move(result)]() mutable { finished(std::move(result)); },
            Qt::QueuedConnection);
    });
}

void HMKCanvasImageRenderer::finished(HMKCanvasImage image) {
    running_ = false;
    if (pending_) {
        HMKCanvasRenderRequest next = std::move(*pending_);
        pending_.reset();
        start(std::move(next));
    }
    // A picture that a newer request already replaces is still worth showing until then.
    emit imageReady(image);
}

void HMKCanvasImageRenderer::waitForIdle() {
    while (isBusy()) {
        pool_.waitForDone();
        QCoreApplication::sendPostedEvents(this);
    }
}
