// The printouts through `hemlark render --worksheet/--template`, read back with poppler's
// tools: the template's hoop outline measures true size on the rasterised page, a big hoop
// tiles over pages, the worksheet carries the thread names; and the sewing time of `info`.
#include <algorithm>
#include <vector>

#include <QImage>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

#include "cli/design_json.h"
#include "tool_runner.h"

namespace {

constexpr int kDotsPerInch = 150;
constexpr double kDotsPerMillimetre = kDotsPerInch / 25.4;

class PrintoutCommand : public ToolTest {
protected:
    void SetUp() override {
        ToolTest::SetUp();
        if (QStandardPaths::findExecutable("pdftoppm").isEmpty()) {
            GTEST_SKIP() << "poppler-utils (pdftoppm, pdftotext) is not installed";
        }
    }
    // The output of a poppler tool.
    static QString poppler(const QString& tool, const QStringList& arguments) {
        QProcess process;
        process.start(tool, arguments);
        EXPECT_TRUE(process.waitForFinished(60000)) << tool.toStdString();
        return QString::fromUtf8(process.readAllStandardOutput());
    }
    // A copy of the flower with the Janome hoop of that code, as a JEF file.
    std::filesystem::path flowerInHoop(int code) {
        const auto file = folder.file("hooped" + std::to_string(code) + ".jef");
        ToolRun run = runTool({"convert", flower_.string(), file.string(), "--hoop",
                               "Janome," + std::to_string(code)});
        EXPECT_EQ(run.exitCode, 0) << run.err;
        return file;
    }
    const std::filesystem::path flower_ = std::filesystem::path(HEMLARK_SAMPLES_DIR) / "flower.jef";
};

bool isDark(const QImage& page, int x, int y) {
    return qGray(page.pixel(x, y)) < 128;
}

// Centre of the dark run of pixels that starts at (x, y) going in direction (dx, dy).
double runCentre(const QImage& page, int x, int y, int dx, int dy) {
    int length = 0;
    while (isDark(page, x + dx * length, y + dy * length)) {
        ++length;
    }
    return (dx ? x : y) + (dx + dy) * (length - 1) / 2.0;
}

// The column (vertical) or row holding the most blue pixels: where the centre cross runs.
int bluestLine(const QImage& page, bool vertical) {
    std::vector<int> counts(vertical ? page.width() : page.height());
    for (int y = 0; y < page.height(); ++y) {
        for (int x = 0; x < page.width(); ++x) {
            const QColor colour = page.pixelColor(x, y);
            counts[vertical ? x : y] += colour.blue() > colour.red() + 80;
        }
    }
    return static_cast<int>(std::max_element(counts.begin(), counts.end()) - counts.begin());
}

TEST_F(PrintoutCommand, TemplateHoopOutlineHasTrueSize) {
    const auto pdf = folder.file("template.pdf");
    ToolRun run = runTool({"render", flowerInHoop(0).string(), pdf.string(), "--template"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.err, "");
    const QString prefix = QString::fromStdString(folder.file("page").string());
    poppler("pdftoppm", {"-r", QString::number(kDotsPerInch), "-singlefile",
                         QString::fromStdString(pdf.string()), prefix});
    const QImage page(prefix + ".ppm");
    ASSERT_FALSE(page.isNull());
    // Between the header and the footer, the outermost dark pixels are the hoop's outline.
    int left = page.width(), right = -1, top = page.height(), bottom = -1;
    const int firstRow = static_cast<int>(40 * kDotsPerMillimetre);
    const int lastRow = page.height() - static_cast<int>(25 * kDotsPerMillimetre);
    for (int y = firstRow; y < lastRow; ++y) {
        for (int x = 0; x < page.width(); ++x) {
            if (isDark(page, x, y)) {
                left = std::min(left, x), right = std::max(right, x);
                top = std::min(top, y), bottom = std::max(bottom, y);
            }
        }
    }
    ASSERT_LT(left, right);
    const int middleY = (top + bottom) / 2 + 20;  // off the centre line, on the straight edges
    const int middleX = (left + right) / 2 + 20;
    const double width =
        (runCentre(page, right, middleY, -1, 0) - runCentre(page, left, middleY, 1, 0)) /
        kDotsPerMillimetre;
    const double height =
        (runCentre(page, middleX, bottom, 0, -1) - runCentre(page, middleX, top, 0, 1)) /
        kDotsPerMillimetre;
    EXPECT_NEAR(width, 110.0, 0.5);
    EXPECT_NEAR(height, 110.0, 0.5);
    // The centre cross, to lay on the hoop's centre mark, is the hoop's centre.
    EXPECT_NEAR((bluestLine(page, true) - (left + right) / 2.0) / kDotsPerMillimetre, 0, 0.5);
    EXPECT_NEAR((bluestLine(page, false) - (top + bottom) / 2.0) / kDotsPerMillimetre, 0, 0.5);
}

TEST_F(PrintoutCommand, TemplateTilesOverPagesWhenTooBig) {
    struct Case {
        int hoop;
        const char* page;
        const char* pages;
    };
    // Hoops of 110 x 110, 230 x 230 and 230 x 300 mm; below the header, A4 leaves 190 x 243
    // mm for the design, A5 128 x 168 mm; neighbouring pages overlap by 15 mm.
    for (const Case& c : {Case{0, "A4", "1"}, Case{28, "A4", "2"}, Case{28, "A3", "1"},
                          Case{29, "A4", "4"}, Case{29, "A5", "4"}}) {
        const auto pdf = folder.file("tiled.pdf");
        ToolRun run = runTool({"render", flowerInHoop(c.hoop).string(), pdf.string(), "--template",
                               "--page", c.page});
        ASSERT_EQ(run.exitCode, 0) << run.err;
        const QString info = poppler("pdfinfo", {QString::fromStdString(pdf.string())});
        EXPECT_TRUE(
            info.contains(QRegularExpression(QStringLiteral("Pages:\\s+") + c.pages + "\n")))
            << c.hoop << " on " << c.page << ": " << info.toStdString();
    }
}

TEST_F(PrintoutCommand, WorksheetListsTheThreadsAndTheSewingTime) {
    const auto pdf = folder.file("worksheet.pdf");
    ToolRun run = runTool({"render", flower_.string(), pdf.string(), "--worksheet", "--3d"});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const QString text = poppler("pdftotext", {QString::fromStdString(pdf.string()), "-"});
    for (const char* expected : {"Green", "White", "Pink", "Sunflower", "Brown", "Janome", "9,769",
                                 "Sewing time", "19:07 at 700 stitches/min", "flower.jef"}) {
        EXPECT_TRUE(text.contains(QString::fromUtf8(expected))) << expected;
    }
    run = runTool({"render", flower_.string(), "flower.png", "--worksheet"});
    EXPECT_EQ(run.exitCode, 2);
}

TEST_F(PrintoutCommand, InfoGivesTheSewingTimeAtTheMachineSpeed) {
    const auto file = sample("heart.dst");
    ToolRun run = runTool({"info", "--json", "--speed", "1400", file.string()});
    ASSERT_EQ(run.exitCode, 0) << run.err;
    const HMKDesign design = imported(file);
    EXPECT_DOUBLE_EQ(HMKJson::parse(run.out)["sewingSeconds"].get<double>(),
                     sewingSecondsOf(design.stitches(), {1400, 30, 5}));
    run = runTool({"info", "--speed", "1400", file.string()});
    EXPECT_EQ(run.out, designInfoText(design, {1400, 30, 5}) + "\n");
    EXPECT_NE(run.out.find("stitches per minute"), std::string::npos);
}

}  // namespace
