#include "gui/design_canvas.h"

#include <algorithm>
#include <cmath>

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QLabel>
#include <QMenu>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScrollBar>
#include <QTimer>
#include <QWheelEvent>

#include "gui/ruler.h"
#include "model/ruler_ticks.h"

namespace {

constexpr double kZoomStep = 1.25;
constexpr double kMaximumScale = 50;
// The picture covers this share of the viewport beyond each edge, so that panning blits.
constexpr double kImageMargin = 0.5;
// A click picks stitches within this many pixels.
constexpr double kHitPixels = 5;
// Stitches are drawn this far beyond their end points (half the stitch width, and more).
constexpr double kStitchReach = 4;
// Design units per millimetre.
constexpr double kUnitsPerMillimetre = 10;
// Seconds of sewing a playing animation's picture may fall behind the needle and still be
// caught up: far longer than drawing a new picture of the largest design takes.
constexpr double kCatchUpSeconds = 10;

HMKRect united(const HMKRect& a, const HMKRect& b) {
    const double left = std::min(a.x, b.x);
    const double bottom = std::min(a.y, b.y);
    const double right = std::max(a.x + a.width, b.x + b.width);
    const double top = std::max(a.y + a.height, b.y + b.height);
    return {left, bottom, right - left, top - bottom};
}

std::optional<HMKRect> intersected(const HMKRect& a, const HMKRect& b) {
    const double left = std::max(a.x, b.x);
    const double bottom = std::max(a.y, b.y);
    const double right = std::min(a.x + a.width, b.x + b.width);
    const double top = std::min(a.y + a.height, b.y + b.height);
    if (right <= left || top <= bottom) {
        return std::nullopt;
    }
    return HMKRect{left, bottom, right - left, top - bottom};
}

HMKRect widened(const HMKRect& rect, double dx, double dy) {
    return {rect.x - dx, rect.y - dy, rect.width + 2 * dx, rect.height + 2 * dy};
}

bool covers(const HMKRect& outer, const HMKRect& inner) {
    return inner.x >= outer.x && inner.y >= outer.y &&
           inner.x + inner.width <= outer.x + outer.width &&
           inner.y + inner.height <= outer.y + outer.height;
}

// Rounds the region outwards to whole pixels of the scale, so the picture blits at whole
// pixel offsets.
HMKRect snappedToPixels(const HMKRect& rect, double scale) {
    const double left = std::floor(rect.x * scale) / scale;
    const double bottom = std::floor(rect.y * scale) / scale;
    const double right = std::ceil((rect.x + rect.width) * scale) / scale;
    const double top = std::ceil((rect.y + rect.height) * scale) / scale;
    return {left, bottom, right - left, top - bottom};
}

HMKRect hoopRect(const HMKHoop& hoop) {
    const double width = hoop.width() * kUnitsPerMillimetre;
    const double height = hoop.height() * kUnitsPerMillimetre;
    return {-width / 2, -height / 2, width, height};
}

bool removesFromSelection(Qt::KeyboardModifiers modifiers) {
    return modifiers & (Qt::ControlModifier | Qt::AltModifier);
}

}  // namespace

