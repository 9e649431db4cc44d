#include <gtest/gtest.h>

#include "formats/read/read_test_files.h"

namespace {

// The unread 512-byte header, then records of y magnitude, x magnitude and flag.
Bytes ksmFile(const Bytes& records) {
    return DesignBytes().zeros(512).bytes(records);
}

// Records of (1, 1) with the given flags.
Bytes ksmFlags(const Bytes& flags) {
    Bytes records;
    for (auto flag : flags)
        appendBytes(records, {0x01, 0x01, flag});
    return ksmFile(records);
}

ReadOutcome readKsm(const Bytes& bytes) {
    return readFile(&HMKDesign::importKsmDesignFromURL, bytes, "ksm");
}

}  // namespace

TEST(KsmReader, FileOf514BytesFailsWith170) {
    const auto read = readKsm(Bytes(514, 0));
    expectFailure(read, 170, "Unable to read KSM (file too small)");
    EXPECT_EQ(read.design.designType(), "KSM");
    EXPECT_TRUE(read.design.threads().empty());
}

TEST(KsmReader, DecodesWholeRecordsWithTheirSignBits) {
    const std::tuple<std::string_view, Bytes, Stitches> cases[] = {
        // 515 bytes; both sign bits set, and the first record is a jump.
        {"single record", {0x0A, 0x05, 0xE0}, {jump(-5, -10)}},
        {"sign bits", {2, 3, 0xC0, 2, 3, 0xA0, 2, 3, 0x80}, {jump(-3, 2), jump(3, -2), jump(3, 2)}},
        {"incomplete last record", {0x01, 0x01, 0x80, 0x01, 0x01}, {jump(1, 1)}},
        {"end record", {1, 1, 0x98, 1, 1, 0x88, 1, 1, 0x80}, {jump(1, 1)}},
    };
    for (const auto& [name, records, stitches] : cases) {
        SCOPED_TRACE(name);
        const auto read = readKsm(ksmFile(records));
        ASSERT_TRUE(read.ok);
        EXPECT_EQ(read.design.designVersion(), 10);
        EXPECT_EQ(read.design.threads(), std::vector{HMKThread::fromPaletteKey("1", "Undefined")});
        EXPECT_EQ(read.design.stitches(), stitches);
    }
}

TEST(KsmReader, FlagWithoutBit7FailsWith171AndKeepsEarlierStitches) {
    const auto read = readKsm(ksmFlags({0x98, 0x80, 0x7F, 0x80}));
    expectFailure(read, 171, "Unable to read KSM (invalid stich data)");
    EXPECT_EQ(read.design.stitches().size(), 2u);
}

TEST(KsmReader, FlagsMarkJumpRunsAndColourChanges) {
    const std::tuple<std::string_view, Bytes, std::string> cases[] = {
        {"first records jump until a run ends", {0x80, 0x80, 0x98, 0x80}, "JJJS"},
        {"run end matches under its mask", {0xB8, 0x80}, "JS"},
        {"0x89 starts a run", {0x98, 0x80, 0x89, 0x80, 0x98, 0x80}, "JSJJJS"},
        {"0x87 under its mask starts a run", {0x98, 0x97, 0x80, 0x98, 0x80}, "JJJJS"},
        {"colour change is a jump and starts a run",
         {0x98, 0x80, 0x8B, 0x80, 0x98, 0x80},
         "JSXJJS"},
        {"colour change matches under its mask", {0x98, 0xEC, 0x80, 0x98, 0x80}, "JXJJS"},
    };
    for (const auto& [name, flags, kinds] : cases) {
        SCOPED_TRACE(name);
        const auto read = readKsm(ksmFlags(flags));
        ASSERT_TRUE(read.ok);
        EXPECT_EQ(kindsOf(read.design.stitches()), kinds);
    }
}

TEST(KsmReader, ColourChangesAddThreadsKeyedOneToTwenty) {
    const auto read = readKsm(ksmFlags(Bytes(21, 0x8B)));
    ASSERT_TRUE(read.ok);
    ASSERT_EQ(read.design.threads().size(), 22u);
    for (std::size_t i = 0; i < 22; ++i) {
        EXPECT_EQ(read.design.threads()[i],
                  HMKThread::fromPaletteKey(std::to_string(i % 20 + 1), "Undefined"));
    }
}

TEST(KsmReader, EveryRecordWidensTheBounds) {
    const auto read = readKsm(ksmFile({0x00, 0x0A, 0x98, 0x05, 0x1E, 0xC0, 0x0A, 0x05, 0xA0}));
    ASSERT_TRUE(read.ok);
    EXPECT_EQ(boundsOf(read.design), (Bounds{-20, -5, 10, 5}));
}
