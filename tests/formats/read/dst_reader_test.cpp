// DST files made byte by byte, and what the reader makes of them against
// tests/golden/read-dst.txt.
#include "formats/read/readers.h"
#include "support/test_support.h"

namespace {

constexpr std::string_view kAllTags =
    "LA:rose            \rST:      1\rCO:  0\r+X:    0\r-X:    0\r+Y:    0\r-Y:    0\r"
    "AX:+    0\rAY:+    0\r";

// A 512-byte header of the tags padded with blanks, then the bytes as given.
DesignBytes dstFile(std::initializer_list<std::uint8_t> records, std::string_view tags = kAllTags) {
    return DesignBytes().text(tags).padTo(512, ' ').bytes(records);
}

std::string withoutTag(std::string_view tag) {
    std::string tags(kAllTags);
    return tags.replace(tags.find(tag), 3, "   ");
}

}  // namespace

TEST(DstReader, ReadsWhatTheGoldenFileRecords) {
    const std::pair<std::string, Bytes> cases[] = {
        // Each movement bit in one row, so a wrong weight shows in that row's sum.
        {"x bits plus", dstFile({0x05, 0x05, 0x07, 0, 0, 0xF3})},
        {"x bits minus", dstFile({0x0A, 0x0A, 0x0B, 0, 0, 0xF3})},
        {"y bits plus", dstFile({0xA0, 0xA0, 0x23, 0, 0, 0xF3})},
        {"y bits minus", dstFile({0x50, 0x50, 0x13, 0, 0, 0xF3})},
        {"jump", dstFile({0, 0, 0x83, 0, 0, 0xF3})},
        {"colour change", dstFile({0, 0, 0xC3, 0, 0, 0xF3})},
        {"all bits: a colour change without movement", dstFile({0xFF, 0xFF, 0xFF, 0, 0, 0xF3})},
        {"end record first", dstFile({0, 0, 0xF3, 0, 0, 0xF3})},
        {"invalid function code 0x43", dstFile({0, 0, 0x43, 0, 0, 0xF3})},
        {"invalid function code 0x00", dstFile({0, 0, 0x00, 0, 0, 0xF3})},
        {"invalid function code 0x01", dstFile({0, 0, 0x01, 0, 0, 0xF3})},
        {"the smallest file with a record", dstFile({0x01, 0, 0x03, 0x1A})},
        // Files without an end record: a stitch or jump in the last three bytes is kept,
        // anything else there is no stitch.
        {"a last stitch without an end record", dstFile({0x01, 0, 0x03, 0x02, 0, 0x03})},
        {"a last jump without an end record", dstFile({0x01, 0, 0x03, 0x02, 0, 0x83})},
        {"a last colour change without an end record", dstFile({0x01, 0, 0x03, 0, 0, 0xC3})},
        {"a last record of no kind", dstFile({0x01, 0, 0x03, 0, 0, 0x1A})},
        {"nothing after the end record", dstFile({0x01, 0, 0x03, 0, 0, 0xF3, 0, 0, 0x00, 0x1A})},
        {"empty: one placeholder thread, the empty bounds", dstFile({0, 0, 0xF3, 0x1A})},
        // +9 x as a jump, +1 y as a colour change, -27 x as a stitch, then an invalid record.
        {"what was read before an invalid record stays",
         dstFile(
             {0x04, 0, 0x83, 0x80, 0, 0xC3, 0, 0x08, 0x03, 0, 0, 0x00, 0x01, 0, 0x03, 0, 0, 0xF3})},
        {"515 bytes: no header", dstFile({0, 0, 0xF3})},
        {"no LA:", dstFile({0, 0, 0xF3, 0x1A}, withoutTag("LA:"))},
        {"no ST:", dstFile({0, 0, 0xF3, 0x1A}, withoutTag("ST:"))},
        {"no CO:", dstFile({0, 0, 0xF3, 0x1A}, withoutTag("CO:"))},
        {"no +X:", dstFile({0, 0, 0xF3, 0x1A}, withoutTag("+X:"))},
        {"no -X:", dstFile({0, 0, 0xF3, 0x1A}, withoutTag("-X:"))},
        {"no +Y:", dstFile({0, 0, 0xF3, 0x1A}, withoutTag("+Y:"))},
        {"no -Y:", dstFile({0, 0, 0xF3, 0x1A}, withoutTag("-Y:"))},
        {"no AX:", dstFile({0, 0, 0xF3, 0x1A}, withoutTag("AX:"))},
        {"no AY:", dstFile({0, 0, 0xF3, 0x1A}, withoutTag("AY:"))},
        // Tags count only within the first 511 characters.
        {"LA: ending on character 512",
         dstFile({0, 0, 0xF3, 0x1A}, withoutTag("LA:")).putLe(509, 0x3A414C, 3)},
        {"LA: ending on character 511",
         dstFile({0, 0, 0xF3, 0x1A}, withoutTag("LA:")).putLe(508, 0x3A414C, 3)},
    };
    std::string trace;
    for (const auto& [name, bytes] : cases)
        trace += "# " + name + "\n" + describe(readWith(importDstDesignFromData, bytes));
    expectGolden(trace, "read-dst.txt");
}
