#include "render/raster_context.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace {

// Curves are flattened so that no point strays further than this from them, in pixels.
constexpr double kFlatteningTolerance = 0.1;
constexpr double kWidestFlatteningStep = std::numbers::pi / 4;
// Entries of a gradient's colour table.
constexpr int kGradientTableSize = 1024;
// A dash pattern whose period is shorter than this many pixels is drawn as a solid line
// made as much fainter as the gaps would have left uncovered.
constexpr double kFinestDashPeriod = 1.0;

// A colour component through 16 bits to 8, rounding as a 16-bit colour store would.
std::uint32_t componentByte(double value) {
    const float unit = static_cast<float>(std::clamp(value, 0.0, 1.0));
    const auto wide = static_cast<std::uint32_t>(unit * 65535.0f + 0.5f);
    return (wide - (wide >> 8) + 0x80) >> 8;
}

std::uint32_t premultiply(std::uint32_t straight) {
    const std::uint32_t alpha = straight >> 24;
    std::uint32_t t = (straight & 0xff00ff) * alpha;
    t = (t + ((t >> 8) & 0xff00ff) + 0x800080) >> 8;
    t &= 0xff00ff;
    std::uint32_t g = ((straight >> 8) & 0xff) * alpha;
    g = (g + ((g >> 8) & 0xff) + 0x80);
    g &= 0xff00;
    return g | t | (alpha << 24);
}

// Coverage 0..1 as the 0..255 weight of a pixel: 256 steps, full coverage capped at 255.
inline std::uint32_t coverageWeight(float coverage) {
    return std::min<std::uint32_t>(255, static_cast<std::uint32_t>(coverage * 256.0f));
}

// Flattened curves put their inner points this much further out than the radius, so that
// the chords lie as much outside the curve as inside and the area comes out right.
double outwardFactor(double step) {
    return 2 / (1 + std::cos(step / 2));
}

}  // namespace

HMKRaster::HMKRaster(int width, int height)
    : width(std::max(width, 0)),
      height(std::max(height, 0)),
      pixels(static_cast<std::size_t>(this->width) * this->height, 0) {}

std::uint32_t premultipliedPixel(const HMKRgba& color) {
    return premultiply(componentByte(color.alpha) << 24 | componentByte(color.red) << 16 |
                       componentByte(color.green) << 8 | componentByte(color.blue));
}

std::array<std::uint8_t, 4> straightComponents(std::uint32_t pixel) {
    const std::uint32_t alpha = pixel >> 24;
    auto component = [&](int shift) -> std::uint8_t {
        const std::uint32_t value = (pixel >> shift) & 0xff;
        if (alpha == 0 || alpha == 255) {
            return static_cast<std::uint8_t>(alpha == 0 ? 0 : value);
        }
        const std::uint32_t inverse = (0xffu << 16) / alpha;
        return static_cast<std::uint8_t>(
            std::min<std::uint32_t>(255, (value * inverse + 0x8000) >> 16));
    };
    return {component(16), component(8), component(0), static_cast<std::uint8_t>(alpha)};
}

HMKRasterContext::HMKRasterContext(HMKRasterTarget target, const HMKAffineTransform& userToPixels)
    : target_(target), transform_(userToPixels) {
    if (!target_.pixels) {
        target_.width = target_.height = 0;
    }
    deviceScale_ = std::sqrt(std::abs(transform_.a * transform_.d - transform_.b * transform_.c));
    rasterizer_.setClip(0, 0, target_.width, target_.height);
}

HMKRasterContext::~HMKRasterContext() {
    paintWaitingStroke();
}

void HMKRasterContext::paintWaitingStroke() {
    if (!waiting_.active) {
        return;
    }
    waiting_.active = false;
    if (cancelled()) {
        return;
    }
    rasterizer_.beginShape();
    addSegmentOutline(waiting_.from, waiting_.to, waiting_.width / 2, waiting_.roundCap, 0);
    paintShape(waiting_.color, 1);
}

// --- State -------------------------------------------------------------------------------

void HMKRasterContext::saveState() {
    paintWaitingStroke();
    stack_.push_back(state_);
}

void HMKRasterContext::restoreState() {
    paintWaitingStroke();
    if (stack_.empty()) {
        return;
    }
    state_ = std::move(stack_.back());
    stack_.pop_back();
}

void HMKRasterContext::setRoundLineCap() {
    state_.roundCap = true;
}

void HMKRasterContext::setLineWidth(double width) {
    state_.lineWidth = width;
}

