// Designs that hostile files can make never reach a writer in a state it cannot encode: the
// export refuses them with a clear error before anything is written, and keeps the design.
// Colours outside the unit range are brought into it wherever they enter or leave.
#include <cmath>

#include "formats/read/readers.h"
#include "formats/write/pec_thumbnails.h"
#include "formats/write/writer_support.h"
#include "formats/write/writers.h"
#include "support/test_support.h"

namespace {

const char* const kExtensions[] = {"dst", "exp", "jef", "pcs", "pes", "pec"};

// A PCS file of n far jumps, each followed by a short stitch so that the jumps do not merge:
// a few kilobytes that become more than a million stitches once cut for any format.
Bytes farJumpsPcs(int n) {
    DesignBytes file({0x32, 2, 1, 0, 255, 0, 0, 0});
    file.u16le(2 * n).bytes({0}).u24le(1).bytes({0, 1, 0, 0, 3});
    for (int i = 0; i < n; ++i) {
        const std::uint32_t x = i % 2 == 0 ? 0x800001 : 1;
        file.bytes({0}).u24le(x).bytes({0, 1, 0, 0, 0});
        file.bytes({0}).u24le(x + 3).bytes({0, 1, 0, 0, 0});
    }
    return file.zeros(2);
}

class HostileExport : public ::testing::Test {
protected:
    std::filesystem::path file(std::string_view name) const { return folder_.file(name); }
    Bytes read(std::string_view name) const { return folder_.read(name); }
    ScratchFolder folder_;
};

HMKDesign named(HMKDesign design, const std::string& name) {
    design.setDesignName(name);
    return design;
}

TEST_F(HostileExport, DesignsNoWriterCanEncodeAreRefusedBeforeAnythingIsWritten) {
    struct Case {
        const char* behaviour;
        HMKDesign design;
        int code;
        bool keepsTheDesign;
    };
    HMKDesign farJumps;
    ASSERT_TRUE(importPcxDesignFromData(farJumps, farJumpsPcs(200)));
    const HMKThread thread = makeThread("1", "Undefined");
    const Case cases[] = {
        {"far jumps that would be cut into millions of stitches", farJumps, 15, true},
        {"jumps only, emptied by normalising", makeDesign({jump(3, 0), jump(0, 4)}, {thread}), 14,
         false},
        {"more threads than colour blocks", makeDesign({stitch(1, 1)}, {thread, thread}), 16, true},
        {"more colour blocks than threads",
         makeDesign({stitch(1, 1), change(0, 0), stitch(1, 1)}, {thread}), 16, true},
    };
    for (const Case& c : cases) {
        for (const char* extension : kExtensions) {
            HMKDesign design = c.design;
            HMKError error;
            const auto target = file(std::string("hostile.") + extension);
            ::testing::internal::CaptureStderr();
            EXPECT_FALSE(design.exportDesignToURL(target, &error)) << c.behaviour << extension;
            ::testing::internal::GetCapturedStderr();
            EXPECT_EQ(error.code, c.code) << c.behaviour << " " << extension;
            EXPECT_FALSE(std::filesystem::exists(target)) << c.behaviour << " " << extension;
            if (c.keepsTheDesign) {
                EXPECT_TRUE(design.stitches() == c.design.stitches()) << c.behaviour << extension;
                EXPECT_TRUE(design.threads() == c.design.threads()) << c.behaviour << extension;
            }
        }
    }
}

// The in-memory encoding the pipeline fuzzer drives is the export itself, file aside.
TEST_F(HostileExport, EncodingInMemoryGivesTheBytesTheExportWrites) {
    setWriterClock([] { return std::tm{}; });  // JEF files carry the time of writing
    for (const char* extension : kExtensions) {
        const std::string name = std::string("same.") + extension;
        HMKDesign exported = named(makeDesign({stitch(-150, 100), jump(300, -200), stitch(-5, 2)},
                                              {makeThread("1", "Undefined")}),
                                   name);
        HMKDesign encoded = exported;
        ASSERT_TRUE(exported.exportDesignToURL(file(name))) << extension;
        auto bytes = encodeDesignForExtension(encoded, extension, nullptr);
        ASSERT_TRUE(bytes) << extension;
        EXPECT_TRUE(bytes->bytes == read(name)) << extension;
    }
    setWriterClock({});
    HMKDesign design = makeDesign({stitch(1, 1)}, {makeThread("1", "Undefined")});
    HMKError error;
    EXPECT_FALSE(encodeDesignForExtension(design, "jef+", &error));
    EXPECT_EQ(error.code, 50);
}

TEST_F(HostileExport, ColourComponentsOutsideTheUnitRangeAreClamped) {
    HMKDesign design =
        named(makeDesign({stitch(1, 1)}, {HMKThread(HMKColor(2.5, -3, NAN), "Odd", "", "", "")}),
              "Odd.dst");
    // A colour made out of range is brought into it.
    EXPECT_EQ(design.threads()[0].color, HMKColor(1, 0, 0));

    // A side file can hold anything; what is read from it is in range too.
    folder_.write("Odd.threads",
                  "<plist><array><dict><key>threadfileversion</key><integer>2</integer><key>red"
                  "</key><real>2.5</real><key>green</key><real>1e300</real><key>blue</key>"
                  "<real>-1</real></dict></array></plist>");
    ASSERT_TRUE(design.importThreadsForDesign(file("Odd.dst")));
    EXPECT_EQ(design.threads()[0].color, HMKColor(1, 1, 0));

    design.setUseThreadFile(true);
    design.setDesignLocation(file("Odd.dst"));
    ASSERT_TRUE(design.exportDesignToURL(file("Odd.pcs")));
    EXPECT_EQ(slice(read("Odd.pcs"), 4, 4), (Bytes{0xFF, 0xFF, 0x00, 0x00}));
}

TEST_F(HostileExport, ThumbnailsOfDesignsFarWiderThanAnyHoopAreDrawnIntoABoundedRaster) {
    // The thumbnail is drawn at its own small scale, whatever the design's size.
    HMKDesign design =
        makeDesign({stitch(1, 1), jump(100'000, 0), stitch(1, 1)}, {makeThread("1", "Undefined")});
    EXPECT_TRUE(design.exportDesignToURL(file("wide.pec")));
    design.setBounds(-3e38f, -1, 3e38f, 1);
    EXPECT_EQ(design.exportPecBitmapToDataForThread(-1).size(), kPecThumbnailBytes);
}

TEST(DesignBounds, AnEmptyOrEndlessDesignHasAWidthAndHeight) {
    HMKDesign design;
    design.resetBounds();
    EXPECT_EQ(design.designWidth(), 0);
    EXPECT_EQ(design.designHeight(), 0);
    design.setBounds(-3e38f, -1, 3e38f, 1);
    EXPECT_EQ(design.designWidth(), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(design.designHeight(), 2);
}

}  // namespace