HMKDesignCanvas::HMKDesignCanvas(HMKDocument& document, HMKSettings& settings, QWidget* parent)
    : QAbstractScrollArea(parent), document_(document), settings_(settings) {
    setFocusPolicy(Qt::StrongFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    viewport()->setMouseTracking(true);
    viewport()->setCursor(Qt::CrossCursor);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
    viewport()->setAttribute(Qt::WA_AcceptTouchEvents);
    selectionMode_ = document_.viewState().selectionMode;
    stitchOut_ = new HMKStitchOutAnimation(settings_, this);
    horizontalRuler_ = new HMKRuler(Qt::Horizontal, this);
    verticalRuler_ = new HMKRuler(Qt::Vertical, this);
    rulerCorner_ = new QLabel(this);
    rulerCorner_->setAlignment(Qt::AlignCenter);
    rulerCorner_->setAutoFillBackground(true);
    QFont small = rulerCorner_->font();
    small.setPointSizeF(std::max(6.0, small.pointSizeF() * 0.75));
    rulerCorner_->setFont(small);
    readSwitches();
    takeSnapshot();
    connect(stitchOut_, &HMKStitchOutAnimation::changed, this,
            &HMKDesignCanvas::stitchOutDidChange);

    connect(&renderer_, &HMKCanvasImageRenderer::imageReady, this, &HMKDesignCanvas::imageReady);
    connect(&document_, &HMKDocument::designChanged, this, &HMKDesignCanvas::designDidChange);
    connect(&document_, &HMKDocument::selectionChanged, this, &HMKDesignCanvas::designDidChange);
    connect(&document_, &HMKDocument::viewStateRestored, this, [this] {
        const HMKViewState& state = document_.viewState();
        setSelectionMode(state.selectionMode);
        fitPending_ = false;
        geometry_.scale = std::clamp(state.scaling, 1e-4, kMaximumScale);
        geometry_.center = state.center;
        geometryDidChange();
    });
    connect(&settings_, &HMKSettings::changed, this, [this] {
        readSwitches();
        geometryDidChange();
    });
}

// --- State ------------------------------------------------------------------------------

void HMKDesignCanvas::readSwitches() {
    switches_.jumps = settings_.value(HMKSettings::showJumps);
    switches_.grid = settings_.value(HMKSettings::showGrid);
    switches_.center = settings_.value(HMKSettings::showCenter);
    switches_.hoop = settings_.value(HMKSettings::showHoop);
    switches_.first = settings_.value(HMKSettings::showFirst);
    switches_.last = settings_.value(HMKSettings::showLast);
    switches_.structure = settings_.value(HMKSettings::showStructure);
    switches_.fastMode = settings_.value(HMKSettings::drawFastMode);
    switches_.background = settings_.value(HMKSettings::backgroundColor);
    switches_.rulers = settings_.value(HMKSettings::showRulers);
    switches_.unit = settings_.value(HMKSettings::measurementUnit);
}

void HMKDesignCanvas::designDidChange() {
    // Several changes in one event (deselect, then select) make one copy of the design.
    if (!snapshotPending_) {
        snapshotPending_ = true;
        QTimer::singleShot(0, this, [this] {
            takeSnapshot();
            geometryDidChange();
        });
    }
}

void HMKDesignCanvas::takeSnapshot() {
    snapshotPending_ = false;
    const HMKDesign& design = document_.design();
    snapshot_ = std::make_shared<const HMKDesign>(design);
    ++generation_;
    DesignFacts facts;
    facts.empty = design.stitches().empty() || design.threads().empty();
    if (!facts.empty) {
        facts.bounds = {design.xMin(), design.yMin(), design.xMax() - design.xMin(),
                        design.yMax() - design.yMin()};
        facts.firstStitch = design.firstStitch();
        facts.lastStitch = design.lastStitch();
        if (design.selectionActive()) {
            facts.selectionRect = design.selectionRect();
        }
    }
    facts.hoop = design.designHoop();
    facts_ = facts;
    stitchOut_->setDesign(snapshot_);
}

HMKRect HMKDesignCanvas::fitRect() const {
    HMKRect rect = facts_.empty ? HMKRect{-500, -500, 1000, 1000} : facts_.bounds;
    if (switches_.hoop && facts_.hoop) {
        rect = facts_.empty ? hoopRect(*facts_.hoop) : united(rect, hoopRect(*facts_.hoop));
    }
    // A little room around the design, so that its edge stitches do not touch the window.
    const double room = std::max({rect.width, rect.height, 100.0}) * 0.03;
    return widened(rect, room, room);
}

HMKRect HMKDesignCanvas::worldRect() const {
    // Exactly what fitting shows, so that a fitted view has no scroll bars.
    return fitRect();
}

double HMKDesignCanvas::zoomFactor() const {
    const double actualScale = logicalDpiX() / (25.4 * kUnitsPerMillimetre);
    return geometry_.scale / actualScale;
}

void HMKDesignCanvas::setScale(double scale, std::optional<QPointF> anchor) {
    const HMKRect world = worldRect();
    const QSize page = viewport()->size();
    // Never smaller than a quarter of the whole world in the view.
    const double smallest = std::min(page.width() / world.width, page.height() / world.height) / 4;
    scale = std::clamp(scale, std::max(smallest, 1e-4), kMaximumScale);
    const QPointF pixel = anchor.value_or(QPointF(page.width() / 2.0, page.height() / 2.0));
    const HMKPoint fixed = geometry_.toDesign(pixel);
    geometry_.scale = scale;
    // The point under the anchor stays where it is.
    geometry_.center = {fixed.x - (pixel.x() - page.width() / 2.0) / scale,
                        fixed.y + (pixel.y() - page.height() / 2.0) / scale};
    fitPending_ = false;
    fitted_ = false;
    geometryDidChange();
    emit zoomChanged(zoomFactor());
}

void HMKDesignCanvas::zoomIn() {
    setScale(geometry_.scale * kZoomStep);
}

void HMKDesignCanvas::zoomOut() {
    setScale(geometry_.scale / kZoomStep);
}

void HMKDesignCanvas::zoomToFit() {
    // A design that was just opened is fitted, not the one before it.
    if (snapshotPending_) {
        takeSnapshot();
    }
    const HMKRect fit = fitRect();
    const QSize page = viewport()->size();
    if (page.isEmpty()) {
        fitPending_ = true;
        return;
    }
    geometry_.center = {fit.x + fit.width / 2, fit.y + fit.height / 2};
    setScale(std::min(page.width() / fit.width, page.height() / fit.height));
    fitted_ = true;
}

void HMKDesignCanvas::zoomToActualSize() {
    setScale(logicalDpiX() / (25.4 * kUnitsPerMillimetre));
}

void HMKDesignCanvas::fitWhenShown() {
    fitPending_ = true;
    if (isVisible() && !viewport()->size().isEmpty()) {
        zoomToFit();
    }
}

void HMKDesignCanvas::setSelectionMode(HMKSelectionMode mode) {
    if (mode == selectionMode_) {
        return;
    }
    selectionMode_ = mode;
    reportViewState();
    emit selectionModeChanged(mode);
}

void HMKDesignCanvas::reportViewState() {
    document_.setViewState({geometry_.scale, geometry_.center, selectionMode_});
}

// --- Scrolling --------------------------------------------------------------------------

void HMKDesignCanvas::geometryDidChange() {
    const int margin = switches_.rulers ? HMKRuler::kThickness : 0;
    setViewportMargins(margin, margin, 0, 0);
    geometry_.viewport = viewport()->size();
    updateScrollBars();
    updateRulers();
    reportViewState();
    requestImageIfNeeded();
    viewport()->update();
}

void HMKDesignCanvas::updateScrollBars() {
    const HMKRect world = worldRect();
    const QSize page = viewport()->size();
    const double scale = geometry_.scale;
    const double worldTop = world.y + world.height;
    // Per axis: the range the world exceeds the page by; the centre stays within it.
    const auto fitAxis = [&](QScrollBar* bar, double worldStart, double worldSize, int pageSize,
                             double& center, bool yUp) {
        const double excess = worldSize * scale - pageSize;
        // Rounding leaves a fitted view up to a pixel short; that needs no scroll bar.
        const int range = excess > 1 ? static_cast<int>(std::ceil(excess)) : 0;
        const double half = pageSize / 2.0 / scale;
        if (range == 0) {
            center = worldStart + (yUp ? -worldSize / 2 : worldSize / 2);
        } else {
            const double low = yUp ? worldStart - worldSize + half : worldStart + half;
            const double high = yUp ? worldStart - half : worldStart + worldSize - half;
            center = std::clamp(center, low, high);
        }
        const double offset = yUp ? (worldStart - center - half) : (center - worldStart - half);
        bar->setRange(0, range);
        bar->setPageStep(pageSize);
        bar->setSingleStep(std::max(pageSize / 20, 1));
        bar->setValue(static_cast<int>(std::lround(offset * scale)));
    };
    updatingScrollBars_ = true;
    fitAxis(horizontalScrollBar(), world.x, world.width, page.width(), geometry_.center.x, false);
    fitAxis(verticalScrollBar(), worldTop, world.height, page.height(), geometry_.center.y, true);
    updatingScrollBars_ = false;
}

void HMKDesignCanvas::scrollContentsBy(int dx, int dy) {
    if (updatingScrollBars_) {
        return;
    }
    // The scroll bars moved the view: the centre follows them.
    fitted_ = false;
    geometry_.center.x -= dx / geometry_.scale;
    geometry_.center.y += dy / geometry_.scale;
    geometryDidChange();
}

void HMKDesignCanvas::panBy(QPointF pixels) {
    fitted_ = false;
    geometry_.center.x -= pixels.x() / geometry_.scale;
    geometry_.center.y += pixels.y() / geometry_.scale;
    geometryDidChange();
}

void HMKDesignCanvas::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    if ((fitPending_ || fitted_) && !viewport()->size().isEmpty()) {
        zoomToFit();
        return;
    }
    geometryDidChange();
}

