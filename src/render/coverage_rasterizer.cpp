// Signed-area accumulation: every edge adds, to the cells of each pixel row it crosses, the
// share of the row's height it covers to the left of each cell boundary; a running sum along
// the row then gives the exact area coverage of every pixel. Edge parts left of the clip
// count as vertical edges on its left side, parts right of it change nothing visible.
#include "render/coverage_rasterizer.h"

#include <algorithm>
#include <cmath>
#include <utility>

void HMKCoverageRasterizer::setClip(int left, int top, int right, int bottom) {
    clipLeft_ = left;
    clipTop_ = top;
    clipRight_ = std::max(left, right);
    clipBottom_ = std::max(top, bottom);
}

void HMKCoverageRasterizer::beginShape() {
    edges_.clear();
    twoLayers_ = false;
}

void HMKCoverageRasterizer::addEdge(double x0, double y0, double x1, double y1, int layer) {
    // Horizontal edges add nothing; edges with a non-finite end would poison the sums.
    if (y0 == y1 || !std::isfinite(x0) || !std::isfinite(y0) || !std::isfinite(x1) ||
        !std::isfinite(y1)) {
        return;
    }
    if (edges_.empty()) {
        minX_ = maxX_ = x0;
        minY_ = maxY_ = y0;
    }
    minX_ = std::min({minX_, x0, x1});
    maxX_ = std::max({maxX_, x0, x1});
    minY_ = std::min({minY_, y0, y1});
    maxY_ = std::max({maxY_, y0, y1});
    twoLayers_ = twoLayers_ || layer != 0;
    edges_.push_back({x0, y0, x1, y1, layer != 0 ? 1 : 0});
}

void HMKCoverageRasterizer::addPolygon(const double* xy, int count, int layer) {
    for (int i = 0; i < count; ++i) {
        const int next = i + 1 == count ? 0 : i + 1;
        addEdge(xy[2 * i], xy[2 * i + 1], xy[2 * next], xy[2 * next + 1], layer);
    }
}

bool HMKCoverageRasterizer::prepare() {
    if (edges_.empty()) {
        return false;
    }
    // Shapes far outside the clip are cut before the conversion to int can overflow.
    auto limit = [](double value, int low, int high) {
        return static_cast<int>(std::clamp(value, double(low), double(high)));
    };
    left_ = limit(std::floor(minX_), clipLeft_, clipRight_);
    // One pixel past the rightmost edge, so that edges lying on a pixel boundary still close
    // the shape inside the cells.
    right_ = limit(std::floor(maxX_) + 1, clipLeft_, clipRight_);
    top_ = limit(std::floor(minY_), clipTop_, clipBottom_);
    bottom_ = limit(std::ceil(maxY_), clipTop_, clipBottom_);
    if (right_ <= left_ || bottom_ <= top_ || maxX_ <= clipLeft_) {
        edges_.clear();
        twoLayers_ = false;
        return false;
    }
    stride_ = right_ - left_ + 2;
    const std::size_t rows = static_cast<std::size_t>(bottom_ - top_);
    // Every cell is zero between shapes: the sweep clears what it reads.
    for (int layer = 0; layer < (twoLayers_ ? 2 : 1); ++layer) {
        if (cells_[layer].size() < rows * stride_) {
            cells_[layer].resize(rows * stride_, 0.0f);
        }
        if (row_[layer].size() < static_cast<std::size_t>(stride_)) {
            row_[layer].resize(stride_);
        }
    }
    firstTouched_.assign(rows, stride_);
    lastTouched_.assign(rows, -1);
    for (const Edge& edge : edges_) {
        accumulate(edge);
    }
    return true;
}

