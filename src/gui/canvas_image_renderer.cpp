#include "gui/canvas_image_renderer.h"

#include <algorithm>
#include <cmath>

#include <QCoreApplication>
#include <QRunnable>
#include <QThread>

#include "platform/design_image.h"

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

}  // namespace

QImage renderCanvasImage(const HMKCanvasRenderRequest& request) {
    const QSize size = request.pixelSize();
    if (!request.design || size.isEmpty()) {
        return {};
    }
    HMKDesignImageRequest image;
    image.widthPixels = size.width();
    image.heightPixels = size.height();
    // Design units to pixels with y pointing up, the region's top-left corner at (0, 0).
    const double regionTop = request.region.y + request.region.height;
    image.designToPixels = {request.scale,
                            0,
                            0,
                            -request.scale,
                            -request.region.x * request.scale,
                            regionTop * request.scale};
    image.switches = {request.show3D, request.showJumps, request.showStructure, -1};
    const qint64 pixels = static_cast<qint64>(size.width()) * size.height();
    image.threads =
        pixels < kBandedPixels ? 1 : std::clamp(QThread::idealThreadCount(), 1, kMaximumBands);
    return drawDesignImage(*request.design, image);
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