void HMKRasterContext::setLineDash(const std::vector<double>& pattern) {
    if (state_.dash != pattern) {
        state_.dash = pattern;
    }
}

void HMKRasterContext::setStrokeColor(const HMKRgba& color) {
    state_.strokeColor = premultipliedPixel(color);
}

void HMKRasterContext::setFillColor(const HMKRgba& color) {
    state_.fillColor = premultipliedPixel(color);
}

// --- Path --------------------------------------------------------------------------------

HMKRasterContext::Point HMKRasterContext::toDevice(Point p) const {
    return {transform_.a * p.x + transform_.c * p.y + transform_.tx,
            transform_.b * p.x + transform_.d * p.y + transform_.ty};
}

void HMKRasterContext::moveTo(double x, double y) {
    subpaths_.push_back({points_.size(), false});
    points_.push_back({x, y});
}

void HMKRasterContext::lineTo(double x, double y) {
    ensureCurrentPoint({x, y});
    points_.push_back({x, y});
}

// A line needs an open subpath to continue; after a closed one it starts again at that
// subpath's first point, and with no path at all the point only becomes the current one.
void HMKRasterContext::ensureCurrentPoint(Point p) {
    if (subpaths_.empty()) {
        subpaths_.push_back({points_.size(), false});
        points_.push_back(p);
    } else if (subpaths_.back().closed) {
        const Point first = points_[subpaths_.back().first];
        subpaths_.push_back({points_.size(), false});
        points_.push_back(first);
    }
}

int HMKRasterContext::arcSegments(double radius, double sweep) const {
    // However small, a curve keeps a few segments: the round ends of thin stitches add up
    // to visible ink when thousands of them are drawn into a few pixels.
    const double fewest = std::ceil(std::abs(sweep) / kWidestFlatteningStep);
    const double deviceRadius = std::abs(radius) * deviceScale_;
    if (!(deviceRadius > kFlatteningTolerance)) {
        return static_cast<int>(std::clamp(fewest, 1.0, 1024.0));
    }
    const double step = 2 * std::acos(1 - kFlatteningTolerance / deviceRadius);
    return static_cast<int>(
        std::clamp(std::max(fewest, std::ceil(std::abs(sweep) / step)), 1.0, 1024.0));
}

void HMKRasterContext::addArc(double centerX, double centerY, double radius, double startAngle,
                              double endAngle, bool clockwise) {
    const double sweep = arcSweep(startAngle, endAngle, clockwise);
    const Point start{centerX + radius * std::cos(startAngle),
                      centerY + radius * std::sin(startAngle)};
    if (subpaths_.empty() || subpaths_.back().closed) {
        moveTo(start.x, start.y);
    } else {
        points_.push_back(start);
    }
    const int segments = arcSegments(radius, sweep);
    const double outer = radius * outwardFactor(sweep / segments);
    for (int k = 1; k <= segments; ++k) {
        const double angle = startAngle + sweep * k / segments;
        const double reach = k == segments ? radius : outer;
        points_.push_back({centerX + reach * std::cos(angle), centerY + reach * std::sin(angle)});
    }
}

void HMKRasterContext::addRect(double x, double y, double width, double height) {
    subpaths_.push_back({points_.size(), true});
    points_.insert(points_.end(),
                   {{x, y}, {x + width, y}, {x + width, y + height}, {x, y + height}});
}

void HMKRasterContext::clearPath() {
    points_.clear();
    subpaths_.clear();
}

// Every subpath of the path as a closed device-space polygon, into the rasterizer.
void HMKRasterContext::addDevicePolygonOfPath(const std::vector<Point>& points,
                                              const std::vector<Subpath>& subpaths) {
    for (std::size_t s = 0; s < subpaths.size(); ++s) {
        const std::size_t first = subpaths[s].first;
        const std::size_t end = s + 1 < subpaths.size() ? subpaths[s + 1].first : points.size();
        polygon_.clear();
        for (std::size_t i = first; i < end; ++i) {
            const Point device = toDevice(points[i]);
            polygon_.push_back(device.x);
            polygon_.push_back(device.y);
        }
        rasterizer_.addPolygon(polygon_.data(), static_cast<int>(end - first));
    }
}

// --- Strokes -----------------------------------------------------------------------------

