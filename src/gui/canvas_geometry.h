// How the design canvas maps design units (0.1 mm, y up) onto its pixels (y down): a scale in
// pixels per unit and the design point shown at the middle of the visible area.
#pragma once

#include <QPointF>
#include <QRectF>
#include <QSize>

#include "model/geometry.h"

struct HMKCanvasGeometry {
    // Pixels per design unit.
    double scale = 1;
    // The design point at the middle of the viewport.
    HMKPoint center;
    QSize viewport;

    QPointF toPixels(HMKPoint point) const {
        return {(point.x - center.x) * scale + viewport.width() / 2.0,
                (center.y - point.y) * scale + viewport.height() / 2.0};
    }
    HMKPoint toDesign(QPointF pixel) const {
        return {center.x + (pixel.x() - viewport.width() / 2.0) / scale,
                center.y - (pixel.y() - viewport.height() / 2.0) / scale};
    }
    // The design rectangle (origin at its lowest x and y) under a pixel rectangle.
    HMKRect toDesign(const QRectF& pixels) const {
        const QRectF normalized = pixels.normalized();
        const HMKPoint corner = toDesign(normalized.bottomLeft());
        return {corner.x, corner.y, normalized.width() / scale, normalized.height() / scale};
    }
    // The pixel rectangle showing a design rectangle.
    QRectF toPixels(const HMKRect& rect) const {
        const QPointF topLeft = toPixels(HMKPoint{rect.x, rect.y + rect.height});
        return {topLeft, QSizeF(rect.width * scale, rect.height * scale)};
    }
    // The design region the viewport shows.
    HMKRect visibleRegion() const { return toDesign(QRectF(QPointF(0, 0), QSizeF(viewport))); }
};
