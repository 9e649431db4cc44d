// Pictures of designs: the format follows the extension, the design is fitted with y up,
// and the files written are real PNG, SVG and PDF documents.
#include <gtest/gtest.h>

#include <QColor>
#include <QImage>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "platform/design_picture.h"

namespace {

namespace fs = std::filesystem;

// An upside-down "L": a red stitch along the top (y = 100) from x 0 to 200, then down the
// right side to y = 0. The first stitch only brings the needle to the top left corner.
HMKDesign redCorner() {
    HMKDesign design;
    design.setStitches({HMKStitch(0, 100, false, false), HMKStitch(200, 0, false, false),
                        HMKStitch(0, -100, false, false)});
    design.threads().push_back(HMKThread(HMKColor(1, 0, 0), "Red", "1", "", ""));
    design.recomputeBounds();
    design.setDisplayRange({0, design.stitches().size()});
    return design;
}

// 240 x 240 with a 20 pixel margin: the design spans 203.5 x 103.5 units with the stitch
// width, so it is scaled by 200 / 203.5 and the top stitch lies on pixel row 70.
HMKPictureOptions smallPicture() {
    HMKPictureOptions options;
    options.widthPixels = 240;
    options.heightPixels = 240;
    options.marginPixels = 20;
    return options;
}

std::string fileStart(const fs::path& path, std::size_t length) {
    std::ifstream file(path, std::ios::binary);
    std::string text(length, '\0');
    file.read(text.data(), static_cast<std::streamsize>(length));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text;
}

std::string wholeFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

class DesignPicture : public ::testing::Test {
  protected:
    void SetUp() override {
        folder_ = fs::temp_directory_path() /
                  ("hemlark_picture_" +
                   std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
        fs::remove_all(folder_);
        fs::create_directories(folder_);
    }
    void TearDown() override { fs::remove_all(folder_); }

    QImage writeAndLoadPng(const HMKDesign& design, const HMKPictureOptions& options) {
        fs::path path = folder_ / "picture.png";
        HMKError error;
        EXPECT_TRUE(writeDesignPicture(design, path, options, &error)) << error.message();
        QImage image(QString::fromStdString(path.string()));
        return image.convertToFormat(QImage::Format_ARGB32);
    }

    fs::path folder_;
};

struct FormatCase {
    const char* file;
    std::optional<HMKPictureFormat> format;
};

class PictureFormat : public ::testing::TestWithParam<FormatCase> {};

TEST_P(PictureFormat, FollowsTheExtensionInAnyCase) {
    EXPECT_EQ(pictureFormatForPath(GetParam().file), GetParam().format);
}

INSTANTIATE_TEST_SUITE_P(Cases, PictureFormat,
                         ::testing::Values(FormatCase{"a.png", HMKPictureFormat::png},
                                           FormatCase{"dir/B.PNG", HMKPictureFormat::png},
                                           FormatCase{"c.svg", HMKPictureFormat::svg},
                                           FormatCase{"d.Pdf", HMKPictureFormat::pdf},
                                           FormatCase{"e.jpg", std::nullopt},
                                           FormatCase{"png", std::nullopt},
                                           FormatCase{"f.png.txt", std::nullopt}));

TEST(DesignPictureTransform, FitsTheDesignCentredWithYUp) {
    HMKAffineTransform t = designPictureTransform(redCorner(), smallPicture());
    const double scale = 200 / 203.5;
    EXPECT_NEAR(t.a, scale, 1e-12);
    EXPECT_NEAR(t.d, -scale, 1e-12);
    EXPECT_EQ(t.b, 0);
    EXPECT_EQ(t.c, 0);
    // The design's centre (100, 50) lands in the picture's centre.
    EXPECT_NEAR(t.a * 100 + t.tx, 120, 1e-9);
    EXPECT_NEAR(t.d * 50 + t.ty, 120, 1e-9);
    // The left edge of the widest stitch touches the margin.
    EXPECT_NEAR(t.a * -1.75 + t.tx, 20, 1e-9);
}

TEST_F(DesignPicture, PngShowsTheStitchesWithYPointingUp) {
    QImage image = writeAndLoadPng(redCorner(), smallPicture());
    ASSERT_EQ(image.size(), QSize(240, 240));
    // The top stitch is near the top of the picture, in the thread colour at its core.
    QColor top = image.pixelColor(120, 70);
    EXPECT_EQ(top, QColor(255, 0, 0));
    // The right-hand stitch runs down the right side; nothing runs along the bottom.
    EXPECT_EQ(image.pixelColor(218, 120), QColor(255, 0, 0));
    EXPECT_EQ(image.pixelColor(120, 169).alpha(), 0);
    EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0);
}

TEST_F(DesignPicture, BackgroundColourFillsThePicture) {
    HMKPictureOptions options = smallPicture();
    options.background = HMKColor(0, 0, 1);
    QImage image = writeAndLoadPng(redCorner(), options);
    EXPECT_EQ(image.pixelColor(0, 0), QColor(0, 0, 255));
    EXPECT_EQ(image.pixelColor(120, 70), QColor(255, 0, 0));
}

TEST_F(DesignPicture, ThreadOptionDrawsOnlyThatThread) {
    HMKPictureOptions options = smallPicture();
    options.thread = 1;
    QImage image = writeAndLoadPng(redCorner(), options);
    EXPECT_EQ(image.pixelColor(120, 70).alpha(), 0);
}

TEST_F(DesignPicture, Show3DShadesTheThreadAcrossTheStitch) {
    HMKPictureOptions options = smallPicture();
    options.show3D = true;
    QImage image = writeAndLoadPng(redCorner(), options);
    QColor centre = image.pixelColor(120, 70);
    EXPECT_EQ(centre.alpha(), 255);
    EXPECT_GT(centre.green(), 20);
    EXPECT_GT(centre.red(), 200);
}

TEST_F(DesignPicture, SvgIsAnXmlSvgDocument) {
    fs::path path = folder_ / "picture.svg";
    ASSERT_TRUE(writeDesignPicture(redCorner(), path, smallPicture()));
    EXPECT_EQ(fileStart(path, 5), "<?xml");
    std::string text = wholeFile(path);
    EXPECT_NE(text.find("<svg"), std::string::npos);
    EXPECT_NE(text.find("viewBox=\"0 0 240 240\""), std::string::npos);
    EXPECT_EQ(text.find("font-size=\"-1\""), std::string::npos);
}

TEST_F(DesignPicture, PdfStartsWithThePdfHeader) {
    fs::path path = folder_ / "picture.pdf";
    ASSERT_TRUE(writeDesignPicture(redCorner(), path, smallPicture()));
    EXPECT_EQ(fileStart(path, 4), "%PDF");
    EXPECT_NE(wholeFile(path).find("%%EOF"), std::string::npos);
}

TEST_F(DesignPicture, UnknownExtensionFailsWithAClearErrorAndWritesNothing) {
    fs::path path = folder_ / "picture.jpg";
    HMKError error;
    EXPECT_FALSE(writeDesignPicture(redCorner(), path, smallPicture(), &error));
    EXPECT_EQ(error.code, kPictureFormatError);
    EXPECT_EQ(error.domain, kHMKDesignErrorDomain);
    EXPECT_NE(error.message().find(".png"), std::string::npos);
    EXPECT_FALSE(fs::exists(path));
}

TEST_F(DesignPicture, InvalidSizeFails) {
    HMKPictureOptions options = smallPicture();
    options.heightPixels = 0;
    HMKError error;
    EXPECT_FALSE(writeDesignPicture(redCorner(), folder_ / "picture.png", options, &error));
    EXPECT_EQ(error.code, kPictureSizeError);
}

TEST_F(DesignPicture, WriteIntoAMissingFolderPassesTheFileSystemErrorOn) {
    HMKError error;
    EXPECT_FALSE(writeDesignPicture(redCorner(), folder_ / "missing" / "picture.png",
                                    smallPicture(), &error));
    EXPECT_EQ(error.domain, kHMKPosixErrorDomain);
}

TEST_F(DesignPicture, EmptyDesignGivesAnEmptyPicture) {
    QImage image = writeAndLoadPng(HMKDesign(), smallPicture());
    ASSERT_EQ(image.size(), QSize(240, 240));
    EXPECT_EQ(image.pixelColor(120, 120).alpha(), 0);
}

}  // namespace