void HMKCoverageRasterizer::accumulate(const Edge& edge) {
    float* cells = cells_[edge.layer].data();
    double x0 = edge.x0 - left_, y0 = edge.y0 - top_;
    double x1 = edge.x1 - left_, y1 = edge.y1 - top_;
    double direction = 1;
    if (y0 > y1) {
        std::swap(x0, x1);
        std::swap(y0, y1);
        direction = -1;
    }
    const double rows = bottom_ - top_;
    const double slope = (x1 - x0) / (y1 - y0);
    const int firstRow = static_cast<int>(std::max(0.0, std::floor(y0)));
    const int endRow = static_cast<int>(std::min(rows, std::ceil(y1)));
    const double width = right_ - left_;
    // Most edges lie wholly inside the clip and need no cutting.
    const bool inside = std::min(x0, x1) >= 0 && std::max(x0, x1) <= width;
    for (int row = firstRow; row < endRow; ++row) {
        const double top = std::max(double(row), y0);
        const double bottom = std::min(double(row + 1), y1);
        if (bottom <= top) {
            continue;
        }
        const double from = x0 + (top - y0) * slope;
        const double to = x0 + (bottom - y0) * slope;
        const double height = (bottom - top) * direction;
        if (inside) {
            accumulateVisible(cells, row, from, to, height);
            continue;
        }
        // Split the piece where it leaves the clip on either side.
        double cuts[4] = {0, 1, 1, 1};
        int cutCount = 1;
        for (double boundary : {0.0, width}) {
            if ((from < boundary) != (to < boundary) && from != to) {
                cuts[cutCount++] = (boundary - from) / (to - from);
            }
        }
        if (cutCount == 3 && cuts[2] < cuts[1]) {
            std::swap(cuts[1], cuts[2]);
        }
        cuts[cutCount++] = 1;
        for (int i = 0; i + 1 < cutCount; ++i) {
            const double share = cuts[i + 1] - cuts[i];
            if (share <= 0) {
                continue;
            }
            const double a = from + (to - from) * cuts[i];
            const double b = from + (to - from) * cuts[i + 1];
            const double middle = (a + b) / 2;
            if (middle >= width) {
                continue;
            }
            if (middle <= 0) {
                accumulateVisible(cells, row, 0, 0, height * share);
            } else {
                accumulateVisible(cells, row, std::clamp(a, 0.0, width), std::clamp(b, 0.0, width),
                                  height * share);
            }
        }
    }
}

void HMKCoverageRasterizer::accumulateVisible(float* layerCells, int row, double from, double to,
                                              double height) {
    float* cells = layerCells + static_cast<std::size_t>(row) * stride_;
    const double x0 = std::min(from, to);
    const double x1 = std::max(from, to);
    const double x0Floor = std::floor(x0);
    const int x0Index = static_cast<int>(x0Floor);
    const int x1Index = static_cast<int>(std::ceil(x1));
    int lastIndex = x1Index;
    if (x1Index <= x0Index + 1) {
        // Within one pixel: the part right of the edge's middle is covered.
        const double middle = 0.5 * (from + to) - x0Floor;
        cells[x0Index] += static_cast<float>(height - height * middle);
        cells[x0Index + 1] += static_cast<float>(height * middle);
        lastIndex = x0Index + 1;
    } else {
        const double inverse = 1 / (x1 - x0);
        const double x0Fraction = x0 - x0Floor;
        const double firstArea = 0.5 * inverse * (1 - x0Fraction) * (1 - x0Fraction);
        const double x1Fraction = x1 - x1Index + 1;
        const double lastArea = 0.5 * inverse * x1Fraction * x1Fraction;
        cells[x0Index] += static_cast<float>(height * firstArea);
        if (x1Index == x0Index + 2) {
            cells[x0Index + 1] += static_cast<float>(height * (1 - firstArea - lastArea));
        } else {
            const double secondArea = inverse * (1.5 - x0Fraction);
            cells[x0Index + 1] += static_cast<float>(height * (secondArea - firstArea));
            for (int x = x0Index + 2; x < x1Index - 1; ++x) {
                cells[x] += static_cast<float>(height * inverse);
            }
            const double beforeLast = secondArea + (x1Index - x0Index - 3) * inverse;
            cells[x1Index - 1] += static_cast<float>(height * (1 - beforeLast - lastArea));
        }
        cells[x1Index] += static_cast<float>(height * lastArea);
    }
    firstTouched_[row] = std::min(firstTouched_[row], x0Index);
    lastTouched_[row] = std::max(lastTouched_[row], lastIndex);
}
