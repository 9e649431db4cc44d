// Draws the design canvas's picture of a design off the GUI thread. The canvas asks for the
// part of the design it needs at its current zoom; the newest request wins, a request made
// while a drawing runs waits for it and replaces any older waiting one, and the finished
// picture comes back on the GUI thread through imageReady(). renderCanvasImage() is the one
// place that turns a request into pixels, so a faster renderer plugs in there.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include <QImage>
#include <QObject>
#include <QThreadPool>

#include "model/design.h"
#include "model/geometry.h"

// What the canvas wants drawn: a region of the design at a scale, with the display switches.
struct HMKCanvasRenderRequest {
    // A copy of the design made on the GUI thread; shared by every request for that state.
    std::shared_ptr<const HMKDesign> design;
    // Counts the design states, so the canvas can tell a stale picture from a current one.
    std::uint64_t designGeneration = 0;
    // Pixels per design unit (0.1 mm).
    double scale = 1;
    // The design region the picture covers (design units, y up); its top-left corner is the
    // picture's pixel (0, 0).
    HMKRect region;
    bool show3D = true;
    bool showJumps = true;
    bool showStructure = false;
    // While the stitch-out animation runs: only the first records of the design are drawn.
    std::optional<std::uint64_t> sewnRecords;

    // The picture's size in pixels.
    QSize pixelSize() const;
    // Whether a picture drawn for other would show the same pixels as one for this request.
    bool drawsSameAs(const HMKCanvasRenderRequest& other) const;
};

// Where the needle stands after a record, and the thread it sews.
struct HMKSewingState {
    std::uint64_t record = 0;
    double x = 0;
    double y = 0;
    std::size_t thread = 0;
};

struct HMKCanvasImage {
    HMKCanvasRenderRequest request;
    // Transparent where nothing is drawn (ARGB32 premultiplied).
    QImage image;
    // Kept by drawSewnRecords() just behind the last record drawn, so that the next records
    // are drawn without walking the design from its first record each frame.
    std::optional<HMKSewingState> sewing = std::nullopt;
};

// The picture for a request (any thread). Big requests are limited to kMaximumCanvasImageSide
// pixels a side by the caller.
QImage renderCanvasImage(const HMKCanvasRenderRequest& request);

inline constexpr int kMaximumCanvasImageSide = 8192;

// Draws the records [from, to) of design onto a picture drawn for the first from records
// (GUI thread, a few at a time while the stitch-out animation plays). design is a copy of the
// picture's design whose display range this changes.
void drawSewnRecords(HMKCanvasImage& image, HMKDesign& design, std::uint64_t to);

class HMKCanvasImageRenderer : public QObject {
    Q_OBJECT
public:
    explicit HMKCanvasImageRenderer(QObject* parent = nullptr);
    // Waits for a drawing in progress (it holds its own copy of the design).
    ~HMKCanvasImageRenderer() override;

    // Draws the request in the background; replaces a request still waiting.
    void request(HMKCanvasRenderRequest request);
    // A drawing runs or waits.
    bool isBusy() const { return running_ || pending_.has_value(); }
    // Blocks until nothing runs or waits (tests, benchmarks, screenshots).
    void waitForIdle();

signals:
    void imageReady(const HMKCanvasImage& image);

private:
    void start(HMKCanvasRenderRequest request);
    void finished(HMKCanvasImage image);

    QThreadPool pool_;
    bool running_ = false;
    std::optional<HMKCanvasRenderRequest> pending_;
};
