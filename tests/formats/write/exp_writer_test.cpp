#include <gtest/gtest.h>

#include "write_test_support.h"

namespace {

class ExpWriter : public WriterTest {};

TEST_F(ExpWriter, WritesMovesAndEscapesWithoutHeaderOrEndMarker) {
    HMKDesign design = makeDesign({change(0, 0), plain(3, -4), jump(0.5f, 0.5f),
                                   change(0.5f, 0.5f, true), change(-5, 127), plain(-128, 0)},
                                  placeholderThreads(4));
    ASSERT_TRUE(design.exportExpDesignToURL(file("a.exp")));
    EXPECT_EQ(read(file("a.exp")),
              bytesOf({
                  0x80, 0x01, 0x00, 0x00, 0x00, 0x00,              // first stitch a change
                  0x03, 0xFC,                                      // -4 as a signed byte
                  0x80, 0x02, 0x00, 0x00,                          // floor(0.5)
                  0x80, 0x01, 0x00, 0x00, 0x80, 0x02, 0x01, 0x01,  // floor(1.0)
                  0x80, 0x01, 0x00, 0x00, 0xFB, 0x7F,              // y written as held
                  0x80, 0x00,
              }));
}

}  // namespace