// --- The picture --------------------------------------------------------------------------

HMKCanvasRenderRequest HMKDesignCanvas::requestFor(const HMKRect& region) const {
    HMKCanvasRenderRequest request;
    request.design = snapshot_;
    request.designGeneration = generation_;
    request.scale = geometry_.scale;
    request.region = region;
    request.show3D = !switches_.fastMode;
    request.showJumps = switches_.jumps;
    request.showStructure = switches_.structure;
    if (stitchOut_->isActive()) {
        request.sewnRecords = stitchOut_->player().position();
    }
    return request;
}

bool HMKDesignCanvas::canCatchUp(const HMKCanvasRenderRequest& request) const {
    HMKCanvasRenderRequest current = requestFor(request.region);
    if (!current.sewnRecords || !request.sewnRecords) {
        return current.drawsSameAs(request);
    }
    const std::uint64_t drawn = *request.sewnRecords;
    const std::uint64_t sewn = *current.sewnRecords;
    current.sewnRecords = drawn;
    // While playing, the needle runs on while a new picture is drawn, so that one would be
    // behind again: a picture up to several seconds of sewing behind is caught up instead.
    // Only a seek far ahead (the slider dragged while playing) gets a new picture.
    const HMKStitchOutPlayer& player = stitchOut_->player();
    const double reach = static_cast<double>(kCatchUpRecordsPerTurn) +
                         (player.isPlaying() ? player.speed() * kCatchUpSeconds : 0.0);
    return current.drawsSameAs(request) && drawn <= sewn &&
           static_cast<double>(sewn - drawn) <= reach;
}

