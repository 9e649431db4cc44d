// The design renderer's drawing context on top of QPainter, so designs draw into QImage
// rasters, PDF pages (QPdfWriter) and SVG documents (QSvgGenerator) alike. Used by the
// picture helpers, the raster provider and the views.
#pragma once

#include <vector>

#include <QColor>
#include <QGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPen>
#include <QPointF>

#include "render/drawing_context.h"

class HMKPainterContext : public HMKDrawingContext {
public:
    // Draws with a painter that is already active on its device; its transform maps user
    // space to the device and its render hints decide antialiasing. The painter must outlive
    // the context and is left in the state it was given in once saves and restores balance.
    explicit HMKPainterContext(QPainter& painter);
    ~HMKPainterContext() override;
    HMKPainterContext(const HMKPainterContext&) = delete;
    HMKPainterContext& operator=(const HMKPainterContext&) = delete;

    void saveState() override;
    void restoreState() override;
    void setRoundLineCap() override;
    void setLineWidth(double width) override;
    void setLineDash(const std::vector<double>& pattern) override;
    void setStrokeColor(const HMKRgba& color) override;
    void setFillColor(const HMKRgba& color) override;
    void moveTo(double x, double y) override;
    void lineTo(double x, double y) override;
    void addArc(double centerX, double centerY, double radius, double startAngle, double endAngle,
                bool clockwise) override;
    void addRect(double x, double y, double width, double height) override;
    void strokePath() override;
    void fillPath() override;
    void clipToPath() override;
    void drawLinearGradient(const HMKGradient& gradient, double startX, double startY, double endX,
                            double endY) override;

private:
    // The graphics state of the drawing context (the current path is not part of it).
    struct State {
        double lineWidth = 1;
        std::vector<double> dash;
        Qt::PenCapStyle cap = Qt::FlatCap;
        QColor strokeColor = Qt::black;
        QColor fillColor = Qt::black;
        // A clip not yet handed to the painter: a gradient drawn into it fills the path with
        // a gradient brush instead, which paints the same pixels far faster than clipping.
        QPainterPath pendingClip;
        bool hasPendingClip = false;
        // Whether the painter itself was saved for this level (only a real clip needs that).
        bool painterSaved = false;
    };
    // The current path while it is at most one straight line, kept as points so that the
    // common single-segment stroke never builds a QPainterPath.
    enum class PathShape { empty, point, line, general };

    void applyPendingClip();
    void ensureGeneralPath();
    void clearPath();
    const QPen& strokePen();
    const QGradientStops& stopsOf(const HMKGradient& gradient);
    // A gradient without a clip covers the band between its ends across the whole device.
    QPainterPath deviceBand(QPointF start, QPointF end) const;

    QPainter& painter_;
    State state_;
    std::vector<State> stack_;
    PathShape shape_ = PathShape::empty;
    QPointF first_;
    QPointF second_;
    QPainterPath path_;
    QPen pen_;
    bool penDirty_ = true;
    // The stops of the last gradient: the renderer draws one gradient per thread many times.
    HMKGradient lastGradient_;
    QGradientStops lastStops_;
};
