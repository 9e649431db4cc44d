// A multi-colour PCS file declares every stitch record it holds, so reading it back keeps them.
#include <gtest/gtest.h>

#include "write_test_support.h"

namespace {

class PcsRecordCount : public WriterTest {};

TEST_F(PcsRecordCount, MultiColourRoundTripKeepsEveryRecord) {
    HMKDesign design = makeDesign({plain(10, 0), plain(0, 10), change(5, 5), plain(10, 0),
                                   change(0, 0), plain(-10, 0), plain(0, -10)},
                                  placeholderThreads(3));
    HMKError error;
    ASSERT_TRUE(design.exportPcsDesignToURL(file("out.pcs"), &error)) << error.message();
    HMKDesign read;
    ASSERT_TRUE(read.importDesignFromURL(file("out.pcs"), &error)) << error.message();
    // Each colour change comes back as a colour record of its own before its stitch record.
    EXPECT_EQ(read.stitches().size(), design.stitches().size() + 2);
    EXPECT_EQ(read.threads().size(), 3u);
    EXPECT_EQ(read.lastStitch(), design.lastStitch());
}

}  // namespace