void HMKDesignCanvas::stitchOutDidChange() {
    catchUpStitchOut();
    requestImageIfNeeded();
    viewport()->update();
}

void HMKDesignCanvas::catchUpStitchOut() {
    if (!image_ || !image_->request.sewnRecords || !stitchOut_->isActive() ||
        image_->request.designGeneration != generation_ || !canCatchUp(image_->request)) {
        return;
    }
    const std::uint64_t sewn = stitchOut_->player().position();
    if (sewn == *image_->request.sewnRecords) {
        return;
    }
    if (!sewingCopy_ || sewingCopyGeneration_ != generation_) {
        sewingCopy_ = std::make_unique<HMKDesign>(*snapshot_);
        sewingCopyGeneration_ = generation_;
    }
    const std::uint64_t drawn = *image_->request.sewnRecords;
    drawSewnRecords(*image_, *sewingCopy_, std::min(sewn, drawn + kCatchUpRecordsPerTurn));
    if (*image_->request.sewnRecords < sewn && !catchUpPending_) {
        // The rest in later turns, so that events are handled in between.
        catchUpPending_ = true;
        QTimer::singleShot(0, this, [this] {
            catchUpPending_ = false;
            catchUpStitchOut();
            viewport()->update();
        });
    }
}

void HMKDesignCanvas::requestImageIfNeeded() {
    if (facts_.empty || snapshotPending_ || viewport()->size().isEmpty()) {
        return;
    }
    const HMKRect drawn = widened(facts_.bounds, kStitchReach, kStitchReach);
    const HMKRect visible = geometry_.visibleRegion();
    const std::optional<HMKRect> needed = intersected(visible, drawn);
    if (!needed) {
        return;
    }
    const auto answers = [&](const HMKCanvasRenderRequest& request) {
        return canCatchUp(request) && covers(request.region, *needed);
    };
    if ((image_ && answers(image_->request)) || (requested_ && answers(*requested_))) {
        return;
    }
    HMKRect region = *intersected(
        widened(visible, visible.width * kImageMargin, visible.height * kImageMargin), drawn);
    HMKCanvasRenderRequest request = requestFor(snappedToPixels(region, geometry_.scale));
    const QSize size = request.pixelSize();
    if (size.width() > kMaximumCanvasImageSide || size.height() > kMaximumCanvasImageSide) {
        request.region = snappedToPixels(*needed, geometry_.scale);
    }
    requested_ = request;
    renderer_.request(std::move(request));
}

