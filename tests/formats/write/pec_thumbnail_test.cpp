// The PES/PEC thumbnails: where the design lands in the 48 x 38 frame, which pixels are ink,
// and the per-thread thumbnails of PES files composing the whole design's.
#include <gtest/gtest.h>

#include "formats/write/pec_thumbnails.h"
#include "render/random_designs.h"
#include "support/test_support.h"

namespace {

bool inked(const Bytes& thumbnail, int x, int y) {
    return (thumbnail[static_cast<std::size_t>(y) * 6 + x / 8] >> (x % 8)) & 1;
}

// The pixels of the picture area (columns 3 to 44, rows 3 to 34) that are ink.
int inkInPicture(const Bytes& thumbnail) {
    int count = 0;
    for (int y = 3; y <= 34; ++y) {
        for (int x = 3; x <= 44; ++x) {
            count += inked(thumbnail, x, y);
        }
    }
    return count;
}

TEST(PecThumbnail, DesignIsFittedToFortyTwoByThirtyTwoAndCentred) {
    const struct {
        const char* name;
        HMKDesign design;
        HMKPecThumbnailLayout expected;
    } cases[] = {
        // 20 x 0 units and 10 more on every side.
        {"wide",
         makeDesign({stitch(3, -4), stitch(20, 0)}, {makeThread("1", "Brother")}),
         {40, 20, -7, -14, 42, 21, 3, 8}},
        // 120 x 620: 32 rows high, 120 * 32 / 620 = 6.19 columns wide.
        {"tall",
         makeDesign({stitch(0, 300), stitch(100, -600)}, {makeThread("1", "Brother")}),
         {120, 620, -10, -310, 6, 32, 21, 3}},
    };
    for (const auto& c : cases) {
        const HMKPecThumbnailLayout layout = pecThumbnailLayout(c.design);
        const HMKPecThumbnailLayout& e = c.expected;
        EXPECT_EQ((std::vector<double>{double(layout.fullWidth), double(layout.fullHeight),
                                       layout.left, layout.bottom, double(layout.pictureWidth),
                                       double(layout.pictureHeight), double(layout.pictureLeft),
                                       double(layout.pictureTop)}),
                  (std::vector<double>{double(e.fullWidth), double(e.fullHeight), e.left, e.bottom,
                                       double(e.pictureWidth), double(e.pictureHeight),
                                       double(e.pictureLeft), double(e.pictureTop)}))
            << c.name;
    }
}

TEST(PecThumbnail, InkIsTheOutlineOfThePictureAndWhatIsNoBrighterThan179) {
    for (std::uint32_t level : {179u, 180u}) {
        // A grey block over columns 10 to 19, rows 10 to 19.
        HMKRaster picture(kPecThumbnailWidth, kPecThumbnailHeight);
        for (int y = 10; y < 20; ++y) {
            for (int x = 10; x < 20; ++x) {
                picture.pixels[y * kPecThumbnailWidth + x] =
                    0xFF000000u | level << 16 | level << 8 | level;
            }
        }
        const Bytes bits = pecThumbnailBits(picture);
        EXPECT_TRUE(inked(bits, 10, 15)) << level;
        EXPECT_TRUE(inked(bits, 19, 19)) << level;
        EXPECT_EQ(inked(bits, 15, 15), level == 179) << level;
        EXPECT_FALSE(inked(bits, 9, 15)) << level;
        EXPECT_EQ(inkInPicture(bits), level == 179 ? 100 : 36) << level;
        // The frame: rows 0 to 2 fixed, the rounded sides at columns 1 and 46.
        EXPECT_EQ(slice(bits, 6, 6), (Bytes{0xF0, 0xFF, 0xFF, 0xFF, 0xFF, 0x0F}));
        EXPECT_TRUE(inked(bits, 1, 10) && inked(bits, 46, 10) && inked(bits, 2, 3));
    }
}

TEST(PecThumbnail, StitchesAreDrawnWithYUpAndEachThreadOnItsOwn) {
    // A dark thread along the top, a light one along the bottom (the first stitch after the
    // start or a colour change only brings the needle there).
    HMKDesign design = makeDesign({stitch(0, 200), stitch(200, 0), jump(-200, -200), change(0, 0),
                                   stitch(1, 0), stitch(199, 0)},
                                  {makeThread("1", "Brother", HMKColor(0.1, 0.1, 0.1)),
                                   makeThread("2", "Brother", HMKColor(1, 1, 1))});
    design.setDisplayRange({0, design.stitches().size()});
    const Bytes thumbnails = pecThumbnails(design, true);
    ASSERT_EQ(thumbnails.size(), 3 * kPecThumbnailBytes);
    const Bytes whole = slice(thumbnails, 0, kPecThumbnailBytes);
    const Bytes top = slice(thumbnails, kPecThumbnailBytes, kPecThumbnailBytes);
    const Bytes bottom = slice(thumbnails, 2 * kPecThumbnailBytes, kPecThumbnailBytes);
    EXPECT_TRUE(inked(whole, 24, 4) && inked(top, 24, 4));
    EXPECT_TRUE(inked(whole, 24, 33) && inked(bottom, 24, 33));
    EXPECT_FALSE(inked(top, 24, 33) || inked(bottom, 24, 4));
    EXPECT_EQ(whole, design.exportPecBitmapToDataForThread(-1));
    EXPECT_EQ(top, design.exportPecBitmapToDataForThread(0));
}

TEST(PecThumbnail, WholeDesignComposedFromItsThreadsIsTheWholeDesignDrawnAtOnce) {
    std::mt19937 random(5);
    for (int i = 0; i < 30; ++i) {
        const HMKDesign design = randomDesign(random, 300, 5);
        EXPECT_EQ(slice(pecThumbnails(design, true), 0, kPecThumbnailBytes),
                  design.exportPecBitmapToDataForThread(-1))
            << i;
    }
}

TEST(PecThumbnail, DesignWithoutStitchesGivesEmptyFrames) {
    HMKDesign design;
    design.threads().push_back(makeThread("1", "Brother"));
    const Bytes thumbnails = pecThumbnails(design, true);
    ASSERT_EQ(thumbnails.size(), 2 * kPecThumbnailBytes);
    EXPECT_EQ(inkInPicture(thumbnails), 0);
    EXPECT_EQ(slice(thumbnails, 0, kPecThumbnailBytes),
              slice(thumbnails, kPecThumbnailBytes, kPecThumbnailBytes));
}

}  // namespace
