// What every test shares: stitches, threads and designs written one call each, files laid out
// byte by byte, a scratch folder that removes itself, and checks that name the first
// difference. Test-specific builders (a format's file layout, a fake provider) stay in the
// test file that needs them.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "formats/file_io.h"
#include "model/design.h"
#include "model/error.h"

using Bytes = std::vector<std::uint8_t>;
using Stitches = std::vector<HMKStitch>;
using Bounds = std::array<float, 4>;  // xMin, yMin, xMax, yMax

inline void PrintTo(const HMKStitch& stitch, std::ostream* out) {
    *out << stitch.description();
}
inline void PrintTo(const HMKThread& thread, std::ostream* out) {
    *out << thread.description();
}

// --- Stitches, threads, designs ------------------------------------------------------------
inline HMKStitch stitch(float dx, float dy) {
    return HMKStitch(dx, dy, false, false);
}
inline HMKStitch jump(float dx, float dy) {
    return HMKStitch(dx, dy, true, false);
}
inline HMKStitch change(float dx = 0, float dy = 0, bool isJump = false) {
    return HMKStitch(dx, dy, isJump, true);
}
inline HMKStitch selected(HMKStitch stitch) {
    stitch.isSelected = true;
    return stitch;
}

// One letter per stitch: S(titch), J(ump), C(olour change), X (colour change flagged as jump).
inline std::string kindsOf(const Stitches& stitches) {
    std::string kinds;
    for (const auto& stitch : stitches)
        kinds += "SJCX"[stitch.isJumpStitch + 2 * stitch.isColorChange];
    return kinds;
}

inline Bounds boundsOf(const HMKDesign& design) {
    return {design.xMin(), design.yMin(), design.xMax(), design.yMax()};
}
inline const Bounds kEmptyBounds = {kEmptyBoundsMin, kEmptyBoundsMin, kEmptyBoundsMax,
                                    kEmptyBoundsMax};

// A thread named after its key, in a palette of the same name and display name.
inline HMKThread makeThread(const std::string& key, const std::string& palette = "",
                            HMKColor color = HMKColor()) {
    return HMKThread(color, "Thread " + key, key, palette, palette);
}
// Thread n of a test design: key "n", a red of n tenths, so tests can follow reordering.
inline HMKThread numberedThread(int number) {
    return makeThread(std::to_string(number), "", HMKColor(number / 10.0, 0, 0));
}

// A design as a reader leaves it: the stitches, the given threads or else one numbered thread
// per colour block, fresh bounds and the whole design displayed.
inline HMKDesign makeDesign(Stitches stitches, std::vector<HMKThread> threads = {},
                            std::string type = "DST") {
    if (threads.empty()) {
        threads.push_back(numberedThread(0));
        for (const auto& s : stitches) {
            if (s.isColorChange)
                threads.push_back(numberedThread(static_cast<int>(threads.size())));
        }
    }
    HMKDesign design;
    design.setDisplayRange({0, stitches.size()});
    design.setStitches(std::move(stitches));
    design.setThreads(std::move(threads));
    design.setDesignType(std::move(type));
    design.recomputeBounds();
    return design;
}

inline std::string hoopNameOf(const HMKDesign& design) {
    return design.designHoop() ? design.designHoop()->name() : "";
}