void HMKDesignCanvas::imageReady(const HMKCanvasImage& image) {
    if (requested_ && requested_->drawsSameAs(image.request) &&
        requested_->region == image.request.region) {
        requested_.reset();
    }
    // A picture of an older design state never replaces one of a newer state.
    if (!image_ || image.request.designGeneration >= image_->request.designGeneration) {
        image_ = image;
    }
    catchUpStitchOut();
    viewport()->update();
    requestImageIfNeeded();
}

bool HMKDesignCanvas::isImageCurrent() const {
    if (facts_.empty) {
        return true;
    }
    if (snapshotPending_ || !image_) {
        return false;
    }
    const HMKRect drawn = widened(facts_.bounds, kStitchReach, kStitchReach);
    const std::optional<HMKRect> needed = intersected(geometry_.visibleRegion(), drawn);
    return requestFor(image_->request.region).drawsSameAs(image_->request) &&
           (!needed || covers(image_->request.region, *needed));
}

void HMKDesignCanvas::waitForImage() {
    for (int round = 0; round < 100 && !isImageCurrent(); ++round) {
        QCoreApplication::sendPostedEvents(this);
        if (snapshotPending_) {
            takeSnapshot();
            geometryDidChange();
        }
        requestImageIfNeeded();
        renderer_.waitForIdle();
    }
}

// --- Painting -----------------------------------------------------------------------------

void HMKDesignCanvas::paintEvent(QPaintEvent*) {
    QPainter painter(viewport());
    painter.fillRect(viewport()->rect(), switches_.background);
    if (switches_.grid) {
        paintGrid(painter);
    }
    if (switches_.hoop && facts_.hoop) {
        paintHoop(painter);
    }
    if (image_ && !facts_.empty) {
        const QRectF target = geometry_.toPixels(image_->request.region);
        if (image_->request.scale == geometry_.scale) {
            // Panning: a plain blit at a whole-pixel offset.
            painter.drawImage(target.topLeft().toPoint(), image_->image);
        } else {
            painter.drawImage(target, image_->image);
        }
    }
    if (facts_.empty) {
        painter.setPen(palette().color(QPalette::PlaceholderText));
        painter.drawText(viewport()->rect(), Qt::AlignCenter,
                         tr("Open a design with File \u25B8 Open, or drop a design file here."));
    }
    paintMarkers(painter);
    if (stitchOut_->isActive() && !facts_.empty) {
        paintNeedle(painter);
    }
    paintGesture(painter);
    paintMeasurement(painter);
}

void HMKDesignCanvas::paintNeedle(QPainter& painter) const {
    const QPointF at = geometry_.toPixels(stitchOut_->player().needlePosition());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(200, 30, 30), 1.5));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(at, 5, 5);
    painter.drawLine(at - QPointF(9, 0), at + QPointF(9, 0));
    painter.drawLine(at - QPointF(0, 9), at + QPointF(0, 9));
    painter.restore();
}

void HMKDesignCanvas::paintMeasurement(QPainter& painter) const {
    if (!measurement_) {
        return;
    }
    const QPointF from = geometry_.toPixels(measurement_->first);
    const QPointF to = geometry_.toPixels(measurement_->second);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor ink = palette().color(QPalette::Highlight);
    painter.setPen(QPen(ink, 1.5));
    painter.drawLine(from, to);
    painter.setBrush(ink);
    painter.drawEllipse(from, 3, 3);
    painter.drawEllipse(to, 3, 3);
    const QString text = measurementText();
    QRectF box = QRectF(fontMetrics().boundingRect(text)).adjusted(-5, -3, 5, 3);
    box.moveTopLeft(to + QPointF(10, 10));
    // Kept inside the view.
    box.moveRight(std::min(box.right(), viewport()->width() - 2.0));
    box.moveBottom(std::min(box.bottom(), viewport()->height() - 2.0));
    painter.setPen(QPen(ink, 1));
    painter.setBrush(palette().color(QPalette::ToolTipBase));
    painter.drawRoundedRect(box, 3, 3);
    painter.setPen(palette().color(QPalette::ToolTipText));
    painter.drawText(box, Qt::AlignCenter, text);
    painter.restore();
}