// The outline of one stroked segment, made in user space (so the pen follows the transform)
// and added in device space: a rectangle along the segment with a half circle at each end
// when the cap is round.
void HMKRasterContext::addSegmentOutline(Point from, Point to, double halfWidth, bool roundCap,
                                         int layer) {
    const double dx = to.x - from.x;
    const double dy = to.y - from.y;
    const double length = std::hypot(dx, dy);
    const int capSegments = roundCap ? arcSegments(halfWidth, std::numbers::pi) : 1;
    const double outer = outwardFactor(std::numbers::pi / capSegments);
    polygon_.clear();
    auto add = [&](double x, double y) {
        const Point device = toDevice({x, y});
        polygon_.push_back(device.x);
        polygon_.push_back(device.y);
    };
    if (!(length > 0)) {
        // A point: a round cap makes it a dot, a flat one nothing.
        if (roundCap) {
            for (int k = 0; k < 2 * capSegments; ++k) {
                const double angle = std::numbers::pi * k / capSegments;
                add(from.x + outer * halfWidth * std::cos(angle),
                    from.y + outer * halfWidth * std::sin(angle));
            }
            rasterizer_.addPolygon(polygon_.data(), 2 * capSegments, layer);
        }
        return;
    }
    const double ux = dx / length * halfWidth;
    const double uy = dy / length * halfWidth;
    const double nx = -uy;
    const double ny = ux;
    add(from.x + nx, from.y + ny);
    add(to.x + nx, to.y + ny);
    const std::vector<Point>& cap = capTurns(capSegments);
    for (int k = 1; k < capSegments && roundCap; ++k) {
        const double c = outer * cap[k].x;
        const double s = outer * cap[k].y;
        add(to.x + nx * c + ux * s, to.y + ny * c + uy * s);
    }
    add(to.x - nx, to.y - ny);
    add(from.x - nx, from.y - ny);
    for (int k = 1; k < capSegments && roundCap; ++k) {
        const double c = outer * cap[k].x;
        const double s = outer * cap[k].y;
        add(from.x - nx * c - ux * s, from.y - ny * c - uy * s);
    }
    rasterizer_.addPolygon(polygon_.data(), static_cast<int>(polygon_.size() / 2), layer);
}

// Cosine and sine of k / segments of a half turn, for k = 0 .. segments; the last table is
// kept, as every stitch of a thread has the same width.
const std::vector<HMKRasterContext::Point>& HMKRasterContext::capTurns(int segments) {
    if (static_cast<int>(capTurns_.size()) != segments + 1) {
        capTurns_.resize(static_cast<std::size_t>(segments) + 1);
        for (int k = 0; k <= segments; ++k) {
            const double angle = std::numbers::pi * k / segments;
            capTurns_[static_cast<std::size_t>(k)] = {std::cos(angle), std::sin(angle)};
        }
    }
    return capTurns_;
}

// The thinnest line the device can draw: one pixel across its major axis, whatever the
// transform.
void HMKRasterContext::addHairline(Point from, Point to) {
    const Point a = toDevice(from);
    const Point b = toDevice(to);
    const bool mostlyHorizontal = std::abs(b.x - a.x) >= std::abs(b.y - a.y);
    const double offsetX = mostlyHorizontal ? 0 : 0.5;
    const double offsetY = mostlyHorizontal ? 0.5 : 0;
    const double quad[8] = {a.x - offsetX, a.y - offsetY, b.x - offsetX, b.y - offsetY,
                            b.x + offsetX, b.y + offsetY, a.x + offsetX, a.y + offsetY};
    rasterizer_.addPolygon(quad, 4);
}

