#include "gui/canvas_image_renderer.h"

#include <cmath>

#include <QCoreApplication>
#include <QPainter>
#include <QRunnable>

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

QImage renderCanvasImage(const HMKCanvasRenderRequest& request) {
    const QSize size = request.pixelSize();
    if (!request.design || size.isEmpty()) {
        return {};
    }
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) {
        return {};
    }
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    // Design units to pixels with y pointing up, the region's top-left at (0, 0).
    const double top = request.region.y + request.region.height;
    painter.setTransform(QTransform(request.scale, 0, 0, -request.scale,
                                    -request.region.x * request.scale, top * request.scale));
    HMKPainterContext context(painter);
    request.design->drawDesignInRect(request.region, context, request.show3D, request.showJumps,
                                     request.showStructure);
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