// --- Rulers and measuring -------------------------------------------------------------------

void HMKDesignCanvas::updateRulers() {
    const int thickness = HMKRuler::kThickness;
    horizontalRuler_->setVisible(switches_.rulers);
    verticalRuler_->setVisible(switches_.rulers);
    rulerCorner_->setVisible(switches_.rulers);
    if (!switches_.rulers) {
        return;
    }
    const QRect view = viewport()->geometry();
    horizontalRuler_->setGeometry(view.left(), view.top() - thickness, view.width(), thickness);
    verticalRuler_->setGeometry(view.left() - thickness, view.top(), thickness, view.height());
    rulerCorner_->setGeometry(view.left() - thickness, view.top() - thickness, thickness,
                              thickness);
    rulerCorner_->setText(switches_.unit == HMKMeasurementUnit::millimetres ? tr("mm") : tr("in"));
    const QPointF origin = geometry_.toPixels(HMKPoint{0, 0});
    const double pixelsPerMillimetre = geometry_.scale * kUnitsPerMillimetre;
    horizontalRuler_->setScale(switches_.unit, origin.x(), pixelsPerMillimetre);
    verticalRuler_->setScale(switches_.unit, origin.y(), -pixelsPerMillimetre);
}

void HMKDesignCanvas::setMeasuring(bool on) {
    if (on == measuring_) {
        return;
    }
    measuring_ = on;
    if (!on) {
        measurement_.reset();
        if (gesture_ == Gesture::measure) {
            gesture_ = Gesture::none;
        }
        emit measurementChanged(QString());
    }
    viewport()->update();
    emit measuringChanged(on);
}

QString HMKDesignCanvas::measurementText() const {
    if (!measurement_) {
        return {};
    }
    return QString::fromStdString(
        measureBetween(measurement_->first, measurement_->second).text(switches_.unit));
}

void HMKDesignCanvas::paintGrid(QPainter& painter) const {
    // The finest of these spacings (in millimetres) that leaves lines at least 12 pixels apart.
    constexpr double kSpacings[] = {1, 2, 5, 10, 20, 50, 100, 200, 500};
    double spacing = kSpacings[std::size(kSpacings) - 1] * kUnitsPerMillimetre;
    for (double millimetres : kSpacings) {
        if (millimetres * kUnitsPerMillimetre * geometry_.scale >= 12) {
            spacing = millimetres * kUnitsPerMillimetre;
            break;
        }
    }
    const HMKRect visible = geometry_.visibleRegion();
    const QColor background = switches_.background;
    const QColor line = background.lightnessF() > 0.5 ? QColor(0, 0, 0) : QColor(255, 255, 255);
    QColor minor = line;
    minor.setAlphaF(0.08f);
    QColor major = line;
    major.setAlphaF(0.18f);
    const double majorSpacing = 10 * kUnitsPerMillimetre;
    const auto isMajor = [&](double value) {
        return spacing >= majorSpacing || std::fmod(std::abs(value), majorSpacing) < 1e-6;
    };
    const QSize size = viewport()->size();
    for (double x = std::ceil(visible.x / spacing) * spacing; x <= visible.x + visible.width;
         x += spacing) {
        painter.setPen(isMajor(x) ? major : minor);
        const double pixel = geometry_.toPixels(HMKPoint{x, 0}).x();
        painter.drawLine(QPointF(pixel, 0), QPointF(pixel, size.height()));
    }
    for (double y = std::ceil(visible.y / spacing) * spacing; y <= visible.y + visible.height;
         y += spacing) {
        painter.setPen(isMajor(y) ? major : minor);
        const double pixel = geometry_.toPixels(HMKPoint{0, y}).y();
        painter.drawLine(QPointF(0, pixel), QPointF(size.width(), pixel));
    }
}

void HMKDesignCanvas::paintHoop(QPainter& painter) const {
    const QRectF rect = geometry_.toPixels(hoopRect(*facts_.hoop));
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(110, 110, 110, 200), 3));
    if (facts_.hoop->isRounded()) {
        painter.drawEllipse(rect);
    } else {
        const double radius = std::min(rect.width(), rect.height()) * 0.06;
        painter.drawRoundedRect(rect, radius, radius);
    }
    painter.restore();
}

