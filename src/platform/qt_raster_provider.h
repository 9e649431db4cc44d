// The offscreen rasters of the core (the PEC thumbnails) painted with Qt: QImage, an
// antialiased QPainter and smooth scaling. The tool, the application and the tests call
// installQtRasterProvider() once at start-up, before anything asks for a raster.
#pragma once

#include "render/raster_provider.h"

class HMKQtRasterProvider : public HMKRasterProvider {
public:
    // A 0 x 0 image when width or height is not positive or the raster cannot be allocated.
    HMKRgbaImage render(int width, int height, const HMKAffineTransform& transform,
                        const std::function<void(HMKDrawingContext&)>& draw) override;
    // A 0 x 0 image when width or height is not positive; an empty source scales to a
    // transparent picture of the requested size.
    HMKRgbaImage scaled(const HMKRgbaImage& image, int width, int height) override;
};

// Installs an HMKQtRasterProvider as the core's raster provider. Needs no QGuiApplication
// (nothing draws text) and may be called again; the last installation wins.
void installQtRasterProvider();
