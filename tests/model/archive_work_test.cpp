// Archives are decoded in work proportional to their size: an archive that references one
// large object from everywhere, or holds moves that are no numbers, is refused as damaged.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "model/archive.h"
#include "model/binary_plist.h"

namespace {

using Ref = HMKBinaryPlistWriter::Ref;

// A keyed archive whose design lists `references` stitches, each the same stitch object
// with the given keys and values.
std::vector<std::uint8_t> archiveOfOneStitch(
    std::size_t references, const std::vector<std::pair<std::string, float>>& keys) {
    HMKBinaryPlistWriter plist;
    std::vector<Ref> objects{plist.addString("$null")};
    auto object = [&](Ref ref) {
        objects.push_back(ref);
        return plist.addUid(objects.size() - 1);
    };
    auto classNamed = [&](const char* name) {
        return object(plist.addDictionary(
            std::vector<Ref>{plist.addString("$classname"), plist.addString("$classes")},
            std::vector<Ref>{plist.addString(name),
                             plist.addArray(std::vector<Ref>{plist.addString(name)})}));
    };
    std::vector<Ref> stitchKeys{plist.addString("$class")};
    std::vector<Ref> stitchValues{classNamed("HMKStitch")};
    for (const auto& [key, value] : keys) {
        stitchKeys.push_back(plist.addString(key));
        stitchValues.push_back(plist.addReal(value));
    }
    const Ref stitch = object(plist.addDictionary(stitchKeys, stitchValues));
    const Ref list = object(plist.addDictionary(
        std::vector<Ref>{plist.addString("$class"), plist.addString("NS.objects")},
        std::vector<Ref>{classNamed("NSArray"),
                         plist.addArray(std::vector<Ref>(references, stitch))}));
    const Ref design = object(plist.addDictionary(
        std::vector<Ref>{plist.addString("$class"), plist.addString("HMKEmbroiderDesignStitches")},
        std::vector<Ref>{classNamed("HMKDesign"), list}));
    const Ref top =
        plist.addDictionary(std::vector<Ref>{plist.addString("root")}, std::vector<Ref>{design});
    return plist.finish(plist.addDictionary(
        std::vector<Ref>{plist.addString("$archiver"), plist.addString("$objects"),
                         plist.addString("$top")},
        std::vector<Ref>{plist.addString("NSKeyedArchiver"), plist.addArray(objects), top}));
}

std::vector<std::pair<std::string, float>> manyKeys(int count) {
    std::vector<std::pair<std::string, float>> keys;
    for (int i = 0; i < count; ++i) {
        keys.emplace_back("extra" + std::to_string(i), 1.0f);
    }
    return keys;
}

TEST(ArchiveWork, ArchivesThatWouldTakeWorkBeyondTheirSizeOrHoldNoNumbersAreRefused) {
    struct Case {
        const char* behaviour;
        std::vector<std::uint8_t> archive;
        const char* reason;  // none: the archive decodes
    };
    const float infinity = std::numeric_limits<float>::infinity();
    const Case cases[] = {
        {"a plain stitch listed often",
         archiveOfOneStitch(100'000, {{"HMKEmbroideryStitchDeltaX", 3}}), nullptr},
        {"a stitch of 250 keys listed 100,000 times", archiveOfOneStitch(100'000, manyKeys(250)),
         "work"},
        {"an endless move", archiveOfOneStitch(1, {{"HMKEmbroideryStitchDeltaX", infinity}}),
         "not a finite number"},
        {"a move that is no number",
         archiveOfOneStitch(1, {{"HMKEmbroideryStitchDeltaY", std::nanf("")}}),
         "not a finite number"},
    };
    for (const Case& c : cases) {
        HMKError error;
        const auto design = unarchiveDesign(c.archive, &error);
        if (!c.reason) {
            ASSERT_TRUE(design) << c.behaviour << ": " << error.failureReason;
            EXPECT_EQ(design->stitches().size(), 100'000u) << c.behaviour;
            continue;
        }
        EXPECT_FALSE(design) << c.behaviour;
        EXPECT_EQ(error.code, kHMKArchiveDamaged) << c.behaviour;
        EXPECT_THAT(error.failureReason, ::testing::HasSubstr(c.reason)) << c.behaviour;
    }
}

}  // namespace
