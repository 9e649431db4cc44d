#include "gui/canvas_image_renderer.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

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
           showStructure == other.showStructure && sewnRecords == other.sewnRecords;
}

namespace {

// Below this many pixels a picture is drawn in one piece.
constexpr qint64 kBandedPixels = 512 * 512;
constexpr int kMaximumBands = 4;

// Design units to the request's picture pixels, with y pointing up and the region's top-left
// corner at (0, 0).
HMKAffineTransform designToPicture(const HMKCanvasRenderRequest& request) {
    const double regionTop = request.region.y + request.region.height;
    return {request.scale,
            0,
            0,
            -request.scale,
            -request.region.x * request.scale,
            regionTop * request.scale};
}

HMKDrawingSwitches switchesOf(const HMKCanvasRenderRequest& request) {
    return {request.show3D, request.showJumps, request.showStructure, -1};
}

// Draws design (the request's, or a short design of the records sewn last) over the request's
// picture.
void drawDesignOver(const HMKCanvasRenderRequest& request, const HMKDesign& design, QImage& image) {
    const HMKRasterTarget target{reinterpret_cast<std::uint32_t*>(image.bits()), image.width(),
                                 image.height(),
                                 static_cast<std::size_t>(image.bytesPerLine()) / 4};
    drawDesignIntoRaster(design, target, designToPicture(request), switchesOf(request));
}

// The records the renderer draws for a display range of location 0 and this length are the
// first length + 1; nothing at all is sewn before the first frame.
HMKRange firstRecords(std::uint64_t count) {
    return HMKRange{0, count - 1};
}

// Moves state on to the state after record `to` (state.record <= to).
void sewUpTo(HMKSewingState& state, const std::vector<HMKStitch>& stitches, std::uint64_t to) {
    for (std::uint64_t i = state.record + 1; i <= to; ++i) {
        state.x += static_cast<double>(stitches[i].deltaX);
        state.y += static_cast<double>(stitches[i].deltaY);
        state.thread += stitches[i].isColorChange ? 1 : 0;
    }
    state.record = to;
}

}  // namespace

void drawSewnRecords(HMKCanvasImage& image, HMKDesign& design, std::uint64_t to) {
    const std::uint64_t from = image.request.sewnRecords.value_or(0);
    if (to <= from || image.image.isNull()) {
        return;
    }
    if (from < 2) {
        // The renderer draws records location - 1 through location + length, so the first
        // records are drawn afresh from the start.
        if (from == 1) {
            image.image.fill(Qt::transparent);
        }
        design.setDisplayRange(firstRecords(to));
        drawDesignOver(image.request, design, image.image);
        image.request.sewnRecords = to;
        return;
    }
    // The records [from, to) are drawn as a short design: a jump to where record from - 2
    // ended, record from - 1 (which decides how record from joins it, not drawn again: that
    // would darken its translucent edges), then the new records, with the threads from the
    // one sewing at record from - 2 on. The renderer then walks only these.
    std::vector<HMKStitch>& stitches = design.stitches();
    if (!image.sewing || image.sewing->record > from - 2) {
        image.sewing = HMKSewingState{0, static_cast<double>(stitches[0].deltaX),
                                      static_cast<double>(stitches[0].deltaY), 0};
    }
    HMKSewingState& state = *image.sewing;
    sewUpTo(state, stitches, from - 2);
    if (state.thread < design.threads().size()) {
        std::vector<HMKStitch> window;
        window.reserve(to - from + 2);
        window.emplace_back(static_cast<float>(state.x), static_cast<float>(state.y), true, false);
        window.insert(window.end(), stitches.begin() + static_cast<std::ptrdiff_t>(from - 1),
                      stitches.begin() + static_cast<std::ptrdiff_t>(to));
        std::vector<HMKThread> threads(
            design.threads().begin() + static_cast<std::ptrdiff_t>(state.thread),
            design.threads().end());
        std::swap(design.stitches(), window);
        std::swap(design.threads(), threads);
        // From the window's third record (the renderer starts at location - 1) to its end.
        design.setDisplayRange({3, to - from - 1});
        drawDesignOver(image.request, design, image.image);
        std::swap(design.stitches(), window);
        std::swap(design.threads(), threads);
    }
    sewUpTo(state, stitches, to - 2);
    image.request.sewnRecords = to;
}

QImage renderCanvasImage(const HMKCanvasRenderRequest& request) {
    const QSize size = request.pixelSize();
    if (!request.design || size.isEmpty()) {
        return {};
    }
    // The stitch-out animation's pictures draw a copy whose display range ends at the needle.
    const HMKDesign* design = request.design.get();
    std::optional<HMKDesign> sewn;
    if (request.sewnRecords) {
        if (*request.sewnRecords == 0) {
            QImage empty(size, QImage::Format_ARGB32_Premultiplied);
            empty.fill(Qt::transparent);
            return empty;
        }
        sewn.emplace(*request.design);
        sewn->setDisplayRange(firstRecords(*request.sewnRecords));
        design = &*sewn;
    }
    HMKDesignImageRequest image;
    image.widthPixels = size.width();
    image.heightPixels = size.height();
    image.designToPixels = designToPicture(request);
    image.switches = switchesOf(request);
    const qint64 pixels = static_cast<qint64>(size.width()) * size.height();
    image.threads =
        pixels < kBandedPixels ? 1 : std::clamp(QThread::idealThreadCount(), 1, kMaximumBands);
    return drawDesignImage(*design, image);
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
