// JEF and JPX files made byte by byte, and what the readers make of them against
// tests/golden/read-jef-jpx.txt.
#include <functional>

#include "formats/read/readers.h"
#include "support/test_support.h"

namespace {

// A code missing from the Janome table.
constexpr std::int32_t kUnknownCode = 79;

struct JanomeFileLayout {
    std::size_t colors = 1;  // all kUnknownCode unless codes are given, tensions 10, 11, ...
    std::size_t colorChanges = 0;
    std::vector<std::int32_t> codes = {};
    std::int8_t version = 1;
    std::int32_t hoopCode = 0;
    Bytes stitches = {};  // default: (1, 1), the colour changes, the end record
};

// Stitch offset at 0 and version at 4 in both; JEF keeps the colour count at 24, the hoop at 32
// and the codes (then tensions) at 116, JPX at 32, 40 and 60, with stitch data from byte 120 on.
Bytes janomeFile(const JanomeFileLayout& layout, bool jpx = false) {
    const std::size_t codesAt = jpx ? 60 : 116;
    DesignBytes bytes;
    bytes.padTo(std::max<std::size_t>(jpx ? 120 : 0, codesAt + 8 * layout.colors));
    bytes.putLe(0, static_cast<std::int64_t>(bytes.size())).putLe(4, layout.version, 1);
    bytes.putLe(jpx ? 32 : 24, static_cast<std::int64_t>(layout.colors));
    bytes.putLe(jpx ? 40 : 32, layout.hoopCode);
    for (std::size_t i = 0; i < layout.colors; ++i) {
        bytes.putLe(codesAt + 4 * i, i < layout.codes.size() ? layout.codes[i] : kUnknownCode);
        bytes.putLe(codesAt + 4 * (layout.colors + i), 10 + static_cast<std::int64_t>(i));
    }
    if (!layout.stitches.empty())
        return bytes.bytes(layout.stitches);
    bytes.bytes({0x01, 0x01});
    return bytes.repeat({0x80, 0x01, 0, 0}, static_cast<int>(layout.colorChanges))
        .bytes({0x80, 0x10});
}

Bytes patched(const Bytes& bytes, std::size_t offset, std::int32_t value) {
    return DesignBytes().bytes(bytes).putLe(offset, value);
}

}  // namespace

TEST(JefReader, ReadsWhatTheGoldenFileRecords) {
    using Reader = std::function<bool(HMKDesign&, std::span<const std::uint8_t>, HMKError*)>;
    const auto jef = [](std::string_view extension) -> Reader {
        return [=](HMKDesign& design, std::span<const std::uint8_t> bytes, HMKError* error) {
            return importJefDesignFromData(design, bytes, extension, error);
        };
    };
    const Reader jpx = importJpxDesignFromData;
    // Two colours, the first colour change leading their blocks in, then the records.
    const auto records = [](Bytes records) {
        records.insert(records.begin(), {0x80, 0x01, 0x00, 0x00});
        return janomeFile({.colors = 2, .stitches = records});
    };
    const auto header =
        janomeFile({.colors = 3, .colorChanges = 4, .codes = {1, 78}, .version = 7, .hoopCode = 4});
    // Four colours: the length check asks for 136 bytes, the tensions end at 148.
    auto missingTensions =
        DesignBytes().bytes(patched(janomeFile({.colors = 4, .stitches = {0}}), 0, 120));
    const std::tuple<std::string, Reader, Bytes> cases[] = {
        {"stitches, a colour change, jumps and moves", jef("jef"),
         records({0x05, 0xFB, 0x7F, 0x81, 0x80, 0x01, 0x02, 0xFD, 0x80, 0x02, 0x80, 0x7F, 0x80,
                  0x04, 0x01, 0x01})},
        {"unknown control codes are zero stitches, reading resumes two bytes later", jef("jef"),
         records({0x80, 0x03, 0x01, 0x02})},
        {"the end record", jef("jef"), records({0x80, 0x10, 0x01, 0x02})},
        {"a lone final byte is not read", jef("jef"), records({0x03, 0x04, 0x05})},
        {"a cut-off control record ends reading", jef("jef"), records({0x80, 0x02, 0x05})},
        {"bounds from every record", jef("jef"),
         janomeFile({.stitches = {0x0A, 0x05, 0x80, 0x02, 0xEC, 0, 0x80, 0x10}})},
        // Codes through the Janome table, an unknown one thread 220; undescribed blocks get
        // recoloured copies of the last thread.
        {"the header: JEF", jef("jef"), header},
        {"the header: JEF+", jef("jef+"), header},
        {"the header: another extension", jef("jefx"), header},
        {"51 bytes", jef("jef"), Bytes(51, 0)},
        {"52 bytes", jef("jef"), Bytes(52, 0)},
        {"a colour table beyond the file", jef("jef"),
         patched(janomeFile({.colors = 3}), 24, 0x7FFFFFFF)},
        {"missing tensions", jef("jef"), missingTensions.truncate(140)},
        {"stitch offset -1", jef("jef"), patched(janomeFile({}), 0, -1)},
        {"stitch offset beyond 2 GiB", jef("jef"), patched(janomeFile({}), 0, 0x7FFFFFFF)},
        {"stitch offset beyond the file", jef("jef"), patched(janomeFile({}), 0, 10000)},
        {"more header colours than blocks", jef("jef"),
         janomeFile({.colors = 5, .colorChanges = 1})},
        {"no colours", jef("jef"), janomeFile({.colors = 0})},
        {"no colours to copy", jef("jef"), janomeFile({.colors = 0, .colorChanges = 2})},
        {"JPX: its own layout, a colour mismatch accepted and its threads cut to the blocks", jpx,
         janomeFile({.colors = 5, .colorChanges = 1, .version = 2, .hoopCode = 1}, true)},
        {"JPX: a truncated control record ends the design", jpx,
         janomeFile({.stitches = {1, 2, 0x80, 1}}, true)},
        {"JPX: 119 bytes", jpx, Bytes(119, 0)},
        {"JPX: 120 bytes", jpx, Bytes(120, 0)},
        {"JPX: a colour table beyond the file", jpx, patched(janomeFile({}, true), 32, 100)},
        {"JPX: stitch offset -4", jpx, patched(janomeFile({}, true), 0, -4)},
    };
    std::string trace;
    for (const auto& [name, reader, bytes] : cases)
        trace += "# " + name + "\n" + describe(readWith(reader, bytes));
    expectGolden(trace, "read-jef-jpx.txt");
}