void HMKRasterContext::strokeSegmentDashed(Point from, Point to, double& dashPhase) {
    const bool hairline = !(state_.lineWidth > 0);
    const double halfWidth = state_.lineWidth / 2;
    auto piece = [&](Point a, Point b) {
        if (hairline) {
            addHairline(a, b);
        } else {
            addSegmentOutline(a, b, halfWidth, state_.roundCap);
        }
    };
    const std::vector<double>& dash = state_.dash;
    double period = 0;
    for (double length : dash) {
        period += std::max(length, 0.0);
    }
    // An odd pattern repeats with dashes and gaps swapped, as two rounds of it.
    const std::size_t entries = dash.size() % 2 == 0 ? dash.size() : 2 * dash.size();
    if (dash.size() % 2 != 0) {
        period *= 2;
    }
    if (dash.empty() || !(period > 0)) {
        piece(from, to);
        return;
    }
    // Hairline dashes are measured in pixels, others in user units.
    const Point deviceFrom = toDevice(from);
    const Point deviceTo = toDevice(to);
    const double deviceLength = std::hypot(deviceTo.x - deviceFrom.x, deviceTo.y - deviceFrom.y);
    const double length = hairline ? deviceLength : std::hypot(to.x - from.x, to.y - from.y);
    if (!(length > 0)) {
        return;
    }
    // Only the part of the segment that can reach the target is cut into dashes.
    const double reach = halfWidth * deviceScale_ + 2;
    double enter = 0;
    double leave = 1;
    const double deltas[2] = {deviceTo.x - deviceFrom.x, deviceTo.y - deviceFrom.y};
    const double starts[2] = {deviceFrom.x, deviceFrom.y};
    const double limits[2] = {double(target_.width), double(target_.height)};
    for (int axis = 0; axis < 2; ++axis) {
        const double low = -reach - starts[axis];
        const double high = limits[axis] + reach - starts[axis];
        if (deltas[axis] == 0) {
            if (low > 0 || high < 0) {
                dashPhase += length;
                return;
            }
            continue;
        }
        double t0 = low / deltas[axis];
        double t1 = high / deltas[axis];
        if (t0 > t1) {
            std::swap(t0, t1);
        }
        enter = std::max(enter, t0);
        leave = std::min(leave, t1);
    }
    if (enter >= leave) {
        dashPhase += length;
        return;
    }
    auto at = [&](double t) {
        return Point{from.x + (to.x - from.x) * t, from.y + (to.y - from.y) * t};
    };
    double position = enter * length;
    const double end = leave * length;
    double phase = std::fmod(dashPhase + position, period);
    std::size_t index = 0;
    while (phase >= std::max(dash[index % dash.size()], 0.0) && index + 1 < entries) {
        phase -= std::max(dash[index % dash.size()], 0.0);
        ++index;
    }
    while (position < end) {
        const double entry = std::max(dash[index % dash.size()], 0.0);
        const double step = std::min(entry - phase, end - position);
        if (index % 2 == 0 && step > 0) {
            piece(at(position / length), at((position + step) / length));
        }
        position += std::max(step, 0.0);
        phase += std::max(step, 0.0);
        if (phase >= entry) {
            phase = 0;
            index = (index + 1) % entries;
        }
    }
    dashPhase += length;
}

void HMKRasterContext::strokePath() {
    if (cancelled() || points_.empty()) {
        clearPath();
        return;
    }
    const bool hairline = !(state_.lineWidth > 0);
    const bool thin = transform_.b == 0 && transform_.c == 0 &&
                      (hairline || state_.lineWidth * deviceScale_ <= 1);
    // A stitch is an outline stroke and a narrower core along the same segment: the outline
    // waits for the core, and both are painted in one pass.
    if (subpaths_.size() == 1 && points_.size() == 2 && !subpaths_[0].closed &&
        state_.dash.empty() && !thin && !hairline && state_.pendingClip < 0) {
        const Point from = points_[0];
        const Point to = points_[1];
        clearPath();
        if (waiting_.active && waiting_.from.x == from.x && waiting_.from.y == from.y &&
            waiting_.to.x == to.x && waiting_.to.y == to.y &&
            waiting_.roundCap == state_.roundCap && state_.lineWidth <= waiting_.width) {
            waiting_.active = false;
            rasterizer_.beginShape();
            addSegmentOutline(from, to, waiting_.width / 2, waiting_.roundCap, 0);
            addSegmentOutline(from, to, state_.lineWidth / 2, state_.roundCap, 1);
            paintTwoLayers(waiting_.color, state_.strokeColor);
            return;
        }
        paintWaitingStroke();
        waiting_ = {true, from, to, state_.lineWidth, state_.roundCap, state_.strokeColor};
        return;
    }
    paintWaitingStroke();
    applyPendingClip();
    rasterizer_.beginShape();
    // Dashes finer than a pixel become a fainter solid line.
    float coverageScale = 1;
    bool dashed = !state_.dash.empty();
    if (dashed) {
        double on = 0;
        double period = 0;
        const std::size_t entries =
            state_.dash.size() % 2 == 0 ? state_.dash.size() : 2 * state_.dash.size();
        for (std::size_t i = 0; i < entries; ++i) {
            const double length = std::max(state_.dash[i % state_.dash.size()], 0.0);
            period += length;
            on += i % 2 == 0 ? length : 0;
        }
        if (!(period > 0)) {
            dashed = false;
        } else if (period * deviceScale_ < kFinestDashPeriod) {
            coverageScale = static_cast<float>(on / period);
            dashed = false;
        }
    }
    const float opacity =
        coverageScale * (hairline ? 1.0f : static_cast<float>(state_.lineWidth * deviceScale_));
    for (std::size_t s = 0; s < subpaths_.size(); ++s) {
        const std::size_t first = subpaths_[s].first;
        const std::size_t end = s + 1 < subpaths_.size() ? subpaths_[s + 1].first : points_.size();
        const std::size_t count = end - first;
        const std::size_t segments = subpaths_[s].closed ? count : count - 1;
        double dashPhase = 0;
        for (std::size_t i = 0; i < segments && count > 1; ++i) {
            const Point from = points_[first + i];
            const Point to = points_[first + (i + 1) % count];
            if (thin) {
                if (!dashed) {
                    dashPhase = -1;
                }
                drawThinLine(from, to, opacity, dashPhase);
            } else if (dashed) {
                strokeSegmentDashed(from, to, dashPhase);
            } else if (hairline) {
                addHairline(from, to);
            } else {
                addSegmentOutline(from, to, state_.lineWidth / 2, state_.roundCap);
            }
            // Joins are round: a dot where the next segment turns away.
            if (!thin && !hairline && !state_.roundCap && !dashed && (i + 1 < segments)) {
                addSegmentOutline(to, to, state_.lineWidth / 2, true);
            }
        }
    }
    clearPath();
    if (!thin) {
        paintShape(state_.strokeColor, coverageScale);
    }
}

