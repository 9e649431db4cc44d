// PCS, PCD and PCQ files made byte by byte, and what the reader makes of them against
// tests/golden/read-pcs.txt.
#include "formats/read/readers.h"
#include "support/test_support.h"

namespace {

constexpr std::uint8_t kPcd = 0;
constexpr std::uint8_t kPcq = 1;
constexpr std::uint8_t kSmallHoop = 2;  // a PCS file in Pfaff "S", 80 x 80 mm
constexpr std::uint8_t kLargeHoop = 3;  // a PCS file in Pfaff "L", 120 x 115 mm
constexpr std::uint8_t kColor = 3;
constexpr std::uint8_t kJump = 4;

struct PcsRecord {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint8_t flag = 0;
    std::uint8_t colorIndex = 0;
};

// A 24-bit coordinate as the format stores it: negatives one below two's complement.
std::uint32_t coordinate(int value) {
    return static_cast<std::uint32_t>(value < 0 ? value + 0xFFFFFF : value);
}

Bytes pcsFile(std::uint8_t type, const std::vector<std::array<std::uint8_t, 3>>& palette,
              std::uint16_t stitchCount, const std::vector<PcsRecord>& records,
              std::size_t trailing = 2) {
    DesignBytes bytes = {0x32, type};
    bytes.u16le(static_cast<std::uint32_t>(palette.size()));
    for (const auto& color : palette)
        bytes.bytes({color[0], color[1], color[2], 0});
    bytes.u16le(stitchCount);
    for (const auto& record : records)
        bytes.bytes({record.colorIndex})
            .u24le(record.x)
            .zeros(1)
            .u24le(record.y)
            .bytes({record.flag});
    return bytes.zeros(trailing);
}
// A PCD file (no palette, no hoop) counting every record as a stitch record.
Bytes pcdFile(const std::vector<PcsRecord>& records) {
    return pcsFile(kPcd, {}, static_cast<std::uint16_t>(records.size()), records);
}

}  // namespace

TEST(PcxReader, ReadsWhatTheGoldenFileRecords) {
    const std::pair<std::string, Bytes> cases[] = {
        {"fewer than six bytes", {0x32, 2, 0, 0, 0}},
        {"a palette running past the end", DesignBytes({0x32, 3, 2, 0}).zeros(6)},
        // The size check asks for two bytes more than the counted records need.
        {"records short of two extra bytes", pcsFile(kPcd, {}, 2, {{}, {}}, 1)},
        {"no magic", {0x33, 2, 0, 0, 0, 0}},
        {"type four", pcsFile(4, {}, 1, {{}})},
        {"seventeen colours", DesignBytes({0x32, 3, 17, 0}).zeros(4 * 17 + 13)},
        {"a colour index outside the palette",
         pcsFile(kLargeHoop, {{1, 2, 3}}, 2,
                 {{.flag = kColor}, {.x = 360}, {.flag = kColor, .colorIndex = 1}, {}})},
        // 721 x 1.6666666667 = 1201.7 exceeds 1200; y is limited to 1150.
        {"x beyond 1200", pcdFile({{}, {.x = 6}, {.x = 721}})},
        {"y beyond 1150", pcdFile({{}, {.y = 691}})},
        // 150 raw units are 250 in 0.1 mm, 60 are 100, -73 are -121.7.
        {"PCD: moves beyond 12 mm are jumps",
         pcdFile({{}, {.x = 150}, {.x = 210}, {.x = 210, .y = coordinate(-73)}})},
        {"PCQ: a repeated position marks the move before as a jump",
         pcsFile(kPcq, {}, 4, {{}, {.x = 60}, {.x = 60}, {.x = 66}})},
        {"PCS: flag 4 is a jump", pcsFile(kSmallHoop, {}, 2, {{}, {.x = 6, .flag = kJump}})},
        {"PCD: flag 4 is a stitch", pcsFile(kPcd, {}, 2, {{}, {.x = 6, .flag = kJump}})},
        {"PCQ: flag 3 is a stitch, the bounds stretch to the origin horizontally",
         pcsFile(kPcq, {}, 2, {{}, {.x = 60, .flag = kColor}})},
        {"PCD: absolute positions become scaled moves after the first",
         pcdFile({{.x = 60, .y = 30},
                  {.x = 0xFFFFFF, .y = 0x800000},  // 0 and -8388607
                  {.x = coordinate(-2000), .y = 689},
                  {.x = 719, .y = 689}})},
        // Hoop "S" is 80 mm: 400 units come off both axes; the needle starts at the centre,
        // where the first colour record leaves it.
        {"PCS: positions about the hoop centre",
         pcsFile(kSmallHoop, {{255, 128, 0}}, 2,
                 {{.flag = kColor}, {.x = 300, .y = 210}, {.x = 360, .y = 210}})},
        // Colour records are not counted: a counted record after the last is never read.
        {"PCS: counted stitch records",
         pcsFile(kLargeHoop, {{1, 2, 3}}, 2,
                 {{.flag = kColor}, {.x = 360}, {.x = 366}, {.x = 9999}})},
        {"PCS: no stitch records", pcsFile(kLargeHoop, {}, 0, {{.flag = kColor}})},
        {"PCS: the file ends first",
         pcsFile(kLargeHoop, {{1, 2, 3}}, 2, {{.flag = kColor}, {.x = 6}})},
        // Either coordinate 0: the colour record does not move.
        {"PCS: colour records add palette threads and colour changes",
         pcsFile(kLargeHoop, {{255, 128, 0}, {0, 0, 255}}, 3,
                 {{.flag = kColor},
                  {.x = 360, .y = 405},
                  {.flag = kColor, .colorIndex = 1},
                  {.x = 420, .y = 405},
                  {.y = 30, .flag = kColor},
                  {.x = 426, .y = 405}})},
        {"PCS: a colour record away from the origin moves and raises the version",
         pcsFile(kLargeHoop, {{1, 2, 3}}, 2,
                 {{.flag = kColor},
                  {.x = 360, .y = 345},
                  {.x = 366, .y = 351, .flag = kColor},
                  {.x = 366, .y = 351}})},
    };
    std::string trace;
    for (const auto& [name, bytes] : cases)
        trace += "# " + name + "\n" + describe(readWith(importPcxDesignFromData, bytes));
    expectGolden(trace, "read-pcs.txt");
}
