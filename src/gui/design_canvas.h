// HMKDesignCanvas: the design view in the middle of a document window. It shows the design
// at any zoom with the hoop, grid, centre and first/last markers, turns mouse gestures into
// the document's selection and move commands, and pans and zooms with wheel, pinch, scroll
// bars, middle-drag and space-drag.
//
// Drawing stays fast at any size: the design is drawn off the GUI thread into a picture of
// the visible part (and a margin around it) at the current zoom; panning only blits that
// picture, and while a new one is drawn after a zoom or an edit the old one is shown scaled.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include <QAbstractScrollArea>
#include <QList>

#include "document/document.h"
#include "gui/canvas_geometry.h"
#include "gui/canvas_image_renderer.h"
#include "gui/stitch_out_animation.h"
#include "platform/settings.h"

class QAction;
class QLabel;
class HMKRuler;

class HMKDesignCanvas : public QAbstractScrollArea {
    Q_OBJECT
public:
    HMKDesignCanvas(HMKDocument& document, HMKSettings& settings, QWidget* parent = nullptr);

    // --- Zoom ----------------------------------------------------------------------------
    // Pixels per design unit.
    double scale() const { return geometry_.scale; }
    // The zoom relative to the design's real size on this screen (1.0 = actual size).
    double zoomFactor() const;
    // Zooms keeping the design point under anchor (viewport pixels; the middle without one).
    void setScale(double scale, std::optional<QPointF> anchor = std::nullopt);
    void zoomIn();
    void zoomOut();
    // The design and its hoop fill the view.
    void zoomToFit();
    void zoomToActualSize();
    // Fits the design once the view has its size (a window that just opened a file).
    void fitWhenShown();

    // --- Selection mode ---------------------------------------------------------------------
    HMKSelectionMode selectionMode() const { return selectionMode_; }
    void setSelectionMode(HMKSelectionMode mode);

    // --- Stitch-out animation -------------------------------------------------------------
    // While it is active the canvas shows only the sewn stitches and the needle.
    HMKStitchOutAnimation& stitchOut() { return *stitchOut_; }
    // The picture is brought up to the needle at most this many records per turn of the
    // event loop (a few milliseconds); a paused player further ahead than this gets a picture
    // drawn anew off the GUI thread instead.
    static constexpr std::uint64_t kCatchUpRecordsPerTurn = 2000;

    // --- Measuring --------------------------------------------------------------------------
    // While on, a left drag measures instead of selecting; Esc clears the reading.
    bool isMeasuring() const { return measuring_; }
    void setMeasuring(bool on);
    // The reading in the user's unit ("42.4 mm, 45.0°"), empty without one.
    QString measurementText() const;

    // The actions of the right-click menu (the window's selection commands).
    void setContextMenuActions(QList<QAction*> actions) { contextActions_ = std::move(actions); }

    // --- Inspection (status bar, tests, benchmarks) ------------------------------------------
    const HMKCanvasGeometry& canvasGeometry() const { return geometry_; }
    // The picture being shown is drawn for the current design, zoom and switches.
    bool isImageCurrent() const;
    // Blocks until the picture is current (tests, screenshots, benchmarks).
    void waitForImage();

signals:
    void zoomChanged(double zoomFactor);
    void selectionModeChanged(HMKSelectionMode mode);
    // The design point under the pointer, or none when it left the view.
    void pointerMoved(std::optional<HMKPoint> point);
    void measuringChanged(bool on);
    void measurementChanged(const QString& text);

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    bool viewportEvent(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    // What a left or middle button press turned into.
    enum class Gesture {
        none,
        pressed,
        pressedOnSelection,
        rubberBand,
        moveSelection,
        pan,
        measure
    };
    // What the canvas shows from the settings, read once per change.
    struct Switches {
        bool jumps = true;
        bool grid = false;
        bool center = true;
        bool hoop = true;
        bool first = true;
        bool last = true;
        bool structure = false;
        bool fastMode = false;
        QColor background;
        bool rulers = false;
        HMKMeasurementUnit unit = HMKMeasurementUnit::millimetres;
    };
    // What the overlays need from the design, computed once per design state.
    struct DesignFacts {
        bool empty = true;
        HMKRect bounds;
        HMKPoint firstStitch;
        HMKPoint lastStitch;
        std::optional<HMKHoop> hoop;
        HMKRect selectionRect;
    };

    void readSwitches();
    void designDidChange();
    void takeSnapshot();
    // Everything a scroll range may cover: the design, its hoop and a margin.
    HMKRect worldRect() const;
    HMKRect fitRect() const;
    void updateScrollBars();
    void geometryDidChange();
    void reportViewState();
    void requestImageIfNeeded();
    void imageReady(const HMKCanvasImage& image);
    HMKCanvasRenderRequest requestFor(const HMKRect& region) const;
    // A picture for request shows the current state, or will once the stitches sewn since
    // its drawing are drawn onto it.
    bool canCatchUp(const HMKCanvasRenderRequest& request) const;
    void stitchOutDidChange();
    // Draws the stitches sewn since the picture was drawn onto it.
    void catchUpStitchOut();
    void updateRulers();
    void paintNeedle(QPainter& painter) const;
    void paintMeasurement(QPainter& painter) const;
    float hitTolerance() const;

    void paintGrid(QPainter& painter) const;
    void paintHoop(QPainter& painter) const;
    void paintMarkers(QPainter& painter) const;
    void paintGesture(QPainter& painter) const;
    void panBy(QPointF pixels);
    void finishClick(Qt::KeyboardModifiers modifiers);
    void finishRubberBand(Qt::KeyboardModifiers modifiers);

    HMKDocument& document_;
    HMKSettings& settings_;
    HMKCanvasGeometry geometry_;
    HMKSelectionMode selectionMode_ = HMKSelectionMode::rectangle;
    Switches switches_;
    DesignFacts facts_;
    QList<QAction*> contextActions_;

    std::shared_ptr<const HMKDesign> snapshot_;
    std::uint64_t generation_ = 0;
    bool snapshotPending_ = false;
    HMKCanvasImageRenderer renderer_;
    std::optional<HMKCanvasImage> image_;
    std::optional<HMKCanvasRenderRequest> requested_;

    HMKStitchOutAnimation* stitchOut_ = nullptr;
    // A copy of the shown design state whose display range the animation's frames change.
    std::unique_ptr<HMKDesign> sewingCopy_;
    std::uint64_t sewingCopyGeneration_ = 0;
    bool catchUpPending_ = false;

    HMKRuler* horizontalRuler_ = nullptr;
    HMKRuler* verticalRuler_ = nullptr;
    QLabel* rulerCorner_ = nullptr;

    bool measuring_ = false;
    // The measured line in design units, from the press to the pointer or the release.
    std::optional<std::pair<HMKPoint, HMKPoint>> measurement_;

    bool fitPending_ = false;
    // The view shows the fitted design and follows window resizes until the user zooms.
    bool fitted_ = false;
    bool updatingScrollBars_ = false;
    bool spaceHeld_ = false;
    Gesture gesture_ = Gesture::none;
    Qt::MouseButton gestureButton_ = Qt::NoButton;
    QPointF pressPixel_;
    QPointF currentPixel_;
};
