#include "platform/design_image.h"

#include <QColor>
#include <algorithm>
#include <thread>
#include <vector>

namespace {

// Below this many pixels a single band is quicker than starting threads.
constexpr long long kPixelsWorthABand = 250'000;

}  // namespace

QImage drawDesignImage(const HMKDesign& design, const HMKDesignImageRequest& request,
                       const std::atomic<bool>* cancel) {
    if (request.widthPixels <= 0 || request.heightPixels <= 0) {
        return QImage();
    }
    QImage image(request.widthPixels, request.heightPixels, QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) {
        return image;
    }
    if (request.background) {
        const HMKColor& color = *request.background;
        image.fill(QColor::fromRgbF(static_cast<float>(std::clamp(color.red(), 0.0, 1.0)),
                                    static_cast<float>(std::clamp(color.green(), 0.0, 1.0)),
                                    static_cast<float>(std::clamp(color.blue(), 0.0, 1.0))));
    } else {
        image.fill(Qt::transparent);
    }
    const long long pixels = static_cast<long long>(request.widthPixels) * request.heightPixels;
    int bands = request.threads > 0 ? request.threads
                                    : static_cast<int>(std::thread::hardware_concurrency());
    bands = static_cast<int>(std::clamp<long long>(
        std::min<long long>(bands, pixels / kPixelsWorthABand), 1, request.heightPixels));
    // Every pixel is painted by the same stitches in the same order whichever band it is in,
    // so the bands join without a seam.
    auto drawBand = [&](int band) {
        const int top = request.heightPixels * band / bands;
        const int bottom = request.heightPixels * (band + 1) / bands;
        const std::size_t stride = static_cast<std::size_t>(image.bytesPerLine()) / 4;
        HMKRasterTarget target{reinterpret_cast<std::uint32_t*>(image.bits()) + top * stride,
                               request.widthPixels, bottom - top, stride};
        HMKAffineTransform shifted = request.designToPixels;
        shifted.ty -= top;
        drawDesignIntoRaster(design, target, shifted, request.switches, cancel);
    };
    // bits() detaches once here, not in the bands.
    image.bits();
    std::vector<std::thread> helpers;
    for (int band = 1; band < bands; ++band) {
        helpers.emplace_back(drawBand, band);
    }
    drawBand(0);
    for (std::thread& helper : helpers) {
        helper.join();
    }
    return image;
}