// A line one pixel across its major axis: each pixel column (or row, for steep lines) is
// shared by the two pixels nearest the line, the end columns by how much of them the line
// reaches. Dashes are cut per column. dashPhase below 0 means solid.
void HMKRasterContext::drawThinLine(Point from, Point to, float opacity, double& dashPhase) {
    Point a = toDevice(from);
    Point b = toDevice(to);
    // The major axis is chosen on a 1/64 pixel grid, so that lines at 45 degrees count as
    // horizontal whichever way rounding went.
    auto grid = [](double value) { return std::round(value * 64); };
    const bool steep = std::abs(grid(b.y) - grid(a.y)) > std::abs(grid(b.x) - grid(a.x));
    if (steep) {
        std::swap(a.x, a.y);
        std::swap(b.x, b.y);
    }
    const double major = b.x - a.x;
    if (major == 0) {
        return;
    }
    const double slope = (b.y - a.y) / major;
    // Dashes are cut per column, so their lengths are counted along the major axis.
    const double dashStart = dashPhase;
    if (dashPhase >= 0) {
        dashPhase += std::abs(major) / deviceScale_;
    }
    const double direction = major > 0 ? 1 : -1;
    // Round and square ends reach half a pixel past the end points.
    const double extension = state_.roundCap ? 0.5 : 0.0;
    const double startMajor = a.x - direction * extension;
    const double endMajor = b.x + direction * extension;
    const double low = std::min(startMajor, endMajor);
    const double high = std::max(startMajor, endMajor);
    const int majorLimit = steep ? target_.height : target_.width;
    const int minorLimit = steep ? target_.width : target_.height;
    const int firstColumn = std::max(0, static_cast<int>(std::floor(std::max(low, -1.0))));
    const int lastColumn = std::min(
        majorLimit - 1, static_cast<int>(std::ceil(std::min(high, double(majorLimit)))) - 1);
    const double sampleShift = std::round(low) - std::floor(low);
    const ClipMask* mask = state_.mask.get();
    double periodLength = 0;
    if (dashStart >= 0) {
        const std::size_t entries =
            state_.dash.size() % 2 == 0 ? state_.dash.size() : 2 * state_.dash.size();
        for (std::size_t i = 0; i < entries; ++i) {
            periodLength += std::max(state_.dash[i % state_.dash.size()], 0.0);
        }
    }
    auto dashIsOn = [&](double along) {
        double position = std::fmod(dashStart + along, periodLength);
        const std::size_t entries =
            state_.dash.size() % 2 == 0 ? state_.dash.size() : 2 * state_.dash.size();
        for (std::size_t i = 0; i < entries; ++i) {
            const double length = std::max(state_.dash[i % state_.dash.size()], 0.0);
            if (position < length) {
                return i % 2 == 0;
            }
            position -= length;
        }
        return false;
    };
    auto blend = [&](int column, int row, float coverage) {
        if (row < 0 || row >= minorLimit) {
            return;
        }
        const int x = steep ? row : column;
        const int y = steep ? column : row;
        std::uint32_t weight = coverageWeight(coverage);
        if (mask) {
            if (x < mask->left || y < mask->top || x >= mask->left + mask->width ||
                y >= mask->top + mask->height) {
                return;
            }
            weight =
                (weight * mask->coverage[static_cast<std::size_t>(y - mask->top) * mask->width +
                                         (x - mask->left)] +
                 127) /
                255;
        }
        if (weight != 0) {
            std::uint32_t& pixel = target_.pixels[static_cast<std::size_t>(y) * target_.stride + x];
            pixel = blendPixelOver(pixel, state_.strokeColor, weight);
        }
    };
    for (int column = firstColumn; column <= lastColumn; ++column) {
        const double covered = std::min(column + 1.0, high) - std::max(double(column), low);
        if (!(covered > 0)) {
            continue;
        }
        if (dashStart >= 0 && periodLength > 0) {
            const double along = std::abs(column + 0.5 - startMajor) / deviceScale_;
            if (!dashIsOn(along)) {
                continue;
            }
        }
        // The line is sampled on a grid of whole pixels that starts where its first end
        // rounds to, and shared by the two pixels whose centres it passes between.
        const double minor = a.y + (column + sampleShift - a.x) * slope - 0.5;
        const double rowFloor = std::floor(minor);
        const float below = static_cast<float>(minor - rowFloor);
        const float weight = static_cast<float>(covered) * opacity;
        const int row = static_cast<int>(std::clamp(rowFloor, -2.0, double(minorLimit) + 1));
        blend(column, row, weight * (1 - below));
        blend(column, row + 1, weight * below);
    }
}

