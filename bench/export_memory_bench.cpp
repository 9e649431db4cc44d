// Peak memory of reading a hostile file and exporting it, with the hemlark tool in a process
// of its own per conversion, for the most demanding files known: far-out moves that cutting
// for a format would multiply, a colour change every three bytes (a thread record each) and
// a design far wider than any hoop (the PEC thumbnail). Each reports the largest peak over
// the six writable formats beside the bound it must stay under, and fails beyond it.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

extern char** environ;

namespace {

using Bytes = std::vector<std::uint8_t>;

// The bound: peak resident memory of reading and exporting a file of S bytes stays below
// kBytesPerFileByte x S + kBaseMegabytes.
constexpr double kBytesPerFileByte = 192;
constexpr double kBaseMegabytes = 64;

void append(Bytes& bytes, std::initializer_list<int> values, std::size_t times = 1) {
    for (std::size_t i = 0; i < times; ++i) {
        bytes.insert(bytes.end(), values.begin(), values.end());
    }
}

// PCS records that jump to the far left edge of the 24-bit range and back, each followed by a
// short stitch so that the jumps do not merge.
Bytes farJumpsPcs(int jumps) {
    Bytes file{0x32, 2, 1, 0, 255, 0, 0, 0};
    append(file, {(2 * jumps) & 0xFF, (2 * jumps) >> 8});
    append(file, {0, 1, 0, 0, 0, 1, 0, 0, 3});
    for (int i = 0; i < jumps; ++i) {
        const int far = i % 2 == 0 ? 0x80 : 0;
        append(file, {0, 1, 0, far, 0, 1, 0, 0, 0});
        append(file, {0, 4, 0, far, 0, 1, 0, 0, 0});
    }
    append(file, {0, 0});
    return file;
}

// A DST header with every tag, then nothing but colour changes.
Bytes colourChangesDst(std::size_t changes) {
    std::string header = "LA:hostile\rST:1\rCO:1\r+X:0\r-X:0\r+Y:0\r-Y:0\rAX:0\rAY:0\r";
    header.resize(512, ' ');
    Bytes file(header.begin(), header.end());
    append(file, {0x00, 0x00, 0xC3}, changes);
    append(file, {0x00, 0x00, 0xF3, 0x1A});
    return file;
}

// A PEC section of nothing but colour changes, after the label and graphics headers.
Bytes colourChangesPec(std::size_t changes) {
    Bytes file{'#', 'P', 'E', 'C', '0', '0', '0', '1', 'L', 'A', ':'};
    const std::size_t segment = file.size();
    file.resize(segment + 529, 0x20);
    append(file, {0xFE, 0xB0, 0x02}, changes);
    append(file, {0xFF});
    // The stitch stream ends where the thumbnail offset (from segment offset 509) points.
    const std::size_t length = file.size() - segment - 509;
    for (int i = 0; i < 3; ++i) {
        file[segment + 511 + i] = static_cast<std::uint8_t>(length >> (8 * i));
    }
    return file;
}

// EXP jumps of 127 units to the right, each followed by a short stitch: a megabyte makes a
// design over two kilometres wide.
Bytes wideExp(std::size_t jumps) {
    Bytes file;
    append(file, {0x80, 0x02, 0x7F, 0x00, 0x01, 0x00}, jumps);
    return file;
}

#ifdef HEMLARK_TOOL_PATH
// The peak resident size, in kilobytes, of `hemlark convert input output`.
long peakKilobytesOfConversion(const std::filesystem::path& input,
                               const std::filesystem::path& output) {
    std::string tool = HEMLARK_TOOL_PATH, command = "convert", in = input, out = output;
    char* argv[] = {tool.data(), command.data(), in.data(), out.data(), nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    pid_t child = 0;
    const int spawned = posix_spawn(&child, tool.c_str(), &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        return -1;
    }
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    return usage.ru_maxrss;
}

void BM_ExportPeakMemory(benchmark::State& state, const Bytes& file, const char* extension) {
    std::string pattern = std::filesystem::temp_directory_path() / "hemlark-memory-XXXXXX";
    const std::filesystem::path folder = ::mkdtemp(pattern.data());
    const std::filesystem::path input = folder / (std::string("hostile.") + extension);
    std::ofstream(input, std::ios::binary)
        .write(reinterpret_cast<const char*>(file.data()),
               static_cast<std::streamsize>(file.size()));
    long peak = 0;
    for (auto _ : state) {
        for (const char* format : {"dst", "pes", "pec", "jef", "exp", "pcs"}) {
            peak = std::max(
                peak, peakKilobytesOfConversion(input, folder / (std::string("out.") + format)));
        }
    }
    std::filesystem::remove_all(folder);
    const double boundMegabytes = kBytesPerFileByte * file.size() / (1 << 20) + kBaseMegabytes;
    state.counters["file_KB"] = file.size() / 1024.0;
    state.counters["peak_MB"] = peak / 1024.0;
    state.counters["bound_MB"] = boundMegabytes;
    if (peak <= 0 || peak / 1024.0 > boundMegabytes) {
        state.SkipWithError("peak memory beyond the bound");
    }
}

BENCHMARK_CAPTURE(BM_ExportPeakMemory, pcs_far_jumps_3kb, farJumpsPcs(200), "pcs")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ExportPeakMemory, pcs_far_jumps_largest, farJumpsPcs(32767), "pcs")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ExportPeakMemory, dst_colour_changes_1mb, colourChangesDst(349'525), "dst")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ExportPeakMemory, pec_colour_changes_1mb, colourChangesPec(349'000), "pec")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_ExportPeakMemory, exp_wide_1mb, wideExp(174'762), "exp")
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
#endif

}  // namespace
