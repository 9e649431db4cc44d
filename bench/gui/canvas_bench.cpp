// The design canvas's paint path, offscreen: a pan frame of a 1,000,000-stitch design (the
// picture is blitted; budget 16 ms), a full re-render after a zoom of a 100,000-stitch
// design with the shaded 3D look (drawn off the GUI thread; budget 300 ms), and a frame of
// the stitch-out animation at full speed on the 1,000,000-stitch design, and the longest turn
// of the event loop while its picture catches up with the needle (budgets 16 ms).
#include <benchmark/benchmark.h>

#include <cmath>
#include <ctime>

#include <QApplication>
#include <QImage>
#include <QScrollBar>
#include <QTemporaryDir>

#include "document/document.h"
#include "gui/design_canvas.h"

namespace {

// Concentric rings of satin stitches (6 units wide, 1.2 units apart) around the origin, a
// jump between rings and a new thread every 50,000 stitches: a dense, fully covered design
// of about 200 x 200 mm.
HMKDesign makeRingDesign(std::size_t stitchCount) {
    HMKDesign design;
    std::vector<HMKStitch> stitches;
    stitches.reserve(stitchCount + stitchCount / 50'000);
    design.threads().push_back(HMKThread(HMKColor(0.7, 0.2, 0.3), "Ring", "1", "", ""));
    double x = 0, y = 0;
    double radius = 20;
    double angle = 0;
    const auto moveTo = [&](double targetX, double targetY, bool jump) {
        stitches.emplace_back(static_cast<float>(targetX - x), static_cast<float>(targetY - y),
                              jump, false);
        x = targetX, y = targetY;
    };
    for (std::size_t i = 0; i < stitchCount; ++i) {
        if (i > 0 && i % 50'000 == 0) {
            stitches.emplace_back(0, 0, false, true);
            const double shade = static_cast<double>(design.threads().size() % 5) / 5;
            design.threads().push_back(
                HMKThread(HMKColor(shade, 0.5, 1 - shade), "Ring", "1", "", ""));
        }
        angle += 1.2 / radius;
        if (angle > 2 * M_PI) {
            angle = 0;
            radius += 7;
            moveTo(radius * std::cos(angle), radius * std::sin(angle), true);
            continue;
        }
        const double side = (i % 2 == 0) ? 3 : -3;
        moveTo((radius + side) * std::cos(angle), (radius + side) * std::sin(angle), false);
    }
    design.setStitches(std::move(stitches));
    design.recomputeBounds();
    design.setDisplayRange({0, design.stitches().size()});
    return design;
}

// A shown canvas of a desktop window's size on a document holding the design.
struct CanvasFixture {
    explicit CanvasFixture(std::size_t stitches, bool show3D)
        : settings(folder.filePath("hemlark.conf")), document(settings) {
        settings.setValue(HMKSettings::drawFastMode, !show3D);
        document.setDesign(makeRingDesign(stitches));
        canvas = std::make_unique<HMKDesignCanvas>(document, settings);
        canvas->resize(1200, 800);
        canvas->show();
        QApplication::processEvents();
        canvas->zoomToFit();
        canvas->waitForImage();
    }
    QTemporaryDir folder;
    HMKSettings settings;
    HMKDocument document;
    std::unique_ptr<HMKDesignCanvas> canvas;
};

void BM_CanvasPanFrame1M(benchmark::State& state) {
    CanvasFixture fixture(1'000'000, true);
    HMKDesignCanvas& canvas = *fixture.canvas;
    // Zoomed in, so that the scroll bars reach and the picture covers only part of the design.
    canvas.setScale(canvas.scale() * 3);
    canvas.waitForImage();
    QImage frame(canvas.viewport()->size(), QImage::Format_ARGB32_Premultiplied);
    QScrollBar* bar = canvas.horizontalScrollBar();
    int step = 8;
    for (auto _ : state) {
        bar->setValue(bar->value() + step);
        step = -step;
        canvas.viewport()->render(&frame);
        benchmark::DoNotOptimize(frame.constBits());
    }
    state.counters["re-renders"] = canvas.isImageCurrent() ? 0 : 1;
}

void rerender(benchmark::State& state, bool show3D) {
    CanvasFixture fixture(100'000, show3D);
    HMKDesignCanvas& canvas = *fixture.canvas;
    const double fitted = canvas.scale();
    bool zoomed = false;
    // The drawing runs on a worker thread: its processor time tells the cost on a busy
    // machine, where the wall time includes waiting for a core.
    const std::clock_t start = std::clock();
    for (auto _ : state) {
        zoomed = !zoomed;
        canvas.setScale(fitted * (zoomed ? 1.25 : 1.0));
        canvas.waitForImage();
    }
    state.counters["process_cpu_ms"] = benchmark::Counter(
        1000.0 * static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC / state.iterations());
}

void BM_CanvasRerender3D100k(benchmark::State& state) {
    rerender(state, true);
}
void BM_CanvasRerenderFlat100k(benchmark::State& state) {
    rerender(state, false);
}

// The canvas's stitch-out animation playing at full speed from a position, its picture drawn.
HMKStitchOutAnimation& playingAtFullSpeed(HMKDesignCanvas& canvas, std::uint64_t position) {
    HMKStitchOutAnimation& animation = canvas.stitchOut();
    animation.setActive(true);
    animation.setSpeed(HMKStitchOutPlayer::kMaximumSpeed);
    animation.seek(position);
    canvas.waitForImage();
    animation.play();
    return animation;
}

// One frame of the stitch-out animation at full speed on the 1,000,000-stitch design, late in
// the design (from 750,000 stitches on): the engine sews 1/60 s worth of stitches, the canvas
// draws them onto its picture and the viewport is painted. Budget 16 ms.
void BM_StitchOutFrame1M(benchmark::State& state) {
    CanvasFixture fixture(1'000'000, true);
    HMKDesignCanvas& canvas = *fixture.canvas;
    HMKStitchOutAnimation& animation = playingAtFullSpeed(canvas, 750'000);
    QImage frame(canvas.viewport()->size(), QImage::Format_ARGB32_Premultiplied);
    for (auto _ : state) {
        animation.advanceFrame(1.0 / 60);
        canvas.viewport()->render(&frame);
        benchmark::DoNotOptimize(frame.constBits());
    }
    state.counters["stitches_per_frame"] = HMKStitchOutPlayer::kMaximumSpeed / 60;
    state.counters["re-renders"] = canvas.isImageCurrent() ? 0 : 1;
}

// The longest turn of the event loop while the stitch-out picture catches up with a needle
// that ran ahead (after a slow frame or a zoom while playing): the most records drawn in one
// turn, the rest following in later turns. Budget 16 ms.
void BM_StitchOutCatchUpTurn1M(benchmark::State& state) {
    CanvasFixture fixture(1'000'000, true);
    HMKDesignCanvas& canvas = *fixture.canvas;
    HMKStitchOutAnimation& animation = playingAtFullSpeed(canvas, 500'000);
    const double turnSeconds =
        static_cast<double>(HMKDesignCanvas::kCatchUpRecordsPerTurn) / animation.player().speed();
    for (auto _ : state) {
        animation.advanceFrame(turnSeconds);
    }
    state.counters["records_per_turn"] = HMKDesignCanvas::kCatchUpRecordsPerTurn;
    state.counters["re-renders"] = canvas.isImageCurrent() ? 0 : 1;
}

BENCHMARK(BM_CanvasPanFrame1M)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_CanvasRerender3D100k)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_CanvasRerenderFlat100k)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_StitchOutFrame1M)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(600);
BENCHMARK(BM_StitchOutCatchUpTurn1M)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(100);

}  // namespace

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