void HMKDesignCanvas::paintMarkers(QPainter& painter) const {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    if (switches_.center) {
        const QPointF origin = geometry_.toPixels(HMKPoint{0, 0});
        painter.setPen(QPen(QColor(30, 90, 200, 200), 1));
        painter.drawLine(origin - QPointF(10, 0), origin + QPointF(10, 0));
        painter.drawLine(origin - QPointF(0, 10), origin + QPointF(0, 10));
    }
    if (!facts_.empty) {
        const auto ring = [&](HMKPoint point, QColor color) {
            painter.setPen(QPen(color, 2));
            painter.setBrush(Qt::NoBrush);
            painter.drawEllipse(geometry_.toPixels(point), 6, 6);
        };
        if (switches_.first) {
            ring(facts_.firstStitch, QColor(20, 160, 60));
        }
        if (switches_.last && !stitchOut_->isActive()) {
            ring(facts_.lastStitch, QColor(210, 40, 40));
        }
    }
    painter.restore();
}

void HMKDesignCanvas::paintGesture(QPainter& painter) const {
    QRectF rect;
    if (gesture_ == Gesture::rubberBand) {
        rect = QRectF(pressPixel_, currentPixel_).normalized();
    } else if (gesture_ == Gesture::moveSelection) {
        rect = geometry_.toPixels(facts_.selectionRect).translated(currentPixel_ - pressPixel_);
    } else {
        return;
    }
    painter.save();
    QColor fill = palette().color(QPalette::Highlight);
    fill.setAlpha(40);
    painter.setBrush(fill);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 1, Qt::DashLine));
    painter.drawRect(rect);
    painter.restore();
}

// --- Mouse and keyboard ----------------------------------------------------------------------

float HMKDesignCanvas::hitTolerance() const {
    // Compared with squared distances in design units.
    const double reach = kHitPixels / geometry_.scale;
    return static_cast<float>(reach * reach);
}

void HMKDesignCanvas::mousePressEvent(QMouseEvent* event) {
    pressPixel_ = currentPixel_ = event->position();
    gestureButton_ = event->button();
    if (event->button() == Qt::MiddleButton || (event->button() == Qt::LeftButton && spaceHeld_)) {
        gesture_ = Gesture::pan;
        viewport()->setCursor(Qt::ClosedHandCursor);
        return;
    }
    if (event->button() != Qt::LeftButton) {
        return;
    }
    if (measuring_) {
        gesture_ = Gesture::measure;
        const HMKPoint at = geometry_.toDesign(pressPixel_);
        measurement_ = std::pair(at, at);
        emit measurementChanged(measurementText());
        viewport()->update();
        return;
    }
    const bool onSelection =
        event->modifiers() == Qt::NoModifier && document_.hasSelection() &&
        document_.design().isSelectedAt(geometry_.toDesign(pressPixel_), hitTolerance());
    gesture_ = onSelection ? Gesture::pressedOnSelection : Gesture::pressed;
}

void HMKDesignCanvas::mouseMoveEvent(QMouseEvent* event) {
    const QPointF previous = currentPixel_;
    currentPixel_ = event->position();
    emit pointerMoved(geometry_.toDesign(currentPixel_));
    horizontalRuler_->setPointer(currentPixel_.x());
    verticalRuler_->setPointer(currentPixel_.y());
    const bool dragged =
        (currentPixel_ - pressPixel_).manhattanLength() >= QApplication::startDragDistance();
    switch (gesture_) {
        case Gesture::pan:
            panBy(currentPixel_ - previous);
            return;
        case Gesture::measure:
            measurement_->second = geometry_.toDesign(currentPixel_);
            emit measurementChanged(measurementText());
            viewport()->update();
            return;
        case Gesture::pressed:
            if (dragged) {
                gesture_ = Gesture::rubberBand;
            }
            break;
        case Gesture::pressedOnSelection:
            if (dragged) {
                gesture_ = Gesture::moveSelection;
                viewport()->setCursor(Qt::SizeAllCursor);
            }
            break;
        case Gesture::none:
        case Gesture::rubberBand:
        case Gesture::moveSelection:
            break;
    }
    if (gesture_ == Gesture::rubberBand || gesture_ == Gesture::moveSelection) {
        viewport()->update();
    }
}

