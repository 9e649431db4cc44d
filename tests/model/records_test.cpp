// The value records: stitches, colours and threads, and the text formatting they share.
#include <gtest/gtest.h>

#include "model/format_text.h"
#include "model/strings.h"
#include "support/test_support.h"

TEST(Records, NullStitchesDefaultsDescriptionsAndHashes) {
    EXPECT_TRUE(HMKStitch(0, 0, true, true).isNullStitch());
    EXPECT_TRUE(HMKStitch(0.0f, -0.0f, false, false).isNullStitch());
    EXPECT_FALSE(HMKStitch(0.0f, 1e-30f, false, false).isNullStitch());
    EXPECT_FALSE(HMKStitch(1, 0, false, false).isSelected);
    EXPECT_EQ(
        selected(jump(1.5f, -2.25f)).description(),
        "Embroidery Stitch (deltaX=1.50, deltaY=-2.25, Jump-Stitch=1, Color-Change=0), selected=1");

    EXPECT_EQ(HMKColor().description(), "RGB color (204 / 204 / 204)");
    EXPECT_EQ(HMKColor(1, 0, 0).hash(), 255000000u);
    EXPECT_NE(HMKColor(1, 0, 0), HMKColor(1, 0, 1e-12));

    HMKThread thread(HMKColor(0, 0, 1), "Blue", "405", "Brother", "Brother");
    EXPECT_EQ(std::tuple(thread.tension, thread.length, thread.isShown),
              std::tuple(13, 0.0f, true));
    thread.addLength(2.5f);
    thread.addLength(1.0f);
    EXPECT_EQ(
        thread.description(),
        "Embroidery Thread: color=RGB color (0 / 0 / 255) of palette Brother, name=Blue, key=405, "
        "length=3.5, tension=13");
}

TEST(FormatText, FillsPlaceholdersInOrderAndByPosition) {
    EXPECT_EQ(formatText("%@ (%@ Version %1.1f)", {"Rose", "DST", 1.0}), "Rose (DST Version 1.0)");
    EXPECT_EQ(formatText("%i stitches, %d%%", {42, 7}), "42 stitches, 7%");
    EXPECT_EQ(formatText("%2$@ %1$@", {"world", "hello"}), "hello world");
    EXPECT_EQ(formatText("Individual color (%i, %i, %i)", {204.0, 0.4, 127.5}),
              "Individual color (204, 0, 128)");
    EXPECT_EQ(formatText("missing %@ stays empty", {}), "missing  stays empty");
}

TEST(Strings, LookUpTheTableOrFallBackToTheDefault) {
    EXPECT_TRUE(hasLocalizedString("Janome", "002"));
    EXPECT_EQ(localizedString("Janome", "002", "fallback"), "Black");
    EXPECT_FALSE(hasLocalizedString("Janome", "no such key"));
    EXPECT_EQ(localizedString("No Such Table", "002", "fallback"), "fallback");
}

TEST(Error, MadeOnlyWhenAPlaceIsGiven) {
    EXPECT_FALSE(fail(nullptr, 111, "text"));
    HMKError error;
    EXPECT_FALSE(fail(&error, 111, "Unable to import DST file (invalid function codes)."));
    expectDesignError(error, 111, "Unable to import DST file (invalid function codes).");
    EXPECT_TRUE(error.domain.ends_with(".ErrorDomain"));
}
