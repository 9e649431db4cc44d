#include <gtest/gtest.h>

#include "model/color.h"
#include "model/format_text.h"
#include "model/stitch.h"
#include "model/thread.h"

TEST(Stitch, NullStitchIgnoresFlagsAndNegativeZero) {
    EXPECT_TRUE(HMKStitch(0, 0, true, true).isNullStitch());
    EXPECT_TRUE(HMKStitch(0.0f, -0.0f, false, false).isNullStitch());
    EXPECT_FALSE(HMKStitch(0.0f, 1e-30f, false, false).isNullStitch());
}

TEST(Stitch, CopyKeepsSelectionAndNewStitchIsUnselected) {
    HMKStitch stitch(1.5f, -2.25f, true, false);
    EXPECT_FALSE(stitch.isSelected);
    stitch.isSelected = true;
    HMKStitch copy = stitch;
    EXPECT_TRUE(copy.isSelected);
    EXPECT_EQ(copy, stitch);
    EXPECT_EQ(stitch.description(),
              "Embroidery Stitch (deltaX=1.50, deltaY=-2.25, Jump-Stitch=1, Color-Change=0), "
              "selected=1");
}

TEST(Color, DefaultIsLightGreyAndEqualColorsHashAlike) {
    HMKColor grey;
    EXPECT_EQ(grey.red(), 0.8);
    EXPECT_EQ(grey.description(), "RGB color (204 / 204 / 204)");
    HMKColor a(1, 0, 0), b(1, 0, 0);
    EXPECT_EQ(a, b);
    EXPECT_EQ(a.hash(), 255000000u);
    EXPECT_EQ(a.hash(), b.hash());
    EXPECT_NE(a, HMKColor(1, 0, 1e-12));
}

TEST(Thread, NewThreadDefaultsAndIndependentCopies) {
    HMKThread thread(HMKColor(0, 0, 1), "Blue", "405", "Brother", "Brother");
    EXPECT_EQ(thread.tension, 13);
    EXPECT_EQ(thread.length, 0.0f);
    EXPECT_TRUE(thread.isShown);
    HMKThread copy = thread;
    copy.color = HMKColor(1, 1, 1);
    EXPECT_EQ(thread.color, HMKColor(0, 0, 1));
    thread.addLength(2.5f);
    thread.addLength(1.0f);
    EXPECT_EQ(thread.length, 3.5f);
    EXPECT_EQ(thread.description(),
              "Embroidery Thread: color=RGB color (0 / 0 / 255) of palette Brother, name=Blue, "
              "key=405, length=3.5, tension=13");
}

TEST(FormatText, FillsPlaceholdersInOrderAndByPosition) {
    EXPECT_EQ(formatText("%@ (%@ Version %1.1f)", {"Rose", "DST", 1.0}), "Rose (DST Version 1.0)");
    EXPECT_EQ(formatText("%i stitches, %d%%", {42, 7}), "42 stitches, 7%");
    EXPECT_EQ(formatText("%2$@ %1$@", {"world", "hello"}), "hello world");
    EXPECT_EQ(formatText("Individual color (%i, %i, %i)", {204.0, 0.4, 127.5}),
              "Individual color (204, 0, 128)");
    EXPECT_EQ(formatText("missing %@ stays empty", {}), "missing  stays empty");
}