void HMKDesignCanvas::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != gestureButton_) {
        return;
    }
    currentPixel_ = event->position();
    const Gesture gesture = std::exchange(gesture_, Gesture::none);
    viewport()->setCursor(spaceHeld_ ? Qt::OpenHandCursor : Qt::CrossCursor);
    switch (gesture) {
        case Gesture::pressed:
        case Gesture::pressedOnSelection:
            finishClick(event->modifiers());
            break;
        case Gesture::rubberBand:
            finishRubberBand(event->modifiers());
            break;
        case Gesture::moveSelection: {
            const HMKPoint from = geometry_.toDesign(pressPixel_);
            const HMKPoint to = geometry_.toDesign(currentPixel_);
            document_.moveByVector({to.x - from.x, to.y - from.y});
            break;
        }
        case Gesture::measure:
            measurement_->second = geometry_.toDesign(currentPixel_);
            emit measurementChanged(measurementText());
            break;
        case Gesture::pan:
        case Gesture::none:
            break;
    }
    viewport()->update();
}

void HMKDesignCanvas::finishClick(Qt::KeyboardModifiers modifiers) {
    const bool unselect = removesFromSelection(modifiers);
    const bool adds = modifiers & Qt::ShiftModifier;
    if (!unselect && !adds) {
        document_.deselectAll();
    }
    if (selectionMode_ != HMKSelectionMode::rectangle) {
        document_.selectAt(selectionMode_, geometry_.toDesign(currentPixel_), hitTolerance(),
                           unselect);
    }
}

void HMKDesignCanvas::finishRubberBand(Qt::KeyboardModifiers modifiers) {
    const HMKRect rect = geometry_.toDesign(QRectF(pressPixel_, currentPixel_));
    const bool unselect = removesFromSelection(modifiers);
    if (!unselect && !(modifiers & Qt::ShiftModifier)) {
        document_.deselectAll();
    }
    document_.selectInRect(rect, unselect);
}

void HMKDesignCanvas::wheelEvent(QWheelEvent* event) {
    if (!(event->modifiers() & Qt::ControlModifier)) {
        QAbstractScrollArea::wheelEvent(event);
        return;
    }
    // One notch (120) zooms one step; touchpads send smaller deltas for smoother zooming.
    const double steps = event->angleDelta().y() / 120.0;
    setScale(geometry_.scale * std::pow(kZoomStep, steps), event->position());
    event->accept();
}

bool HMKDesignCanvas::viewportEvent(QEvent* event) {
    if (event->type() == QEvent::NativeGesture) {
        auto* gesture = static_cast<QNativeGestureEvent*>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            setScale(geometry_.scale * (1 + gesture->value()),
                     viewport()->mapFromGlobal(gesture->globalPosition()));
            return true;
        }
    }
    return QAbstractScrollArea::viewportEvent(event);
}

void HMKDesignCanvas::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat()) {
        spaceHeld_ = true;
        viewport()->setCursor(Qt::OpenHandCursor);
        return;
    }
    if (event->key() == Qt::Key_Escape && measurement_) {
        // Cancels the measuring drag, or clears the reading it left.
        gesture_ = Gesture::none;
        measurement_.reset();
        emit measurementChanged(QString());
        viewport()->update();
        return;
    }
    if (event->key() == Qt::Key_Escape && gesture_ != Gesture::none) {
        gesture_ = Gesture::none;
        viewport()->update();
        return;
    }
    QAbstractScrollArea::keyPressEvent(event);
}

void HMKDesignCanvas::keyReleaseEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat()) {
        spaceHeld_ = false;
        viewport()->setCursor(gesture_ == Gesture::pan ? Qt::ClosedHandCursor : Qt::CrossCursor);
        return;
    }
    QAbstractScrollArea::keyReleaseEvent(event);
}

void HMKDesignCanvas::contextMenuEvent(QContextMenuEvent* event) {
    if (contextActions_.isEmpty()) {
        return;
    }
    QMenu menu(this);
    for (QAction* action : contextActions_) {
        if (action) {
            menu.addAction(action);
        } else {
            menu.addSeparator();
        }
    }
    menu.exec(event->globalPos());
}

void HMKDesignCanvas::leaveEvent(QEvent* event) {
    emit pointerMoved(std::nullopt);
    horizontalRuler_->setPointer(std::nullopt);
    verticalRuler_->setPointer(std::nullopt);
    QAbstractScrollArea::leaveEvent(event);
}
