// hemlark-thumbnailer run the way file managers run it: a picture of every sample in its
// thread colours, and nothing at all, quickly, for files it cannot read.
#include <gtest/gtest.h>
#include <unistd.h>

#include <QFile>
#include <QImage>
#include <QProcess>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "formats/format_extensions.h"
#include "model/design.h"

namespace {

namespace fs = std::filesystem;

// The thumbnailer's exit code, or -1 when it crashed or was still running at the deadline
// (and was killed).
int runThumbnailer(const QStringList& arguments, int deadlineMilliseconds) {
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QStringLiteral(HEMLARK_THUMBNAILER), arguments);
    if (!process.waitForFinished(deadlineMilliseconds)) {
        process.kill();
        process.waitForFinished();
        return -1;
    }
    return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

QString text(const fs::path& path) {
    return QString::fromStdString(path.string());
}

class ThumbnailerTest : public ::testing::Test {
protected:
    void SetUp() override {
        folder_ =
            fs::temp_directory_path() / ("hemlark-thumbnailer-tests-" + std::to_string(::getpid()));
        fs::create_directories(folder_);
    }
    void TearDown() override { fs::remove_all(folder_); }

    fs::path writeFile(const std::string& name, const std::vector<char>& bytes) {
        std::ofstream(folder_ / name, std::ios::binary).write(bytes.data(), bytes.size());
        return folder_ / name;
    }

    fs::path folder_;
};

std::vector<fs::path> sampleDesigns() {
    const std::vector<std::string> extensions = importableExtensions();
    std::vector<fs::path> designs;
    for (const auto& entry : fs::directory_iterator(HEMLARK_SAMPLES_DIR)) {
        const std::string extension = entry.path().extension().string();
        if (!extension.empty() && std::find(extensions.begin(), extensions.end(),
                                            extension.substr(1)) != extensions.end()) {
            designs.push_back(entry.path());
        }
    }
    std::sort(designs.begin(), designs.end());
    return designs;
}

// Shaded thread runs from 0.2 darker to 0.2 lighter than its colour in every component.
bool isShadeOf(QRgb pixel, const HMKColor& color) {
    return std::max({std::abs(qRed(pixel) / 255.0 - color.red()),
                     std::abs(qGreen(pixel) / 255.0 - color.green()),
                     std::abs(qBlue(pixel) / 255.0 - color.blue())}) <= 0.25;
}

TEST_F(ThumbnailerTest, EverySampleGivesAPictureOfTheRequestedSizeInItsThreadColours) {
    const std::vector<fs::path> designs = sampleDesigns();
    ASSERT_GE(designs.size(), 6u);
    for (const fs::path& input : designs) {
        HMKDesign design;
        ASSERT_TRUE(design.importDesignFromURL(input));
        for (int size : {128, 256}) {
            SCOPED_TRACE(input.filename().string() + " at " + std::to_string(size));
            const fs::path output = folder_ / "thumbnail.png";
            ASSERT_EQ(runThumbnailer(
                          {QStringLiteral("-s"), QString::number(size), text(input), text(output)},
                          30'000),
                      0);
            QImage picture(text(output), "PNG");
            fs::remove(output);
            ASSERT_FALSE(picture.isNull());
            picture = picture.convertToFormat(QImage::Format_ARGB32);
            EXPECT_EQ(std::max(picture.width(), picture.height()), size);
            EXPECT_EQ(qAlpha(picture.pixel(0, 0)), 0) << "the background is transparent";

            std::vector<bool> threadSeen(design.threads().size(), false);
            int drawn = 0;
            int inThreadColours = 0;
            for (int y = 0; y < picture.height(); ++y) {
                for (int x = 0; x < picture.width(); ++x) {
                    const QRgb pixel = picture.pixel(x, y);
                    // Edges of thin lines too: their straight colour is still the thread's.
                    if (qAlpha(pixel) < 64) {
                        continue;
                    }
                    ++drawn;
                    bool matched = false;
                    for (std::size_t t = 0; t < threadSeen.size(); ++t) {
                        if (isShadeOf(pixel, design.threads()[t].color)) {
                            threadSeen[t] = matched = true;
                        }
                    }
                    inThreadColours += matched;
                }
            }
            EXPECT_GT(drawn, size * size / 50) << "the design fills the picture";
            EXPECT_GT(inThreadColours, drawn * 9 / 10);
            for (std::size_t t = 0; t < threadSeen.size(); ++t) {
                EXPECT_TRUE(threadSeen[t]) << "thread " << t << " is not in the picture";
            }
        }
    }
}

// The deadline only catches a hang, with room for a loaded machine: a refusal is immediate.
TEST_F(ThumbnailerTest, BadFilesAndCommandLinesGiveNoPicture) {
    const QString output = text(folder_ / "thumbnail.png");
    auto thumbnailOf = [&](const fs::path& input) {
        return QStringList{QStringLiteral("-s"), QStringLiteral("128"), text(input), output};
    };
    std::vector<std::pair<std::string, QStringList>> cases;
    for (const fs::path& sample : sampleDesigns()) {
        // 101 bytes: inside every header, and odd, which no EXP file is.
        std::vector<char> bytes(101);
        std::ifstream(sample, std::ios::binary).read(bytes.data(), bytes.size());
        cases.emplace_back("cut " + sample.filename().string(),
                           thumbnailOf(writeFile("cut-" + sample.filename().string(), bytes)));
    }
    for (const std::string& extension : importableExtensions()) {
        // KSM and EXP take almost any bytes for stitches, so a random file of theirs can be a
        // real (if senseless) design: the seeds are fixed, one per extension, and give files
        // that every reader refuses.
        std::mt19937 random(std::accumulate(extension.begin(), extension.end(), 21));
        std::vector<char> bytes(4095);
        std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random()); });
        cases.emplace_back("random " + extension,
                           thumbnailOf(writeFile("random." + extension, bytes)));
    }
    fs::create_directory(folder_ / "folder.dst");
    cases.emplace_back("a folder", thumbnailOf(folder_ / "folder.dst"));
    cases.emplace_back("a missing file", thumbnailOf(folder_ / "missing.dst"));
    const fs::path huge = writeFile("huge.exp", {});
    fs::resize_file(huge, 64 * 1024 * 1024);
    cases.emplace_back("a file far too large", thumbnailOf(huge));
    const QString star = QStringLiteral(HEMLARK_SAMPLES_DIR "/star.pes");
    for (const char* size : {"big", "0", "100000"}) {
        cases.emplace_back(
            std::string("size ") + size,
            QStringList{QStringLiteral("-s"), QString::fromLatin1(size), star, output});
    }
    cases.emplace_back("no output", QStringList{star});
    cases.emplace_back("no size", QStringList{QStringLiteral("-s")});

    for (const auto& [name, arguments] : cases) {
        SCOPED_TRACE(name);
        EXPECT_GT(runThumbnailer(arguments, 20'000), 0);
        EXPECT_FALSE(QFile::exists(output));
        QFile::remove(output);
    }
}

}  // namespace