void HMKRasterContext::fillPath() {
    paintWaitingStroke();
    if (cancelled() || points_.empty()) {
        clearPath();
        return;
    }
    applyPendingClip();
    rasterizer_.beginShape();
    addDevicePolygonOfPath(points_, subpaths_);
    clearPath();
    paintShape(state_.fillColor, 1);
}

// --- Clipping ----------------------------------------------------------------------------

void HMKRasterContext::clipToPath() {
    paintWaitingStroke();
    // A second clip before the first was used has to intersect it for real.
    applyPendingClip();
    const std::size_t level = stack_.size();
    if (pendingClips_.size() <= level) {
        pendingClips_.resize(level + 1);
    }
    std::vector<double>& edges = pendingClips_[level];
    edges.clear();
    for (std::size_t s = 0; s < subpaths_.size(); ++s) {
        const std::size_t first = subpaths_[s].first;
        const std::size_t end = s + 1 < subpaths_.size() ? subpaths_[s + 1].first : points_.size();
        // Polygons are stored one after the other, each behind its point count.
        edges.push_back(static_cast<double>(end - first));
        for (std::size_t i = first; i < end; ++i) {
            const Point device = toDevice(points_[i]);
            edges.push_back(device.x);
            edges.push_back(device.y);
        }
    }
    state_.pendingClip = static_cast<int>(level);
    clearPath();
}

void HMKRasterContext::applyPendingClip() {
    if (state_.pendingClip < 0) {
        return;
    }
    const std::vector<double>& stored = pendingClips_[static_cast<std::size_t>(state_.pendingClip)];
    state_.pendingClip = -1;
    rasterizer_.beginShape();
    for (std::size_t i = 0; i < stored.size();) {
        const int count = static_cast<int>(stored[i]);
        rasterizer_.addPolygon(stored.data() + i + 1, count);
        i += 1 + 2 * static_cast<std::size_t>(count);
    }
    auto mask = std::make_shared<ClipMask>();
    const std::shared_ptr<const ClipMask> outer = state_.mask;
    if (outer) {
        rasterizer_.setClip(outer->left, outer->top, outer->left + outer->width,
                            outer->top + outer->height);
    }
    bool started = false;
    rasterizer_.sweep([&](const HMKCoverageSpan& span) {
        if (!started) {
            // The mask spans the shape's rows and the whole clip's width.
            mask->left = outer ? outer->left : 0;
            mask->width = outer ? outer->width : target_.width;
            mask->top = rasterizer_.top();
            mask->height = rasterizer_.bottom() - rasterizer_.top();
            mask->coverage.assign(static_cast<std::size_t>(mask->width) * mask->height, 0);
            started = true;
        }
        std::uint8_t* row =
            mask->coverage.data() + static_cast<std::size_t>(span.y - mask->top) * mask->width;
        const int right = mask->left + mask->width;
        for (int x = span.x; x < right; ++x) {
            const int i = x - span.x;
            const float coverage = i < span.length ? span.coverage[i] : span.rest;
            std::uint32_t weight = coverageWeight(coverage);
            if (outer) {
                const std::uint32_t outerWeight =
                    outer->coverage[static_cast<std::size_t>(span.y - outer->top) * outer->width +
                                    (x - outer->left)];
                weight = (weight * outerWeight + 127) / 255;
            }
            row[x - mask->left] = static_cast<std::uint8_t>(weight);
            if (i >= span.length && span.rest == 0) {
                break;
            }
        }
    });
    rasterizer_.setClip(0, 0, target_.width, target_.height);
    // An empty mask clips everything away.
    state_.mask = std::move(mask);
}

