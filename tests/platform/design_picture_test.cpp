// Pictures of designs: the format follows the extension, the design is fitted with y up,
// and the files written are real PNG, SVG and PDF documents.
#include <gtest/gtest.h>

#include <QColor>
#include <QImage>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

#include "platform/design_picture.h"

namespace {

namespace fs = std::filesystem;
const QColor kNothing(0, 0, 0, 0);

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

TEST(PictureFormat, FollowsTheExtensionInAnyCase) {
    const std::pair<const char*, std::optional<HMKPictureFormat>> cases[] = {
        {"a.png", HMKPictureFormat::png}, {"dir/B.PNG", HMKPictureFormat::png},
        {"c.svg", HMKPictureFormat::svg}, {"d.Pdf", HMKPictureFormat::pdf},
        {"e.jpg", std::nullopt},          {"png", std::nullopt},
        {"f.png.txt", std::nullopt}};
    for (const auto& [file, format] : cases) {
        EXPECT_EQ(pictureFormatForPath(file), format) << file;
    }
}

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
    // The top stitch lies on row 70 in the thread colour at its core, the right-hand one runs
    // down the right side, and nothing runs along the bottom.
    const struct {
        const char* name;
        std::function<void(HMKPictureOptions&)> change;
        std::vector<std::pair<QPoint, QColor>> pixels;
    } cases[] = {
        {"plain",
         [](HMKPictureOptions&) {},
         {{{120, 70}, QColor(255, 0, 0)},
          {{218, 120}, QColor(255, 0, 0)},
          {{120, 169}, kNothing},
          {{0, 0}, kNothing}}},
        {"on a background colour",
         [](HMKPictureOptions& o) { o.background = HMKColor(0, 0, 1); },
         {{{0, 0}, QColor(0, 0, 255)}, {{120, 70}, QColor(255, 0, 0)}}},
        {"only another thread",
         [](HMKPictureOptions& o) { o.thread = 1; },
         {{{120, 70}, kNothing}}},
    };
    for (const auto& c : cases) {
        HMKPictureOptions options = smallPicture();
        c.change(options);
        QImage image = writeAndLoadPng(redCorner(), options);
        ASSERT_EQ(image.size(), QSize(240, 240)) << c.name;
        for (const auto& [point, color] : c.pixels) {
            QColor actual = image.pixelColor(point);
            if (color.alpha() == 0) {
                EXPECT_EQ(actual.alpha(), 0) << c.name << " at " << point.x() << "," << point.y();
            } else {
                EXPECT_EQ(actual, color) << c.name << " at " << point.x() << "," << point.y();
            }
        }
    }
    QImage empty = writeAndLoadPng(HMKDesign(), smallPicture());
    ASSERT_EQ(empty.size(), QSize(240, 240));
    EXPECT_EQ(empty.pixelColor(120, 120).alpha(), 0);
}

TEST_F(DesignPicture, Show3DShadesTheThreadAcrossTheStitch) {
    HMKPictureOptions options = smallPicture();
    options.show3D = true;
    QColor centre = writeAndLoadPng(redCorner(), options).pixelColor(120, 70);
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
    // Real size: 200 x 100 units, half a stitch and 5 mm more on every side.
    EXPECT_NE(text.find("width=\"30.35mm\" height=\"20.35mm\""), std::string::npos);
    EXPECT_EQ(text.find("font-size=\"-1\""), std::string::npos);
}

TEST_F(DesignPicture, PdfStartsWithThePdfHeader) {
    fs::path path = folder_ / "picture.pdf";
    ASSERT_TRUE(writeDesignPicture(redCorner(), path, smallPicture()));
    EXPECT_EQ(fileStart(path, 4), "%PDF");
    EXPECT_NE(wholeFile(path).find("%%EOF"), std::string::npos);
}

TEST_F(DesignPicture, FailuresWriteNothingAndSayWhy) {
    HMKPictureOptions noHeight = smallPicture();
    noHeight.heightPixels = 0;
    const struct {
        fs::path file;
        HMKPictureOptions options;
        int code;
        std::string_view domain;
    } cases[] = {
        {folder_ / "picture.jpg", smallPicture(), kPictureFormatError, kHMKDesignErrorDomain},
        {folder_ / "picture.png", noHeight, kPictureSizeError, kHMKDesignErrorDomain},
        {folder_ / "missing" / "picture.png", smallPicture(), ENOENT, kHMKPosixErrorDomain},
    };
    for (const auto& c : cases) {
        HMKError error;
        EXPECT_FALSE(writeDesignPicture(redCorner(), c.file, c.options, &error)) << c.file;
        EXPECT_EQ(error.code, c.code) << c.file;
        EXPECT_EQ(error.domain, c.domain) << c.file;
        EXPECT_FALSE(fs::exists(c.file)) << c.file;
    }
    // The format error names the extensions that work.
    HMKError error;
    writeDesignPicture(redCorner(), folder_ / "picture.jpg", smallPicture(), &error);
    EXPECT_NE(error.message().find(".png"), std::string::npos);
}

}  // namespace
