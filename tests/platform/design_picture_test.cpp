// Pictures of designs: the format follows the extension, the design is fitted with y up, and
// failures write nothing.
#include <gtest/gtest.h>

#include <QImage>
#include <cerrno>

#include "platform/design_picture.h"
#include "support/test_support.h"

namespace {

// An upside-down "L": a red stitch along the top (y = 100) from x 0 to 200, then down the
// right side to y = 0. In 240 x 240 pixels with a 20 pixel margin the design spans 203.5 x
// 103.5 units with the stitch width, so it is scaled by 200 / 203.5 and the top stitch lies
// on pixel row 70.
HMKDesign redCorner() {
    return makeDesign({stitch(0, 100), stitch(200, 0), stitch(0, -100)},
                      {makeThread("1", "", HMKColor(1, 0, 0))});
}
HMKPictureOptions smallPicture(std::int32_t thread = -1) {
    HMKPictureOptions options;
    options.widthPixels = options.heightPixels = 240;
    options.thread = thread;
    return options;
}

}  // namespace

TEST(DesignPicture, FormatFollowsTheExtensionInAnyCase) {
    EXPECT_EQ(pictureFormatForPath("dir/B.PNG"), HMKPictureFormat::png);
    EXPECT_EQ(pictureFormatForPath("c.svg"), HMKPictureFormat::svg);
    EXPECT_EQ(pictureFormatForPath("d.Pdf"), HMKPictureFormat::pdf);
    for (const char* file : {"e.jpg", "png", "f.png.txt"})
        EXPECT_FALSE(pictureFormatForPath(file)) << file;
}

TEST(DesignPicture, FitsTheStitchesWithYPointingUp) {
    // The top stitch in the thread colour at its core, the right one down the right side,
    // nothing along the bottom; the background fills the picture; another thread is not drawn.
    const QImage image =
        renderDesignImage(redCorner(), smallPicture()).convertToFormat(QImage::Format_ARGB32);
    ASSERT_EQ(image.size(), QSize(240, 240));
    EXPECT_EQ(image.pixelColor(120, 70), QColor(255, 0, 0));
    EXPECT_EQ(image.pixelColor(218, 120), QColor(255, 0, 0));
    EXPECT_EQ(image.pixelColor(120, 169).alpha(), 0);
    EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0);
    HMKPictureOptions background = smallPicture();
    background.background = HMKColor(0, 0, 1);
    EXPECT_EQ(renderDesignImage(redCorner(), background).pixelColor(0, 0), QColor(0, 0, 255));
    EXPECT_EQ(renderDesignImage(redCorner(), smallPicture(1)).pixelColor(120, 70).alpha(), 0);
    // In 3D the capsule's gradient (clipped to the capsule's arcs) lightens the thread colour
    // at the stitch's middle; with jumps shown the first stitch is a dashed line.
    HMKPictureOptions shaded = smallPicture();
    shaded.show3D = shaded.showJumps = true;
    const QImage image3D = renderDesignImage(redCorner(), shaded);
    EXPECT_EQ(image3D.pixelColor(120, 70).alpha(), 255);
    EXPECT_GT(image3D.pixelColor(120, 70).green(), 20);
    EXPECT_EQ(image3D.pixelColor(120, 220).alpha(), 0);
    int dashes = 0;
    for (int y = 71; y < 170; ++y)
        dashes +=
            image3D.pixelColor(20, y).alpha() > 0 && image3D.pixelColor(20, y - 1).alpha() == 0;
    EXPECT_GT(dashes, 3);
    const HMKAffineTransform t = designPictureTransform(redCorner(), smallPicture());
    EXPECT_EQ((std::vector<double>{t.a, t.b, t.c, t.d}),
              (std::vector<double>{200 / 203.5, 0, 0, -200 / 203.5}));
    EXPECT_NEAR(t.a * 100 + t.tx, 120, 1e-9);  // the design's centre (100, 50) in the middle
    EXPECT_NEAR(t.d * 50 + t.ty, 120, 1e-9);
}

TEST(DesignPicture, FailuresWriteNothingAndSayWhy) {
    ScratchFolder folder;
    HMKPictureOptions noHeight = smallPicture();
    noHeight.heightPixels = 0;
    const std::tuple<std::string, HMKPictureOptions, int, std::string_view> cases[] = {
        {"picture.jpg", smallPicture(), kPictureFormatError, kHMKDesignErrorDomain},
        {"empty.png", noHeight, kPictureSizeError, kHMKDesignErrorDomain},
        {"missing/picture.png", smallPicture(), ENOENT, kHMKPosixErrorDomain},
    };
    for (const auto& [name, options, code, domain] : cases) {
        HMKError error;
        EXPECT_FALSE(writeDesignPicture(redCorner(), folder.file(name), options, &error)) << name;
        EXPECT_EQ(std::tie(error.code, error.domain), std::tie(code, domain)) << name;
    }
    EXPECT_TRUE(folder.names().empty());
    // The format error names the extensions that work.
    HMKError error;
    writeDesignPicture(redCorner(), folder.file("picture.jpg"), smallPicture(), &error);
    EXPECT_NE(error.message().find(".png"), std::string::npos);
}