// --- Painting ----------------------------------------------------------------------------

namespace {

// A weight cut down by the clip mask's coverage of the pixel (clip), if there is a mask.
std::uint32_t clipped(std::uint32_t weight, const std::uint8_t* clip) {
    return clip ? (weight * *clip + 127) / 255 : weight;
}

}  // namespace

template <typename Paint>
void HMKRasterContext::sweepWithinClip(Paint&& paint) {
    const ClipMask* mask = state_.mask.get();
    if (mask) {
        rasterizer_.setClip(mask->left, mask->top, mask->left + mask->width,
                            mask->top + mask->height);
    }
    const int right = mask ? mask->left + mask->width : target_.width;
    rasterizer_.sweep([&](const HMKCoverageSpan& span) {
        std::uint32_t* row = target_.pixels + static_cast<std::size_t>(span.y) * target_.stride;
        const std::uint8_t* maskRow =
            mask
                ? mask->coverage.data() + static_cast<std::size_t>(span.y - mask->top) * mask->width
                : nullptr;
        auto at = [&](int x, float coverage, float inner) {
            paint(row[x], x, span.y, coverage, inner,
                  maskRow ? maskRow + (x - mask->left) : nullptr);
        };
        for (int i = 0; i < span.length; ++i) {
            at(span.x + i, span.coverage[i], span.inner ? span.inner[i] : 0.0f);
        }
        if (span.rest > 0 || span.innerRest > 0) {
            for (int x = span.x + span.length; x < right; ++x) {
                at(x, span.rest, span.innerRest);
            }
        }
    });
    if (mask) {
        rasterizer_.setClip(0, 0, target_.width, target_.height);
    }
}

void HMKRasterContext::paintShape(std::uint32_t color, float coverageScale) {
    if (!state_.mask && coverageScale == 1) {
        // The common case, kept free of per-pixel tests it does not need.
        rasterizer_.sweep([&](const HMKCoverageSpan& span) {
            std::uint32_t* row =
                target_.pixels + static_cast<std::size_t>(span.y) * target_.stride + span.x;
            for (int i = 0; i < span.length; ++i) {
                const std::uint32_t weight = coverageWeight(span.coverage[i]);
                if (weight != 0) {
                    row[i] = blendPixelOver(row[i], color, weight);
                }
            }
            if (span.rest > 0) {
                const std::uint32_t weight = coverageWeight(span.rest);
                for (int x = span.x + span.length; x < target_.width && weight != 0; ++x) {
                    row[x - span.x] = blendPixelOver(row[x - span.x], color, weight);
                }
            }
        });
        return;
    }
    sweepWithinClip(
        [&](std::uint32_t& pixel, int, int, float coverage, float, const std::uint8_t* clip) {
            const std::uint32_t weight = clipped(coverageWeight(coverage * coverageScale), clip);
            if (weight != 0) {
                pixel = blendPixelOver(pixel, color, weight);
            }
        });
}

// The outline and the core of a stitch in one pass, the core drawn over the outline as two
// strokes would be.
void HMKRasterContext::paintTwoLayers(std::uint32_t outer, std::uint32_t inner) {
    sweepWithinClip([&](std::uint32_t& pixel, int, int, float outerCoverage, float innerCoverage,
                        const std::uint8_t* clip) {
        const std::uint32_t outerWeight = clipped(coverageWeight(outerCoverage), clip);
        const std::uint32_t innerWeight = clipped(coverageWeight(innerCoverage), clip);
        if (outerWeight != 0 || innerWeight != 0) {
            pixel = blendPixelOver(blendPixelOver(pixel, outer, outerWeight), inner, innerWeight);
        }
    });
}

void HMKRasterContext::drawLinearGradient(const HMKGradient& gradient, double startX, double startY,
                                          double endX, double endY) {
    if (cancelled() || (startX == endX && startY == endY) || gradient.colors.empty()) {
        return;
    }
    const bool wholeClip = state_.pendingClip < 0;
    if (!wholeClip) {
        rasterizer_.beginShape();
        const std::vector<double>& stored =
            pendingClips_[static_cast<std::size_t>(state_.pendingClip)];
        for (std::size_t i = 0; i < stored.size();) {
            const int count = static_cast<int>(stored[i]);
            rasterizer_.addPolygon(stored.data() + i + 1, count);
            i += 1 + 2 * static_cast<std::size_t>(count);
        }
    }
    paintGradientShape(gradient, {startX, startY}, {endX, endY}, wholeClip);
}

