// Reading must be bound by memory, not by the decoders: EXP, VP3 and PCS files of many
// stitches, generated here and written to a temporary file once, read whole per iteration.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "model/design.h"

namespace {

// Temporary design files by name, removed when the benchmark ends.
class GeneratedFiles {
public:
    ~GeneratedFiles() {
        for (const auto& [name, path] : paths_) {
            std::error_code ignored;
            std::filesystem::remove(path, ignored);
        }
    }
    const std::filesystem::path& file(const std::string& name,
                                      const std::function<std::vector<std::uint8_t>()>& make) {
        auto found = paths_.find(name);
        if (found != paths_.end()) {
            return found->second;
        }
        auto path = std::filesystem::temp_directory_path() /
                    ("hemlark-read-bench-" + std::to_string(::getpid()) + "-" + name);
        auto bytes = make();
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        return paths_.emplace(name, path).first->second;
    }

private:
    std::map<std::string, std::filesystem::path> paths_;
};

GeneratedFiles& generatedFiles() {
    static GeneratedFiles files;
    return files;
}

void appendBigEndian(std::vector<std::uint8_t>& bytes, std::uint32_t value, int count) {
    for (int i = count - 1; i >= 0; --i)
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}
void appendLittleEndian(std::vector<std::uint8_t>& bytes, std::uint32_t value, int count) {
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

// Satin-like back and forth moves, a jump every 100 stitches, a colour change every 10,000.
std::vector<std::uint8_t> expFile(std::int64_t stitches) {
    std::vector<std::uint8_t> bytes;
    for (std::int64_t i = 0; i < stitches; ++i) {
        if (i % 10'000 == 9'999) {
            bytes.insert(bytes.end(), {0x80, 0x01, 0x00, 0x00});
        } else if (i % 100 == 99) {
            bytes.insert(bytes.end(), {0x80, 0x02, 0x40, 0xC0});
        } else {
            bytes.insert(bytes.end(), {static_cast<std::uint8_t>(i % 2 ? 0x28 : 0xD8), 0x02});
        }
    }
    return bytes;
}

// Ten colour sections sharing the stitches, with a jump every 100 stitches.
std::vector<std::uint8_t> vp3File(std::int64_t stitches) {
    constexpr int kSections = 10;
    std::vector<std::uint8_t> bytes = {'%', 'v', 's', 'm', '%', 0, 0, 0};
    bytes.resize(12);
    appendBigEndian(bytes, 130000, 4);
    appendBigEndian(bytes, 180000, 4);
    bytes.resize(40);
    bytes.insert(bytes.end(), {'x', 'x', 'P', 'P', 0, 0, 0, 0});
    appendBigEndian(bytes, kSections, 2);
    for (int section = 0; section < kSections; ++section) {
        const std::size_t start = bytes.size();
        bytes.insert(bytes.end(), {0x00, 0x05, 0x00, 0, 0, 0, 0});
        bytes.resize(bytes.size() + 8);
        bytes.insert(bytes.end(), {1, 0, static_cast<std::uint8_t>(section * 20), 0x40, 0x80});
        bytes.resize(bytes.size() + 5);
        for (const std::string text : {"1000", "Thread", "Brand"}) {
            appendBigEndian(bytes, static_cast<std::uint32_t>(text.size()), 2);
            bytes.insert(bytes.end(), text.begin(), text.end());
        }
        bytes.resize(bytes.size() + 17);
        for (std::int64_t i = 0; i < stitches / kSections; ++i) {
            if (i % 100 == 99) {
                bytes.insert(bytes.end(), {0x80, 0x01, 0x01, 0x00, 0xFF, 0x00, 0x80, 0x02});
            } else {
                bytes.insert(bytes.end(), {static_cast<std::uint8_t>(i % 2 ? 0x28 : 0xD8), 0x02});
            }
        }
        const auto length = static_cast<std::uint32_t>(bytes.size() - start - 7);
        for (int i = 0; i < 4; ++i) {
            bytes[start + 3 + i] = static_cast<std::uint8_t>(length >> (8 * (3 - i)));
        }
    }
    return bytes;
}

// Absolute positions zig-zagging inside the large Pfaff hoop, one colour per 10,000 stitches.
std::vector<std::uint8_t> pcsFile(std::int64_t stitches) {
    std::vector<std::uint8_t> bytes = {0x32, 0x03};
    appendLittleEndian(bytes, 16, 2);
    for (int color = 0; color < 16; ++color) {
        bytes.insert(bytes.end(), {static_cast<std::uint8_t>(color * 16), 0x80, 0x40, 0});
    }
    appendLittleEndian(bytes, static_cast<std::uint32_t>(stitches), 2);
    for (std::int64_t i = 0; i < stitches; ++i) {
        if (i % 10'000 == 0) {
            bytes.insert(bytes.end(),
                         {static_cast<std::uint8_t>(i / 10'000 % 16), 0, 0, 0, 0, 0, 0, 0, 3});
        }
        bytes.push_back(0);
        appendLittleEndian(bytes, static_cast<std::uint32_t>(100 + (i % 2) * 12), 3);
        bytes.push_back(0);
        appendLittleEndian(bytes, static_cast<std::uint32_t>(100 + i % 500), 3);
        bytes.push_back(0);
    }
    bytes.resize(bytes.size() + 13);
    return bytes;
}

using DesignReader = bool (HMKDesign::*)(const std::filesystem::path&, HMKError*);

void readRepeatedly(benchmark::State& state, DesignReader reader,
                    const std::filesystem::path& path) {
    std::size_t stitches = 0;
    for (auto _ : state) {
        HMKDesign design;
        if (!(design.*reader)(path, nullptr)) {
            state.SkipWithError("the generated file did not read");
            return;
        }
        stitches = design.stitches().size();
        benchmark::DoNotOptimize(design.stitches().data());
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(stitches));
}

void BM_ReadExp(benchmark::State& state) {
    const auto& path = generatedFiles().file("exp-" + std::to_string(state.range(0)) + ".exp",
                                             [&] { return expFile(state.range(0)); });
    readRepeatedly(state, &HMKDesign::importExpDesignFromURL, path);
}
BENCHMARK(BM_ReadExp)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

void BM_ReadVp3(benchmark::State& state) {
    const auto& path = generatedFiles().file("vp3-" + std::to_string(state.range(0)) + ".vp3",
                                             [&] { return vp3File(state.range(0)); });
    readRepeatedly(state, &HMKDesign::importVp3DesignFromURL, path);
}
BENCHMARK(BM_ReadVp3)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond);

// The 16-bit stitch count caps a PCS file at 65535 counted stitches.
void BM_ReadPcs(benchmark::State& state) {
    const auto& path = generatedFiles().file("pcs-" + std::to_string(state.range(0)) + ".pcs",
                                             [&] { return pcsFile(state.range(0)); });
    readRepeatedly(state, &HMKDesign::importPcxDesignFromURL, path);
}
BENCHMARK(BM_ReadPcs)->Arg(65'535)->Unit(benchmark::kMillisecond);

}  // namespace