// --- Bytes -------------------------------------------------------------------------------
// A file's bytes, appended field by field in the order the format lays them out.
class DesignBytes {
public:
    DesignBytes() = default;
    DesignBytes(std::initializer_list<std::uint8_t> values) : data_(values) {}
    DesignBytes& bytes(const Bytes& values) {
        data_.insert(data_.end(), values.begin(), values.end());
        return *this;
    }
    DesignBytes& bytes(std::initializer_list<std::uint8_t> values) {
        data_.insert(data_.end(), values);
        return *this;
    }
    DesignBytes& repeat(const Bytes& values, int count) {
        for (int i = 0; i < count; ++i)
            bytes(values);
        return *this;
    }
    DesignBytes& zeros(std::size_t count) { return bytes(Bytes(count, 0)); }
    DesignBytes& padTo(std::size_t offset, std::uint8_t fill = 0) {
        return bytes(Bytes(offset - std::min(offset, size()), fill));
    }
    DesignBytes& text(std::string_view value) { return bytes(Bytes(value.begin(), value.end())); }
    DesignBytes& u16le(std::uint32_t value) { return number(value, 2, false); }
    DesignBytes& u24le(std::uint32_t value) { return number(value, 3, false); }
    DesignBytes& u32le(std::uint32_t value) { return number(value, 4, false); }
    DesignBytes& u16be(std::uint32_t value) { return number(value, 2, true); }
    DesignBytes& u32be(std::uint32_t value) { return number(value, 4, true); }
    // Fields known only later (lengths, counts, offsets).
    DesignBytes& putLe(std::size_t offset, std::int64_t value, std::size_t width = 4) {
        for (std::size_t i = 0; i < width; ++i)
            data_.at(offset + i) =
                static_cast<std::uint8_t>(static_cast<std::uint64_t>(value) >> 8 * i);
        return *this;
    }
    DesignBytes& putU32be(std::size_t offset, std::uint32_t value) {
        for (std::size_t i = 0; i < 4; ++i)
            data_.at(offset + i) = static_cast<std::uint8_t>(value >> 8 * (3 - i));
        return *this;
    }
    DesignBytes& truncate(std::size_t size) {
        data_.resize(size);
        return *this;
    }
    std::size_t size() const { return data_.size(); }
    operator const Bytes&() const { return data_; }
    operator std::span<const std::uint8_t>() const { return data_; }

private:
    DesignBytes& number(std::uint32_t value, std::size_t width, bool bigEndian) {
        for (std::size_t i = 0; i < width; ++i)
            data_.push_back(
                static_cast<std::uint8_t>(value >> 8 * (bigEndian ? width - 1 - i : i)));
        return *this;
    }
    Bytes data_;
};

inline Bytes slice(const Bytes& bytes, std::size_t offset, std::size_t length) {
    offset = std::min(offset, bytes.size());
    return Bytes(bytes.begin() + offset, bytes.begin() + std::min(bytes.size(), offset + length));
}