void HMKRasterContext::paintGradientShape(const HMKGradient& gradient, Point start, Point end,
                                          bool wholeClip) {
    if (!(gradient == lastGradient_) || gradientTable_.empty()) {
        lastGradient_ = gradient;
        gradientTable_.assign(kGradientTableSize, 0);
        // Stops in ascending order within 0..1, as premultiplied components.
        std::vector<std::pair<double, std::array<double, 4>>> stops;
        const std::vector<double> locations = gradientStopLocations(gradient);
        for (std::size_t i = 0; i < gradient.colors.size(); ++i) {
            const double location = locations[i];
            const std::uint32_t pixel = premultipliedPixel(gradient.colors[i]);
            stops.push_back({location,
                             {double(pixel >> 24), double((pixel >> 16) & 0xff),
                              double((pixel >> 8) & 0xff), double(pixel & 0xff)}});
        }
        std::size_t next = 0;
        for (int i = 0; i < kGradientTableSize; ++i) {
            const double position = double(i) / (kGradientTableSize - 1);
            while (next < stops.size() && stops[next].first < position) {
                ++next;
            }
            std::array<double, 4> value;
            if (next == 0) {
                value = stops.front().second;
            } else if (next == stops.size()) {
                value = stops.back().second;
            } else {
                const auto& [a, low] = stops[next - 1];
                const auto& [b, high] = stops[next];
                const double f = b > a ? (position - a) / (b - a) : 1;
                for (int c = 0; c < 4; ++c) {
                    value[c] = low[c] + (high[c] - low[c]) * f;
                }
            }
            std::uint32_t pixel = 0;
            for (int c = 0; c < 4; ++c) {
                pixel |= static_cast<std::uint32_t>(std::lround(value[c])) << (24 - 8 * c);
            }
            gradientTable_[static_cast<std::size_t>(i)] = pixel;
        }
    }
    // The gradient's position as an affine function of the device pixel: user space is
    // found through the inverse transform and projected onto the gradient's axis.
    const HMKAffineTransform& m = transform_;
    const double determinant = m.a * m.d - m.b * m.c;
    const double axisX = end.x - start.x;
    const double axisY = end.y - start.y;
    const double axisSquared = axisX * axisX + axisY * axisY;
    if (determinant == 0 || !(axisSquared > 0)) {
        return;
    }
    const double perX = (m.d * axisX - m.b * axisY) / (determinant * axisSquared);
    const double perY = (-m.c * axisX + m.a * axisY) / (determinant * axisSquared);
    // User-space point of the device origin, then its position along the axis.
    const double originX = (-m.d * m.tx + m.c * m.ty) / determinant;
    const double originY = (m.b * m.tx - m.a * m.ty) / determinant;
    const double atOrigin =
        ((originX - start.x) * axisX + (originY - start.y) * axisY) / axisSquared;
    auto colorAt = [&](int x, int y) {
        const double t = atOrigin + perX * (x + 0.5) + perY * (y + 0.5);
        const double index =
            std::clamp(t * (kGradientTableSize - 1) + 0.5, 0.0, double(kGradientTableSize - 1));
        return gradientTable_[static_cast<std::size_t>(index)];
    };

    const ClipMask* mask = state_.mask.get();
    if (wholeClip) {
        const int left = mask ? mask->left : 0;
        const int top = mask ? mask->top : 0;
        const int width = mask ? mask->width : target_.width;
        const int height = mask ? mask->height : target_.height;
        for (int y = top; y < top + height; ++y) {
            std::uint32_t* row = target_.pixels + static_cast<std::size_t>(y) * target_.stride;
            for (int x = left; x < left + width; ++x) {
                const std::uint32_t weight =
                    mask ? mask->coverage[static_cast<std::size_t>(y - top) * width + (x - left)]
                         : 255;
                if (weight != 0) {
                    row[x] = blendPixelOver(row[x], colorAt(x, y), weight);
                }
            }
        }
        return;
    }
    sweepWithinClip(
        [&](std::uint32_t& pixel, int x, int y, float coverage, float, const std::uint8_t* clip) {
            const std::uint32_t weight = clipped(coverageWeight(coverage), clip);
            if (weight != 0) {
                pixel = blendPixelOver(pixel, colorAt(x, y), weight);
            }
        });
}
