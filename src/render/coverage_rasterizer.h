// Antialiased polygon coverage for the software raster context: the edges of closed outlines
// in device pixels go in, and rows of exact area coverage (0..1 per pixel) come out. Used by
// HMKRasterContext for strokes, fills, clips and gradients.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

// One row piece of coverage: pixels x .. x + length - 1 of row y. After the last pixel of a
// span the row goes on with `rest` coverage up to the clip's right edge (a shape that reaches
// past the right side of the clip). A shape of two layers (an outline and what is painted on
// it, such as the lighter core of a stitch) has the second layer's coverage in `inner`.
struct HMKCoverageSpan {
    int y = 0;
    int x = 0;
    const float* coverage = nullptr;
    const float* inner = nullptr;
    int length = 0;
    float rest = 0;
    float innerRest = 0;
};

class HMKCoverageRasterizer {
public:
    // Limits every later shape to the device pixels [left, right) x [top, bottom).
    void setClip(int left, int top, int right, int bottom);

    // --- Building a shape ------------------------------------------------------------------
    // Starts an empty shape; the outlines added next are filled together with the non-zero
    // rule (where outlines overlap inside one pixel the coverage is summed and capped at 1).
    void beginShape();
    // An edge of a closed outline, in device pixels; its direction gives the winding. Layer 1
    // is the second layer of a two-layer shape.
    void addEdge(double x0, double y0, double x1, double y1, int layer = 0);
    // A closed polygon through the points (x, y pairs).
    void addPolygon(const double* xy, int count, int layer = 0);

    // --- Reading the coverage ----------------------------------------------------------------
    // The pixel rows the shape reaches, clipped; empty when it covers nothing.
    int top() const { return top_; }
    int bottom() const { return bottom_; }
    // Calls paint(const HMKCoverageSpan&) for each row that holds coverage, top to bottom,
    // and clears the shape.
    template <class Paint>
    void sweep(Paint&& paint);

private:
    struct Edge {
        double x0, y0, x1, y1;
        int layer;
    };
    void accumulate(const Edge& edge);
    void accumulateVisible(float* cells, int row, double from, double to, double height);
    bool prepare();

    int clipLeft_ = 0, clipTop_ = 0, clipRight_ = 0, clipBottom_ = 0;
    std::vector<Edge> edges_;
    double minX_ = 0, minY_ = 0, maxX_ = 0, maxY_ = 0;
    // The accumulation cells of the shape's clipped box, two spare columns per row, per layer.
    std::vector<float> cells_[2];
    bool twoLayers_ = false;
    std::vector<int> firstTouched_;
    std::vector<int> lastTouched_;
    std::vector<float> row_[2];
    int left_ = 0, top_ = 0, right_ = 0, bottom_ = 0, stride_ = 0;
};

template <class Paint>
void HMKCoverageRasterizer::sweep(Paint&& paint) {
    if (!prepare()) {
        return;
    }
    const int width = right_ - left_;
    const int layers = twoLayers_ ? 2 : 1;
    for (int y = top_; y < bottom_; ++y) {
        const int rowIndex = y - top_;
        const int first = firstTouched_[rowIndex];
        const int last = lastTouched_[rowIndex];
        if (first > last) {
            continue;
        }
        firstTouched_[rowIndex] = stride_;
        lastTouched_[rowIndex] = -1;
        const int visibleLast = std::min(last, width - 1);
        float rest[2] = {0, 0};
        for (int layer = 0; layer < layers; ++layer) {
            float* cells = cells_[layer].data() + static_cast<std::size_t>(rowIndex) * stride_;
            float* row = row_[layer].data();
            // Coverage is the running sum of the cells, summed winding capped at 1; after the
            // last touched cell it stays what it is.
            float sum = 0;
            for (int i = first; i <= visibleLast; ++i) {
                sum += cells[i];
                cells[i] = 0;
                const float magnitude = sum < 0 ? -sum : sum;
                row[i - first] = magnitude > 1 ? 1 : magnitude;
            }
            for (int i = std::max(first, visibleLast + 1); i <= last; ++i) {
                cells[i] = 0;
            }
            const float magnitude = sum < 0 ? -sum : sum;
            rest[layer] =
                last >= width - 1 ? 0 : (magnitude > 1 ? 1 : (magnitude < 1e-4f ? 0 : magnitude));
        }
        if (first >= width) {
            continue;
        }
        paint(HMKCoverageSpan{y, left_ + first, row_[0].data(),
                              twoLayers_ ? row_[1].data() : nullptr, visibleLast - first + 1,
                              rest[0], rest[1]});
    }
    edges_.clear();
    twoLayers_ = false;
}
