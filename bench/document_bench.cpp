// The document's undo and recovery costs on designs of 100,000 and 1,000,000 stitches. Undo
// and redo swap whole designs, so each must stay far below a frame (5 ms) at any size; the
// recovery file is archived and written on a background thread, and the GUI thread only copies
// the design for it (see BM_CopyDesign).
#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QTemporaryDir>

#include "document/document.h"
#include "document/recovery.h"

namespace {

// A short-stitch design with 20 colour blocks, normalised like a read file.
HMKDesign makeDesign(std::size_t stitchCount) {
    std::vector<HMKStitch> stitches;
    stitches.reserve(stitchCount);
    for (std::size_t i = 0; i < stitchCount; ++i) {
        stitches.emplace_back(static_cast<float>(i % 37) - 18, static_cast<float>(i % 29) - 14,
                              i % 50 == 0, i % (stitchCount / 20) == stitchCount / 40);
    }
    HMKDesign design;
    design.setStitches(std::move(stitches));
    for (int i = 0; i <= 20; ++i) {
        design.threads().push_back(
            HMKThread(HMKColor(i / 20.0, 0.5, 0.5), "Thread", std::to_string(i), "", ""));
    }
    design.setDesignType("DST");
    design.optimizeJumpsFor("DST");
    return design;
}

// Timers and settings want an application object; state and settings go to a scratch folder.
struct BenchEnvironment {
    BenchEnvironment() {
        qputenv("XDG_STATE_HOME", folder.filePath("state").toUtf8());
        application = std::make_unique<QCoreApplication>(argc, argv);
    }
    QTemporaryDir folder;
    int argc = 1;
    char name[16] = "hemlark_bench";
    char* argv[2] = {name, nullptr};
    std::unique_ptr<QCoreApplication> application;
};

BenchEnvironment& environment() {
    static BenchEnvironment instance;
    return instance;
}

// Undoes (or, with redo, redoes) a 45-degree rotation of the whole design, timing only that.
void benchmarkRotationStep(benchmark::State& state, bool redo) {
    HMKSettings settings(environment().folder.filePath("bench.conf"));
    HMKDocument document(settings);
    document.setDesign(makeDesign(static_cast<std::size_t>(state.range(0))));
    document.selectAll();
    document.rotateByDegrees(45);
    for (auto _ : state) {
        if (redo) {
            state.PauseTiming();
            document.undo();
            state.ResumeTiming();
            document.redo();
        } else {
            document.undo();
            state.PauseTiming();
            document.redo();
            state.ResumeTiming();
        }
        benchmark::DoNotOptimize(document.design().stitches().data());
    }
    document.close();
}

void BM_UndoRotation(benchmark::State& state) {
    benchmarkRotationStep(state, false);
}
BENCHMARK(BM_UndoRotation)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMicrosecond);

void BM_RedoRotation(benchmark::State& state) {
    benchmarkRotationStep(state, true);
}
BENCHMARK(BM_RedoRotation)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMicrosecond);

// The whole command on the GUI thread: snapshot copy, rotation, undo step.
void BM_RotateCommand(benchmark::State& state) {
    HMKSettings settings(environment().folder.filePath("bench.conf"));
    HMKDocument document(settings);
    document.setDesign(makeDesign(static_cast<std::size_t>(state.range(0))));
    document.selectAll();
    for (auto _ : state) {
        document.rotateByDegrees(45);
    }
    document.close();
}
BENCHMARK(BM_RotateCommand)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

// Archiving and writing the recovery file (the background thread's work).
void BM_RecoveryWrite(benchmark::State& state) {
    const HMKDesign design = makeDesign(static_cast<std::size_t>(state.range(0)));
    const std::filesystem::path file =
        environment().folder.filePath("bench.recovery").toStdString();
    HMKRecoveryState recovery;
    recovery.isEdited = true;
    for (auto _ : state) {
        if (!writeRecoveryFile(file, recovery, design)) {
            state.SkipWithError("the recovery file was not written");
            break;
        }
    }
    state.counters["file_MB"] = static_cast<double>(std::filesystem::file_size(file)) / 1e6;
    std::filesystem::remove(file);
}
BENCHMARK(BM_RecoveryWrite)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

}  // namespace
