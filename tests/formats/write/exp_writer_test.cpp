#include "support/test_support.h"

TEST(ExpWriter, WritesMovesAndEscapesWithoutHeaderOrEndMarker) {
    HMKDesign design = makeDesign({change(), stitch(3, -4), jump(0.5f, 0.5f),
                                   change(0.5f, 0.5f, true), change(-5, 127), stitch(-128, 0)});
    EXPECT_EQ(writtenBy(&HMKDesign::exportExpDesignToURL, design),
              (Bytes{
                  0x80, 0x01, 0x00, 0x00, 0x00, 0x00,              // first stitch a change
                  0x03, 0xFC,                                      // -4 as a signed byte
                  0x80, 0x02, 0x00, 0x00,                          // floor(0.5)
                  0x80, 0x01, 0x00, 0x00, 0x80, 0x02, 0x01, 0x01,  // floor(1.0)
                  0x80, 0x01, 0x00, 0x00, 0xFB, 0x7F,              // y written as held
                  0x80, 0x00,
              }));
}