// --- Files -------------------------------------------------------------------------------
// A fresh folder under the system's temporary folder, removed with everything in it.
class ScratchFolder {
public:
    ScratchFolder() {
        std::string pattern = std::filesystem::temp_directory_path() / "hemlark-test-XXXXXX";
        path_ = ::mkdtemp(pattern.data());
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path file(std::string_view name) const { return path_ / name; }
    std::filesystem::path write(std::string_view name, std::string_view bytes) const {
        std::ofstream(file(name), std::ios::binary) << bytes;
        return file(name);
    }
    std::filesystem::path write(std::string_view name, const Bytes& bytes) const {
        return write(name,
                     std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }
    Bytes read(std::string_view name) const { return readWholeFile(file(name)).value_or(Bytes{}); }
    // The names in the folder, sorted: shows that no temporary file was left behind.
    std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(path_))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

private:
    std::filesystem::path path_;
};

// --- Reading -----------------------------------------------------------------------------
// What a reader made of some bytes in a fresh design.
struct ReadOutcome {
    bool ok = false;
    HMKDesign design;
    HMKError error;
};
template <typename Reader>
ReadOutcome readWith(Reader reader, std::span<const std::uint8_t> bytes) {
    ReadOutcome outcome;
    outcome.ok = reader(outcome.design, bytes, &outcome.error);
    return outcome;
}

// A number as short as it reads back to the same float.
inline std::string shortest(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", value);
    return text;
}

// A design for a golden file: type, version and hoop, the bounds, every thread and every
// stitch (S, J, C, X as in kindsOf, with its deltas, * when selected).
inline std::string describe(const HMKDesign& d) {
    std::string text = d.designType() + " " + std::to_string(d.designVersion());
    if (!d.designName().empty() || !d.designLocation().empty())
        text += ", \"" + d.designName() + "\" at \"" + d.designLocation().string() + "\"";
    if (const auto& hoop = d.designHoop())
        text += ", hoop " + hoop->vendor() + " " + hoop->name() + " " +
                std::to_string(hoop->code()) + " " + std::to_string(hoop->width()) + " x " +
                std::to_string(hoop->height()) + (hoop->isRounded() ? " round" : "") +
                (hoop->isMultiHoop() ? " multi" : "") + (hoop->isWritable() ? " writable" : "");
    text += ", bounds";
    for (float bound : boundsOf(d))
        text += " " + shortest(bound);
    if (d.selectionActive())
        text += ", selection active";
    if (d.threads().size() > 64)
        text += "\n" + std::to_string(d.threads().size()) + " threads";
    for (const HMKThread& t : d.threads().size() > 64 ? std::vector<HMKThread>() : d.threads()) {
        text += "\nthread " + t.key + " | " + t.palette + " | " + t.paletteName + " | " + t.name +
                " | " + shortest(t.color.red()) + " " + shortest(t.color.green()) + " " +
                shortest(t.color.blue()) + " | " + std::to_string(t.tension) + " " +
                shortest(t.length) + (t.isShown ? "" : " hidden");
    }
    if (d.stitches().size() > 64)
        return text + "\n" + std::to_string(d.stitches().size()) + " stitches\n";
    for (std::size_t i = 0; i < d.stitches().size(); ++i) {
        const HMKStitch& s = d.stitches()[i];
        text += (i % 8 ? " " : "\n") + kindsOf({s}) + "(" + shortest(s.deltaX) + "," +
                shortest(s.deltaY) + ")" + (s.isSelected ? "*" : "");
    }
    return text + "\n";
}
// What a reader made of a file: the outcome, then the design.
inline std::string describe(const ReadOutcome& read) {
    std::string text =
        read.ok ? "read" : "error " + std::to_string(read.error.code) + ": " + read.error.message();
    if (!read.ok && read.error.domain != kHMKDesignErrorDomain)
        text += " (" + read.error.domain + ")";
    return text + "\n" + describe(read.design);
}

// --- Writing -----------------------------------------------------------------------------
using DesignWriter = bool (HMKDesign::*)(const std::filesystem::path&, HMKError*);

// The file a writer makes of the design (the test fails when the writer refuses).
inline Bytes writtenBy(DesignWriter writer, HMKDesign& design) {
    ScratchFolder folder;
    HMKError error;
    EXPECT_TRUE((design.*writer)(folder.file("design"), &error)) << error.message();
    return folder.read("design");
}

// --- Checks ------------------------------------------------------------------------------
// Compares text with tests/golden/name; with HEMLARK_UPDATE_GOLDEN set in the environment it
// rewrites the file instead (after a deliberate change, then review the difference).
inline void expectGolden(std::string_view text, const std::string& name) {
    const auto path = std::filesystem::path(HEMLARK_GOLDEN_DIR) / name;
    if (std::getenv("HEMLARK_UPDATE_GOLDEN"))
        std::ofstream(path, std::ios::binary) << text;
    const Bytes golden = readWholeFile(path).value_or(Bytes{});
    EXPECT_EQ(text, std::string_view(reinterpret_cast<const char*>(golden.data()), golden.size()))
        << "differs from " << path;
}

// The design error of that code and text.
inline void expectDesignError(const HMKError& error, int code, std::string_view text) {
    EXPECT_EQ(error.domain, kHMKDesignErrorDomain);
    EXPECT_EQ(error.code, code);
    EXPECT_EQ(error.message(), text);
}

// Stitches equal bit for bit (so 0 and -0 differ), with their flags.
inline ::testing::AssertionResult sameStitches(const Stitches& actual, const Stitches& expected) {
    if (actual.size() != expected.size())
        return ::testing::AssertionFailure()
               << "stitch count " << actual.size() << " vs " << expected.size();
    for (std::size_t i = 0; i < actual.size(); ++i) {
        const HMKStitch& a = actual[i];
        const HMKStitch& e = expected[i];
        if (std::bit_cast<std::uint32_t>(a.deltaX) != std::bit_cast<std::uint32_t>(e.deltaX) ||
            std::bit_cast<std::uint32_t>(a.deltaY) != std::bit_cast<std::uint32_t>(e.deltaY) ||
            a.isJumpStitch != e.isJumpStitch || a.isColorChange != e.isColorChange ||
            a.isSelected != e.isSelected)
            return ::testing::AssertionFailure()
                   << "stitch " << i << ": " << a.description() << " vs " << e.description();
    }
    return ::testing::AssertionSuccess();
}

// The whole edited state: stitches, threads, bounds bit for bit, selection flag and display
// range.
inline ::testing::AssertionResult sameDesign(const HMKDesign& actual, const HMKDesign& expected) {
    if (auto stitches = sameStitches(actual.stitches(), expected.stitches()); !stitches)
        return stitches;
    if (std::bit_cast<std::array<std::uint32_t, 4>>(boundsOf(actual)) !=
        std::bit_cast<std::array<std::uint32_t, 4>>(boundsOf(expected)))
        return ::testing::AssertionFailure()
               << "bounds " << ::testing::PrintToString(boundsOf(actual)) << " vs "
               << ::testing::PrintToString(boundsOf(expected));
    if (actual.threads() != expected.threads())
        return ::testing::AssertionFailure() << "threads differ";
    if (actual.selectionActive() != expected.selectionActive() ||
        actual.displayRange() != expected.displayRange())
        return ::testing::AssertionFailure() << "selectionActive or displayRange differs";
    return ::testing::AssertionSuccess();
}
