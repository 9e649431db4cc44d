// Reading large DST, PES and JEF files must be memory-bound: whole-file read, one pass over
// the records, one vector push per stitch. Each benchmark writes its file once and then reads
// it through the reader's public entry.
#include <benchmark/benchmark.h>

#include <unistd.h>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "model/design.h"

namespace {

using Bytes = std::vector<std::uint8_t>;

// Small moves in all directions, a jump every 50 records, a colour change every 5000.
struct Move {
    int dx;
    int dy;
    bool jump;
    bool change;
};

Move moveAt(std::size_t index) {
    return Move{static_cast<int>(index % 7) - 3, static_cast<int>(index % 5) - 2, index % 50 == 49,
                index % 5000 == 4999};
}

void putLe(Bytes& bytes, std::size_t offset, std::uint32_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i)
        bytes[offset + i] = static_cast<std::uint8_t>(value >> 8 * i);
}

Bytes dstFile(std::size_t stitchCount) {
    const std::string_view tags = "LA:bench\rST:\rCO:\r+X:\r-X:\r+Y:\r-Y:\rAX:\rAY:\r";
    Bytes bytes(512, ' ');
    std::copy(tags.begin(), tags.end(), bytes.begin());
    for (std::size_t i = 0; i < stitchCount; ++i) {
        const Move move = moveAt(i);
        // Moves of -3..3 need only the +-1 and +-3 weights of the first two bytes.
        std::uint8_t b0 = 0;
        std::uint8_t b1 = 0;
        const int x3 = (move.dx + (move.dx > 0 ? 1 : move.dx < 0 ? -1 : 0)) / 3;
        const int x1 = move.dx - 3 * x3;
        const int y3 = (move.dy + (move.dy > 0 ? 1 : move.dy < 0 ? -1 : 0)) / 3;
        const int y1 = move.dy - 3 * y3;
        b0 |= x1 > 0 ? 0x01 : x1 < 0 ? 0x02 : 0;
        b0 |= y1 > 0 ? 0x80 : y1 < 0 ? 0x40 : 0;
        b1 |= x3 > 0 ? 0x01 : x3 < 0 ? 0x02 : 0;
        b1 |= y3 > 0 ? 0x80 : y3 < 0 ? 0x40 : 0;
        const std::uint8_t b2 = move.change ? 0xC3 : move.jump ? 0x83 : 0x03;
        bytes.insert(bytes.end(), {b0, b1, b2});
    }
    bytes.insert(bytes.end(), {0x00, 0x00, 0xF3, 0x1A});
    return bytes;
}

Bytes pesFile(std::size_t stitchCount) {
    Bytes bytes = {'#', 'P', 'E', 'S', '0', '0', '0', '1', 12, 0, 0, 0, 'L', 'A', ':'};
    const std::size_t segment = bytes.size();
    bytes.resize(segment + 525, 0x20);
    for (std::size_t offset = segment + 509; offset < segment + 525; ++offset)
        bytes[offset] = 0;
    bytes.insert(bytes.end(), {0x90, 0x00, 0x90, 0x00});
    for (std::size_t i = 0; i < stitchCount; ++i) {
        const Move move = moveAt(i);
        if (move.change) {
            bytes.insert(bytes.end(), {0xFE, 0xB0, 0x00});
        } else if (move.jump) {
            bytes.insert(bytes.end(), {static_cast<std::uint8_t>(0x90 | ((move.dx >> 8) & 0x0F)),
                                       static_cast<std::uint8_t>(move.dx),
                                       static_cast<std::uint8_t>(0x90 | ((-move.dy >> 8) & 0x0F)),
                                       static_cast<std::uint8_t>(-move.dy)});
        } else {
            bytes.insert(bytes.end(), {static_cast<std::uint8_t>(move.dx & 0x7F),
                                       static_cast<std::uint8_t>(-move.dy & 0x7F)});
        }
    }
    bytes.push_back(0xFF);
    putLe(bytes, segment + 511, static_cast<std::uint32_t>(bytes.size() - segment - 509), 3);
    return bytes;
}

Bytes jefFile(std::size_t stitchCount) {
    const std::size_t colors = stitchCount / 5000 + 1;
    Bytes bytes(116 + 8 * colors, 0);
    putLe(bytes, 0, static_cast<std::uint32_t>(bytes.size()), 4);
    bytes[4] = 1;
    putLe(bytes, 24, static_cast<std::uint32_t>(colors), 4);
    for (std::size_t i = 0; i < colors; ++i) {
        putLe(bytes, 116 + 4 * i, static_cast<std::uint32_t>(i % 79), 4);
        putLe(bytes, 116 + 4 * (colors + i), 13, 4);
    }
    for (std::size_t i = 0; i < stitchCount; ++i) {
        const Move move = moveAt(i);
        const auto dx = static_cast<std::uint8_t>(move.dx);
        const auto dy = static_cast<std::uint8_t>(move.dy);
        if (move.change) {
            bytes.insert(bytes.end(), {0x80, 0x01, dx, dy});
        } else if (move.jump) {
            bytes.insert(bytes.end(), {0x80, 0x02, dx, dy});
        } else {
            bytes.insert(bytes.end(), {dx, dy});
        }
    }
    bytes.insert(bytes.end(), {0x80, 0x10});
    return bytes;
}

// The file lives as long as the benchmark run.
class BenchFile {
public:
    BenchFile(std::string_view name, const Bytes& bytes)
        : path_(std::filesystem::temp_directory_path() /
                ("hemlark-read-bench-" + std::to_string(::getpid()) + "-" + std::string(name))) {
        std::ofstream stream(path_, std::ios::binary);
        stream.write(reinterpret_cast<const char*>(bytes.data()),
                     static_cast<std::streamsize>(bytes.size()));
    }
    ~BenchFile() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

template <Bytes (*makeFile)(std::size_t)>
void readFile(benchmark::State& state, std::string_view extension) {
    const auto stitchCount = static_cast<std::size_t>(state.range(0));
    const BenchFile file("design." + std::string(extension), makeFile(stitchCount));
    for (auto _ : state) {
        HMKDesign design;
        if (!design.importDesignFromURL(file.path())) {
            state.SkipWithError("the generated file did not read");
            break;
        }
        benchmark::DoNotOptimize(design.stitches().data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_ReadDst(benchmark::State& state) {
    readFile<dstFile>(state, "dst");
}
void BM_ReadPes(benchmark::State& state) {
    readFile<pesFile>(state, "pes");
}
void BM_ReadJef(benchmark::State& state) {
    readFile<jefFile>(state, "jef");
}

BENCHMARK(BM_ReadDst)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadPes)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadJef)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

}  // namespace
